#include "aravis/connection.h"

#include <array>
#include <system_error>
#include <thread>
#include <utility>

#include "aravis/accesstask.h"
#include "aravis/bigendian.h"
#include "aravis/bootstrap.h"
#include "aravis/descriptions.h"
#include "aravis/messages.h"
#include "aravis/openfailure.h"
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
[[noreturn]] void throwInUse(const Found& camera, GvcpClient& client) {
    const std::uint32_t holder = AskForHolder(client).address;
    const std::string text = "Device '" + camera.label + "' is in use by another program" +
                             (holder != 0 ? " at " + FormatAddress(holder) : std::string()) + " (" +
                             FormatAddress(camera.address) + ").";
    throw AccessException(text.c_str(), __FILE__, __LINE__);
}

// To be let go while nobody else opens or looks.
void dropLocked(ObjectPtr<ArvDevice> device) {
    const std::scoped_lock lock(SystemLock());
    device.reset();
}

}  // namespace

std::shared_ptr<Connection> Connection::Open(const Found& camera, std::function<void()> lost) {
    const std::shared_ptr<Connection> connection(new Connection(camera, std::move(lost)));
    connection->open();
    return connection;
}

Connection::Connection(const Found& camera, std::function<void()> lost)
    : camera_(camera), lostHandler_(std::move(lost)) {}

void Connection::open() {
    const std::uint32_t local = camera_.protocol == Protocol::GigE ? requireFree() : 0;
    device_ = openDevice(local);
    try {
        requireControl(device_.get());
        loadDescription(device_.get());
        learnHeartbeat(device_.get());
        watchControl(device_.get());
        startThreads();
    } catch (...) {
        dropLocked(std::move(device_));
        throw;
    }
}

// Aravis would ask a dead camera for seconds, and so it would one that tells others nothing while
// it has a controller. Returns this computer's address on the way to the camera.
std::uint32_t Connection::requireFree() const {
    GvcpClient client(camera_.address);
    std::uint32_t privilege = 0;
    const auto answer = client.ReadRegister(Bootstrap::controlPrivilege, privilege,
                                            {4, std::chrono::milliseconds(100)});
    if (answer == GvcpClient::Answer::None) {
        ThrowUnreachable(camera_, " at " + FormatAddress(camera_.address) + ": it doesn't answer");
    }
    if (answer == GvcpClient::Answer::NotAsked) {
        ThrowUnreachable(camera_, " at " + FormatAddress(camera_.address) +
                                      ": the system has no socket to ask it with");
    }
    if ((privilege & Bootstrap::privilegeMask) != 0) {
        throwInUse(camera_, client);
    }
    return client.GetLocalAddress();
}

ObjectPtr<ArvDevice> Connection::openDevice(std::uint32_t localAddress) const {
    Error error;
    ObjectPtr<ArvDevice> device;
    {
        const std::scoped_lock lock(SystemLock());
        device = camera_.protocol == Protocol::Usb3 || isListed(camera_.id)
                     ? ObjectPtr<ArvDevice>(arv_open_device(camera_.id.c_str(), error.Out()))
                     : openDirectly(localAddress, camera_.address, error);
    }
    if (device == nullptr) {
        ThrowNotOpened(camera_, error.Text());
    }
    return device;
}

