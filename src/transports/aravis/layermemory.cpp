#include "aravis/layermemory.h"

#include <array>
#include <bit>
#include <cstring>

#include "aravis/bootstrap.h"
#include "gcbase/gcexception.h"
#include "orlixcamera/transport/featuredescription.h"

namespace Orlix::Aravis {

using GenICam::AccessException;
using GenICam::InvalidArgumentException;

// Numbers are copied as they lie in memory.
static_assert(std::endian::native == std::endian::little);

namespace {

enum class Kind : std::uint8_t { Number, Switch };

// Where a feature's value is: a register of the camera, or a member of the settings or counts.
using Setting = std::int64_t StreamSettings::*;
using Toggle = bool StreamSettings::*;
using Count = std::uint64_t Transport::StreamStatistics::*;

struct Row {
    const char* category;
    const char* name;
    const char* toolTip;
    Kind kind = Kind::Number;
    bool isWritable = false;
    std::int64_t minimum = 0;
    std::int64_t maximum = 0;
    std::uint32_t bootstrapRegister = 0;
    std::uint32_t mask = 0xFFFFFFFF;
    Setting setting = nullptr;
    Toggle toggle = nullptr;
    Count count = nullptr;
};

constexpr std::int64_t lastOf32Bits = 0x7FFFFFFF;
constexpr const char* transport = "TransportLayerControl";
constexpr const char* reception = "StreamReceptionControl";
constexpr const char* counts = "StreamStatistics";
constexpr std::uint32_t packetSizeMask = 0xFFFF;

constexpr std::array rows = {
    Row{.category = transport,
        .name = "PacketSize",
        .toolTip = "Bytes of a packet of the stream with its IP, UDP and GVSP headers. Once it is "
                   "set, or the camera's own feature is, it is not negotiated.",
        .isWritable = true,
        .minimum = 64,
        .maximum = 65535,
        .bootstrapRegister = Bootstrap::streamPacketSize,
        .mask = packetSizeMask},
    Row{.category = transport,
        .name = "NegotiatePacketSize",
        .toolTip =
            "Finds the largest packet that gets through when the next stream is started; then "
            "it is done, until the camera is opened again.",
        .kind = Kind::Switch,
        .isWritable = true,
        .toggle = &StreamSettings::negotiatePacketSize},
    Row{.category = transport,
        .name = "InterPacketDelay",
        .toolTip = "Ticks of the camera's clock between two packets.",
        .isWritable = true,
        .maximum = lastOf32Bits,
        .bootstrapRegister = Bootstrap::streamPacketDelay},
    Row{.category = transport,
        .name = "HeartbeatTimeout",
        .toolTip = "Milliseconds without a sign of this program until the camera lets others take "
                   "control, as after a crash.",
        .isWritable = true,
        .minimum = 3000,  // Aravis gives a sign once a second; a healthy camera must hear it
        .maximum = lastOf32Bits,
        .bootstrapRegister = Bootstrap::heartbeatTimeOut},
    Row{.category = reception,
        .name = "SocketBufferSize",
        .toolTip = "Bytes of the socket's buffer from the next start on; 0 for one that fits the "
                   "frames.",
        .isWritable = true,
        .maximum = lastOf32Bits,
        .setting = &StreamSettings::socketBufferSize},
    Row{.category = reception,
        .name = "GrantedSocketBufferSize",
        .toolTip = "What the kernel gave for the last start; net.core.rmem_max is its limit."},
    Row{.category = reception,
        .name = "PacketResend",
        .toolTip = "Asks the camera for packets that are missing, from the next start on.",
        .kind = Kind::Switch,
        .isWritable = true,
        .toggle = &StreamSettings::resend},
    Row{.category = reception,
        .name = "PacketTimeout",
        .toolTip = "Milliseconds until a missing packet is asked for.",
        .isWritable = true,
        .minimum = 1,
        .maximum = 10000,
        .setting = &StreamSettings::packetTimeOut},
    Row{.category = reception,
        .name = "FrameRetention",
        .toolTip = "Milliseconds without a packet until a frame is given up.",
        .isWritable = true,
        .minimum = 1,
        .maximum = 10000,
        .setting = &StreamSettings::frameRetention},
    Row{.category = counts,
        .name = "DeliveredFrames",
        .toolTip = "Frames that arrived whole.",
        .count = &Transport::StreamStatistics::delivered},
    Row{.category = counts,
        .name = "FailedFrames",
        .toolTip = "Frames that arrived in part.",
        .count = &Transport::StreamStatistics::failed},
    Row{.category = counts,
        .name = "MissedFrames",
        .toolTip = "Frames that found no buffer.",
        .count = &Transport::StreamStatistics::missedForBuffer},
    Row{.category = counts,
        .name = "ResentPackets",
        .toolTip = "Packets that came when asked for again.",
        .count = &Transport::StreamStatistics::resentPackets},
    Row{.category = counts,
        .name = "MissingPackets",
        .toolTip = "Packets that never came.",
        .count = &Transport::StreamStatistics::missingPackets},
};

constexpr std::size_t numberSize = Transport::FeatureDescription::numberLength;

std::string describe() {
    Transport::FeatureDescription description("GigELayer", "6E0F3C52-9A57-4C9B-B0D1-5A2F7C1E8B44",
                                              "0B8D5E1A-4F60-4E8C-9C35-D7A16F92E3B0");
    std::int64_t address = 0;
    for (const Row& row : rows) {
        description.Add(Transport::NumberFeature{.texts = {row.category, row.name, row.toolTip},
                                                 .address = address,
                                                 .isSwitch = row.kind == Kind::Switch,
                                                 .isWritable = row.isWritable,
                                                 .minimum = row.minimum,
                                                 .maximum = row.maximum});
        address += Transport::FeatureDescription::numberLength;
    }
    return description.GetText();
}

const Row& rowAt(std::int64_t address, std::size_t length) {
    const auto place = static_cast<std::size_t>(address) / numberSize;
    if (address < 0 || static_cast<std::size_t>(address) % numberSize != 0 ||
        length != numberSize || place >= rows.size()) {
        const std::string text = "The transport layer has no feature of " + std::to_string(length) +
                                 " bytes at address " + std::to_string(address) + ".";
        throw InvalidArgumentException(text.c_str(), __FILE__, __LINE__);
    }
    return rows[place];
}

std::int64_t valueOf(const Row& row, Connection& connection, const StreamState& state) {
    if (row.bootstrapRegister != 0) {
        return connection.ReadRegister(row.bootstrapRegister) & row.mask;
    }
    if (row.setting != nullptr) {
        return state.GetSettings().*row.setting;
    }
    if (row.toggle != nullptr) {
        return state.GetSettings().*row.toggle ? 1 : 0;
    }
    return row.count != nullptr ? static_cast<std::int64_t>(state.GetStatistics().*row.count)
                                : state.GetGrantedSocketBuffer();
}

}  // namespace

std::shared_ptr<const std::string> GetLayerDescription() {
    static const auto text = std::make_shared<const std::string>(describe());
    return text;
}

void ReadLayerMemory(Connection& connection, const StreamState& state, std::int64_t address,
                     void* buffer, std::size_t length) {
    const std::int64_t value = valueOf(rowAt(address, length), connection, state);
    std::memcpy(buffer, &value, numberSize);
}

void WriteLayerMemory(Connection& connection, StreamState& state, std::int64_t address,
                      const void* buffer, std::size_t length) {
    const Row& row = rowAt(address, length);
    if (!row.isWritable) {
        const std::string text = std::string("The feature '") + row.name + "' can only be read.";
        throw AccessException(text.c_str(), __FILE__, __LINE__);
    }
    std::int64_t value = 0;
    std::memcpy(&value, buffer, numberSize);
    if (row.bootstrapRegister != 0) {
        // The bits beside the value belong to others.
        const std::uint32_t before =
            row.mask == 0xFFFFFFFF ? 0 : connection.ReadRegister(row.bootstrapRegister);
        connection.WriteRegister(
            row.bootstrapRegister,
            (before & ~row.mask) | (static_cast<std::uint32_t>(value) & row.mask));
    }
    state.ChangeSettings([&](StreamSettings& settings) {
        if (row.setting != nullptr) {
            settings.*row.setting = value;
        } else if (row.toggle != nullptr) {
            settings.*row.toggle = value != 0;
        } else if (row.bootstrapRegister == Bootstrap::streamPacketSize) {
            settings.negotiatePacketSize = false;
        }
    });
}

}  // namespace Orlix::Aravis
