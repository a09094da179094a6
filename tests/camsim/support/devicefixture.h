// A device without a network: its channels only remember what they were told.
#pragma once

#include <gtest/gtest.h>

#include <memory>
#include <vector>

#include "camsim/support/gevclient.h"
#include "gvcp.h"
#include "orlixcamera/emulated/camera.h"
#include "orlixcamera/emulated/description.h"
#include "orlixcamera/emulated/registertable.h"

namespace Orlix::Camsim::Testing {

class RecordedChannels final : public IChannels, public IResender, public Emulated::Holder {
public:
    std::shared_ptr<Emulated::Holder> GetHolder() override {
        return {std::shared_ptr<Emulated::Holder>(), static_cast<Emulated::Holder*>(this)};
    }
    void SetStream(Emulated::Session newSession, const StreamSettings& settings) override {
        session = newSession;
        stream = settings;
    }
    void FireTestPacket(const StreamSettings& settings) override {
        testPackets.push_back(settings);
    }
    void SetMessages(const MessageSettings& settings) override { messages = settings; }
    void Resend(const ResendRequest& request) override { resends.push_back(request); }
    bool OnEvent(const Emulated::Event& event) noexcept override {
        events.push_back(event);
        return true;
    }
    void OnLost() noexcept override { isLost = true; }

    Emulated::Session session = 0;
    StreamSettings stream;
    MessageSettings messages;
    std::vector<StreamSettings> testPackets;
    std::vector<ResendRequest> resends;
    std::vector<Emulated::Event> events;
    bool isLost = false;
};

class DeviceFixture : public ::testing::Test {
protected:
    static constexpr Endpoint first{0x7F000001, 4001};
    static constexpr Endpoint second{0x7F000001, 4002};

    DeviceFixture() {
        identity.serial = "SN-7";
        identity.userName = "Left";
        Emulated::Identity camera_;
        camera_.vendor = identity.vendor;
        camera_.model = identity.model;
        camera_.serialNumber = identity.serial;
        camera_.userDefinedName = identity.userName;
        Emulated::Place place;
        place.agenda = std::make_shared<Emulated::Agenda>();
        place.plugChanged = [] {};
        camera = std::make_shared<Emulated::Camera>(camera_, std::move(place));
        device = std::make_unique<Device>(
            camera, identity,
            MakeDescription(*Emulated::GetDescriptionFile(), FileForm::Plain, EventIds::Short),
            channels, statistics);
        gvcp = std::make_unique<Gvcp>(*device, channels, statistics);
    }

    // The answer's bytes, empty for silence.
    Buffer handle(const Buffer& datagram, const Endpoint& client = first,
                  Arrival arrival = Arrival::Own) {
        return gvcp->Handle(datagram, client, arrival).bytes;
    }
    Ack run(Command command, const Buffer& body, const Endpoint& client = first) {
        return parseAck(handle(commandOf(command, body, ++id), client));
    }
    Status write(std::uint32_t address, std::uint32_t value, const Endpoint& client = first) {
        return run(Command::WriteReg, Writer().add(address).add(value).bytes(), client).status;
    }
    Ack readRegister(std::uint32_t address, const Endpoint& client = first) {
        return run(Command::ReadReg, Writer().add(address).bytes(), client);
    }
    std::uint32_t read(std::uint32_t address, const Endpoint& client = first) {
        const Ack ack = readRegister(address, client);
        EXPECT_EQ(ack.status, Status::Success);
        return ack.body.size() == 4 ? Get<std::uint32_t>(ack.body.data()) : 0;
    }
    Ack readMemory(std::uint32_t address, std::uint16_t count, const Endpoint& client = first) {
        return run(Command::ReadMem, Writer().add(address).add(std::uint16_t{0}).add(count).bytes(),
                   client);
    }
    Ack writeMemory(std::uint32_t address, const Buffer& bytes, const Endpoint& client = first) {
        return run(Command::WriteMem, Writer().add(address).add(bytes).bytes(), client);
    }
    static std::uint32_t at(std::int64_t cameraAddress) {
        return cameraBase + static_cast<std::uint32_t>(cameraAddress);
    }

    DeviceIdentity identity;
    Statistics statistics;
    RecordedChannels channels;
    std::shared_ptr<Emulated::Camera> camera;
    std::unique_ptr<Device> device;
    std::unique_ptr<Gvcp> gvcp;
    std::uint16_t id = 0;
};

}  // namespace Orlix::Camsim::Testing