void Connection::requireControl(ArvDevice* device) {
    if (camera_.protocol != Protocol::GigE) {
        return;
    }
    GvcpClient client(camera_.address);
    if (arv_gv_device_is_controller(ARV_GV_DEVICE(device)) == FALSE) {
        throwInUse(camera_, client);
    }
    // Some tell others nothing as soon as they have a controller.
    std::uint32_t privilege = 0;
    answersControllerOnly_ =
        client.ReadRegister(Bootstrap::controlPrivilege, privilege,
                            {4, std::chrono::milliseconds(100)}) == GvcpClient::Answer::None;
    if (!answersControllerOnly_) {
        holder_ = AskForHolder(client);
    }
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

// Both end by themselves, some time after the connection is closed; nobody waits for them.
void Connection::startThreads() {
    try {
        std::thread([self = shared_from_this()] {
            Lock lock(self->mutex_);
            self->changed_.wait(lock, [&] { return self->lost_ || self->closed_; });
            if (self->lost_) {
                lock.unlock();
                self->tellLoss();
            }
        }).detach();
        std::thread([self = shared_from_this()] { self->serve(); }).detach();
    } catch (const std::system_error& error) {
        const std::scoped_lock lock(mutex_);
        closed_ = true;
        changed_.notify_all();
        const std::string text = "Device '" + camera_.label + "' can't be opened: " + error.what();
        throw RuntimeException(text.c_str(), __FILE__, __LINE__);
    }
}

// The handler tells others, and what they throw must not end the program.
void Connection::tellLoss() const noexcept {
    try {
        lostHandler_();
    } catch (...) {
        Tell("The loss of a camera can't be told.");
    }
}

bool Connection::MayBeMute() const {
    const std::scoped_lock lock(mutex_);
    return current_ != nullptr && current_->purpose == Purpose::Write && streams_ == 0;
}

bool Connection::IsLost() const {
    const std::scoped_lock lock(mutex_);
    return lost_;
}

bool Connection::IsUsable() const {
    const std::scoped_lock lock(mutex_);
    return !lost_ && !closed_;
}

void Connection::SetLost() noexcept {
    const std::scoped_lock lock(mutex_);
    lost_ = lost_ || !released_;
    changed_.notify_all();
}

ControlSign Connection::LookForControl(GvcpClient& client, const GvcpClient::Patience& patience) {
    if (answersControllerOnly_) {
        listenForOthers(client);
    }
    const ControlSign sign =
        answersControllerOnly_ ? lookAsController() : AskForControl(client, holder_, patience);
    // Who closes gives up control.
    if (sign == ControlSign::Gone && IsUsable()) {
        SetLost();
    }
    return sign;
}

// One answer tells that it, or this computer, was only busy at first. Who asks often hears a late
// one the next time.
void Connection::listenForOthers(GvcpClient& client) {
    using Answer = GvcpClient::Answer;
    std::uint32_t privilege = 0;
    const Answer answer = client.ReadRegister(Bootstrap::controlPrivilege, privilege,
                                              {1, std::chrono::milliseconds(5)});
    if (answer == Answer::Given || answer == Answer::Refused) {
        answersControllerOnly_ = false;
    }
}

// Streams are made and ended with many commands, whose answers nobody tells. What takes too long
// for a camera that answers is silence.
bool Connection::isAtStream() const {
    constexpr std::chrono::seconds longest{5};
    return current_ != nullptr && !current_->IsAccess() && Clock::now() - begun_ < longest;
}

// Aravis sends a command again after half a second, and waits for three seconds in all. Whoever
// asks leaves earlier, and takes any answer that the thread got meanwhile for a sign.
ControlSign Connection::lookAsController() {
    constexpr std::chrono::milliseconds longest{600};
    const auto privilege = std::make_shared<std::array<std::uint8_t, 4>>();
    const auto task = std::make_shared<Task>();
    task->action = [this, privilege](ArvDevice* device) {
        transferIn(device, Bootstrap::controlPrivilege, privilege->data(), privilege->size());
    };
    Lock lock(mutex_);
    if (lost_ || closed_ || isAtStream()) {
        return ControlSign::NotAsked;
    }
    const std::uint64_t before = answers_;
    tasks_.push_back(task);
    work_.notify_one();
    changed_.wait_for(lock, longest, [&] { return task->isDone || lost_; });
    if (!task->isDone) {
        std::erase(tasks_, task);  // nobody waits for it any more
        if (isAtStream()) {
            return ControlSign::NotAsked;
        }
    }
    if (!task->isDone || task->failure) {
        return answers_ != before ? ControlSign::Refused : ControlSign::None;
    }
    const auto value = static_cast<std::uint32_t>(GetNumber(privilege->data(), privilege->size()));
    return (value & Bootstrap::privilegeMask) == 0 ? ControlSign::Gone : ControlSign::Held;
}

void Connection::CheckAlive() noexcept {
    if (camera_.protocol != Protocol::GigE || IsLost()) {
        return;
    }
    try {
        GvcpClient client(camera_.address);
        const auto isSilent = [&] {
            return LookForControl(client, {4, std::chrono::milliseconds(100)}) == ControlSign::None;
        };
        // The controller's question alone is sent once or twice only.
        if (isSilent() && (!answersControllerOnly_ || isSilent())) {
            SetLost();
        }
    } catch (const std::exception&) {
        // Without the memory for a question nothing is known.
    }
}

void Connection::Close() noexcept {
    Lock lock(mutex_);
    closed_ = true;
    changed_.notify_all();
    work_.notify_all();
    // A stream that is left over keeps the camera, as it keeps its thread.
    changed_.wait(lock, [this] { return released_ || lost_ || streams_ > 0; });
}

void Connection::ThrowGone() const {
    const std::string text =
        "Device '" + camera_.label + (IsLost() ? "' was removed." : "' isn't open.");
    throw RuntimeException(text.c_str(), __FILE__, __LINE__);
}

}  // namespace Orlix::Aravis
