// An opening by itself, with a camera that Aravis only plays: it is used as one of USB3 is.
#include "aravis/connection.h"

#include <gtest/gtest.h>

#include <array>

#include "gcbase/gcexception.h"

namespace Orlix::Aravis {
namespace {

class PlayedCamera : public testing::Test {
protected:
    void SetUp() override {
        arv_enable_interface("Fake");
        kind_ = static_cast<ArvDeviceClass*>(g_type_class_ref(ARV_TYPE_FAKE_DEVICE));
        read_ = kind_->read_memory;
        camera.protocol = Protocol::Usb3;
        camera.id = "Fake_1";
        camera.label = "Played (1)";
    }
    void TearDown() override {
        kind_->read_memory = read_;
        g_type_class_unref(kind_);
        arv_disable_interface("Fake");
    }
    // Each access from now on.
    void Refuse() const {
        kind_->read_memory = [](ArvDevice*, guint64, guint32, void*, GError** error) -> gboolean {
            g_set_error(error, arv_device_error_quark(),
                        ARV_DEVICE_ERROR_PROTOCOL_ERROR_ACCESS_DENIED, "access denied");
            return FALSE;
        };
    }

    Found camera;

private:
    ArvDeviceClass* kind_ = nullptr;
    decltype(ArvDeviceClass::read_memory) read_ = nullptr;
};

TEST_F(PlayedCamera, RefusedAccessIsNoEndOfItsOpening) {
    const auto connection = Connection::Open(camera, [] {});
    std::array<std::uint8_t, 4> bytes{};
    EXPECT_NO_THROW(connection->Read(0, bytes.data(), bytes.size()));
    Refuse();
    try {
        connection->Read(0, bytes.data(), bytes.size());
        FAIL() << "a register that refuses was read";
    } catch (const GenICam::AccessException& error) {
        EXPECT_STREQ(error.GetDescription(),
                     "4 bytes at address 0x0 of device 'Played (1)' can't be read: access denied.");
    }
    EXPECT_FALSE(connection->IsLost());
    connection->Close();
}

}  // namespace
}  // namespace Orlix::Aravis
