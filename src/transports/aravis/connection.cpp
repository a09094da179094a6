#include "aravis/connection.h"

#include <thread>
#include <utility>

#include "aravis/bootstrap.h"
#include "aravis/descriptions.h"
#include "aravis/gvcpclient.h"
#include "aravis/systemlock.h"
#include "gcbase/gcexception.h"

namespace Orlix::Aravis {

using GenICam::AccessException;
using GenICam::RuntimeException;

namespace {

bool isListed(const std::string& id) {
    for (unsigned int index = 0; index < arv_get_n_devices(); ++index) {
        if (id == arv_get_device_id(index)) {
            return true;
        }
    }
    return false;
}

ObjectPtr<GInetAddress> makeAddress(std::uint32_t address) {
    return ObjectPtr<GInetAddress>(g_inet_address_new_from_string(FormatAddress(address).c_str()));
}

// A camera that the last look has missed, such as one that has just come back, needs no other look.
ObjectPtr<ArvDevice> openDirectly(std::uint32_t local, std::uint32_t remote, Error& error) {
    const auto localAddress = makeAddress(local);
    const auto remoteAddress = makeAddress(remote);
    return ObjectPtr<ArvDevice>(
        arv_gv_device_new(localAddress.get(), remoteAddress.get(), error.Out()));
}

// Who has control may have told its address; many cameras don't tell it to others.
std::string holderOf(GvcpClient& client) {
    std::uint32_t holder = 0;
    const bool told = client.ReadRegister(Bootstrap::primaryApplication, holder, {}) ==
                          GvcpClient::Answer::Given &&
                      holder != 0;
    return told ? "a program at " + FormatAddress(holder) : "another program";
}

[[noreturn]] void throwInUse(const Found& camera, GvcpClient& client) {
    const std::string text = "Device '" + camera.label + "' is in use by " + holderOf(client) +
                             " (" + FormatAddress(camera.address) + ").";
    throw AccessException(text.c_str(), __FILE__, __LINE__);
}

}  // namespace

std::shared_ptr<Connection> Connection::Open(const Found& camera, std::function<void()> lost) {
    const std::shared_ptr<Connection> connection(new Connection(camera, std::move(lost)));
    connection->open();
    return connection;
}

Connection::Connection(const Found& camera, std::function<void()> lost)
    : camera_(camera), lostHandler_(std::move(lost)) {}

Connection::~Connection() = default;

void Connection::open() {
    const auto unreachable = [this](const std::string& why) {
        const std::string text = "Device '" + camera_.label + "' can't be reached" + why + ".";
        throw RuntimeException(text.c_str(), __FILE__, __LINE__);
    };
    std::uint32_t local = 0;
    if (camera_.protocol == Protocol::GigE) {
        // Aravis would ask a dead camera for seconds, and so it would one that tells others
        // nothing while it has a controller.
        GvcpClient client(camera_.address);
        std::uint32_t privilege = 0;
        const auto answer = client.ReadRegister(Bootstrap::controlPrivilege, privilege,
                                                {4, std::chrono::milliseconds(100)});
        if (answer == GvcpClient::Answer::None) {
            unreachable("");
        }
        if ((privilege & Bootstrap::privilegeMask) != 0) {
            throwInUse(camera_, client);
        }
        local = client.GetLocalAddress();
    }
    Error error;
    ObjectPtr<ArvDevice> device;
    {
        const std::scoped_lock lock(SystemLock());
        device = camera_.protocol == Protocol::Usb3 || isListed(camera_.id)
                     ? ObjectPtr<ArvDevice>(arv_open_device(camera_.id.c_str(), error.Out()))
                     : openDirectly(local, camera_.address, error);
        if (device != nullptr) {
            requireControl(device.get());
        }
    }
    if (device == nullptr) {
        unreachable(": " + error.Text());
    }
    loadDescription(device.get());
    watchControl(device.get());
    device_ = std::move(device);
}

void Connection::requireControl(ArvDevice* device) const {
    if (camera_.protocol != Protocol::GigE ||
        arv_gv_device_is_controller(ARV_GV_DEVICE(device)) != FALSE) {
        return;
    }
    GvcpClient client(camera_.address);
    throwInUse(camera_, client);
}

void Connection::loadDescription(ArvDevice* device) {
    std::size_t size = 0;
    const char* const text = arv_device_get_genicam_xml(device, &size);
    if (text == nullptr || size == 0) {
        const std::string message = "Device '" + camera_.label + "' has no description file.";
        throw RuntimeException(message.c_str(), __FILE__, __LINE__);
    }
    description_ = ShareDescription(std::string(text, size));
    numbersByRegister_ = camera_.protocol == Protocol::GigE && IsBeforeSchema11(*description_);
}

// Aravis tells on its heartbeat's thread, which must not drop the last reference to the device:
// this only sets a flag and wakes others.
void Connection::watchControl(ArvDevice* device) {
    using Weak = std::weak_ptr<Connection>;
    const auto tell = +[](ArvDevice*, gpointer weak) {
        if (const auto connection = static_cast<Weak*>(weak)->lock()) {
            connection->SetLost();
        }
    };
    const auto forget = +[](gpointer weak, GClosure*) { delete static_cast<Weak*>(weak); };
    g_signal_connect_data(device, "control-lost", reinterpret_cast<GCallback>(tell),
                          new Weak(weak_from_this()), forget, static_cast<GConnectFlags>(0));
}

void Connection::Use(const std::function<void(ArvDevice*)>& action) {
    ArvDevice* device = nullptr;
    {
        std::unique_lock lock(mutex_);
        changed_.wait(lock, [this] { return !busy_ || lost_ || closed_; });
        if (lost_ || closed_) {
            lock.unlock();
            ThrowGone();
        }
        busy_ = true;
        device = device_.get();
    }
    struct Leave {
        Connection& connection;
        ~Leave() {
            const std::scoped_lock lock(connection.mutex_);
            connection.busy_ = false;
            connection.changed_.notify_all();
        }
    };
    const Leave leave{*this};
    action(device);
}

bool Connection::IsBusy() const {
    const std::scoped_lock lock(mutex_);
    return busy_;
}

bool Connection::IsLost() const {
    const std::scoped_lock lock(mutex_);
    return lost_;
}

void Connection::SetLost() {
    {
        const std::scoped_lock lock(mutex_);
        if (lost_ || closed_) {
            return;
        }
        lost_ = true;
        changed_.notify_all();
    }
    lostHandler_();
}

void Connection::CheckAlive() {
    std::uint32_t privilege = 0;
    if (camera_.protocol == Protocol::GigE && !IsLost() &&
        GvcpClient(camera_.address)
                .ReadRegister(Bootstrap::controlPrivilege, privilege,
                              {4, std::chrono::milliseconds(100)}) == GvcpClient::Answer::None) {
        SetLost();
    }
}

void Connection::Close() noexcept {
    bool lost = false;
    {
        const std::scoped_lock lock(mutex_);
        if (std::exchange(closed_, true)) {
            return;
        }
        lost = lost_;
        changed_.notify_all();
    }
    if (lost) {
        std::thread([self = shared_from_this()] { self->release(); }).detach();
    } else {
        release();
    }
}

// The system lock is for cameras that answer: others wait for it, and a dead one takes seconds.
void Connection::release() noexcept {
    ObjectPtr<ArvDevice> device;
    bool lost = false;
    {
        std::unique_lock lock(mutex_);
        changed_.wait(lock, [this] { return !busy_; });
        device = std::move(device_);
        lost = lost_;
    }
    if (lost) {
        device.reset();
        return;
    }
    const std::scoped_lock lock(SystemLock());
    device.reset();
}

void Connection::ThrowGone() const {
    const std::string text =
        "Device '" + camera_.label + (IsLost() ? "' was removed." : "' isn't open.");
    throw RuntimeException(text.c_str(), __FILE__, __LINE__);
}

}  // namespace Orlix::Aravis
