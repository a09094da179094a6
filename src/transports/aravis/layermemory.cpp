#include "aravis/layermemory.h"

#include <array>
#include <bit>
#include <cstring>

#include "aravis/bootstrap.h"
#include "gcbase/gcexception.h"

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

constexpr std::size_t numberSize = 8;

std::string element(const char* name, const std::string& content) {
    return std::string("<") + name + ">" + content + "</" + name + ">";
}

std::string nodesOf(const Row& row, std::size_t number) {
    const std::string value = std::string(row.name) + "Reg";
    const char* const type = row.kind == Kind::Switch ? "Boolean" : "Integer";
    std::string text = std::string("<") + type + " Name=\"" + row.name + "\">" +
                       element("ToolTip", row.toolTip) + element("Visibility", "Expert") +
                       element("pValue", value);
    if (row.kind == Kind::Switch) {
        text += "<OnValue>1</OnValue><OffValue>0</OffValue>";
    } else if (row.isWritable) {
        text += element("Min", std::to_string(row.minimum)) +
                element("Max", std::to_string(row.maximum));
    }
    return text + "</" + type + ">\n<IntReg Name=\"" + value +
           "\"><Visibility>Invisible</Visibility>" +
           element("Address", std::to_string(number * numberSize)) +
           element("Length", std::to_string(numberSize)) +
           element("AccessMode", row.isWritable ? "RW" : "RO") +
           "<pPort>Device</pPort><Cachable>NoCache</Cachable><Sign>Signed</Sign>"
           "<Endianess>LittleEndian</Endianess></IntReg>\n";
}

std::string categories() {
    std::string root;
    std::string all;
    for (std::size_t first = 0; first < rows.size();) {
        const char* const name = rows[first].category;
        root += element("pFeature", name);
        all += std::string("<Category Name=\"") + name + "\">";
        for (; first < rows.size() && std::strcmp(rows[first].category, name) == 0; ++first) {
            all += element("pFeature", rows[first].name);
        }
        all += "</Category>\n";
    }
    return "<Category Name=\"Root\">" + root + "</Category>\n" + all;
}

std::string describe() {
    std::string text =
        "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<RegisterDescription "
        "xmlns=\"http://www.genicam.org/GenApi/Version_1_1\" ModelName=\"GigELayer\" "
        "VendorName=\"Orlix\" StandardNameSpace=\"None\" SchemaMajorVersion=\"1\" "
        "SchemaMinorVersion=\"1\" SchemaSubMinorVersion=\"0\" MajorVersion=\"1\" "
        "MinorVersion=\"0\" SubMinorVersion=\"0\" "
        "ProductGuid=\"6E0F3C52-9A57-4C9B-B0D1-5A2F7C1E8B44\" "
        "VersionGuid=\"0B8D5E1A-4F60-4E8C-9C35-D7A16F92E3B0\">\n" +
        categories();
    for (std::size_t number = 0; number < rows.size(); ++number) {
        text += nodesOf(rows[number], number);
    }
    return text + "<Port Name=\"Device\"/>\n</RegisterDescription>\n";
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
