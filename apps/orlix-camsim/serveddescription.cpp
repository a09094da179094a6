#include "serveddescription.h"

#include <array>
#include <cstdio>
#include <string_view>

#include "bootstrap.h"
#include "gcbase/gcexception.h"

namespace Orlix::Camsim {
namespace {

enum class Form : std::uint8_t { Number, Address, Mac, Command, Flag };

// A feature and the bits of the register behind it, counted from the highest one.
struct Feature {
    const char* name;
    const char* toolTip;
    Form form;
    std::uint32_t address;
    unsigned length;
    unsigned firstBit;
    unsigned lastBit;
    const char* access;
    const char* limits;  // further elements of the feature
};

constexpr const char* packetLimits = "<Min>220</Min><Max>65532</Max><Inc>4</Inc><Unit>B</Unit>";
constexpr const char* portLimits = "<Min>0</Min><Max>65535</Max>";
constexpr const char* heartbeatLimits = "<Min>500</Min><Max>4294967295</Max><Unit>ms</Unit>";
constexpr const char* wordLimits = "<Min>0</Min><Max>4294967295</Max>";

// clang-format off
constexpr std::array features = {
    Feature{"GevVersionMajor", "Major version of the standard.", Form::Number, Reg::version, 4, 0, 15, "RO", ""},
    Feature{"GevVersionMinor", "Minor version of the standard.", Form::Number, Reg::version, 4, 16, 31, "RO", ""},
    Feature{"GevMACAddress", "Hardware address of the device.", Form::Mac, Reg::macHigh, 8, 0, 63, "RO", ""},
    Feature{"GevCurrentIPAddress", "Address of the device.", Form::Address, Reg::address, 4, 0, 31, "RO", ""},
    Feature{"GevCurrentSubnetMask", "Subnet mask of the device.", Form::Address, Reg::subnetMask, 4, 0, 31, "RO", ""},
    Feature{"GevCurrentDefaultGateway", "Gateway of the device.", Form::Address, Reg::gateway, 4, 0, 31, "RO", ""},
    Feature{"GevNumberOfInterfaces", "Number of network interfaces.", Form::Number, Reg::interfaces, 4, 0, 31, "RO", ""},
    Feature{"GevLinkSpeed", "Speed of the link.", Form::Number, Reg::linkSpeed, 4, 0, 31, "RO", "<Unit>Mbps</Unit>"},
    Feature{"GevMessageChannelCount", "Number of message channels.", Form::Number, Reg::messageChannels, 4, 0, 31, "RO", ""},
    Feature{"GevStreamChannelCount", "Number of stream channels.", Form::Number, Reg::streamChannels, 4, 0, 31, "RO", ""},
    Feature{"GevHeartbeatTimeout", "Time without a command after which control is lost.", Form::Number, Reg::heartbeat, 4, 0, 31, "RW", heartbeatLimits},
    Feature{"GevGVCPHeartbeatDisable", "Keeps control without a heartbeat.", Form::Flag, Reg::gvcpConfiguration, 4, 31, 31, "RW", ""},
    Feature{"GevTimestampTickFrequency", "Ticks a second of the clock.", Form::Number, Reg::tickFrequencyHigh, 8, 0, 63, "RO", "<Unit>Hz</Unit>"},
    Feature{"GevTimestampControlLatch", "Stores the time of the clock in GevTimestampValue.", Form::Command, Reg::timestampControl, 4, 30, 30, "WO", "<CommandValue>2</CommandValue>"},
    Feature{"GevTimestampControlReset", "Sets the clock to zero.", Form::Command, Reg::timestampControl, 4, 31, 31, "WO", "<CommandValue>1</CommandValue>"},
    Feature{"GevTimestampValue", "Time of the clock as it was stored.", Form::Number, Reg::timestampHigh, 8, 0, 63, "RO", ""},
    Feature{"GevGVSPExtendedIDMode", "Numbers frames with 64 bits in place of 16.", Form::Flag, Reg::gvspConfiguration, 4, 1, 1, "RW", ""},
    Feature{"GevPrimaryApplicationIPAddress", "Address of the program in control.", Form::Address, Reg::primaryAddress, 4, 0, 31, "RO", ""},
    Feature{"GevPrimaryApplicationSocket", "Port of the program in control.", Form::Number, Reg::primaryPort, 4, 16, 31, "RO", ""},
    Feature{"GevMCPHostPort", "Port that gets the events; 0 closes the message channel.", Form::Number, Reg::messagePort, 4, 16, 31, "RW", portLimits},
    Feature{"GevMCDA", "Address that gets the events.", Form::Address, Reg::messageAddress, 4, 0, 31, "RW", wordLimits},
    Feature{"GevMCTT", "Time that an event waits for its acknowledge; 0 asks for none.", Form::Number, Reg::messageTimeout, 4, 0, 31, "RW", "<Min>0</Min><Max>4294967295</Max><Unit>ms</Unit>"},
    Feature{"GevMCRC", "How often an event is sent again that wasn't acknowledged.", Form::Number, Reg::messageRetries, 4, 0, 31, "RW", wordLimits},
    Feature{"GevMCSP", "Port that the events come from.", Form::Number, Reg::messageSource, 4, 16, 31, "RO", ""},
    Feature{"GevSCPHostPort", "Port that gets the frames; 0 closes the stream channel.", Form::Number, Reg::streamPort, 4, 16, 31, "RW", portLimits},
    Feature{"GevSCPSFireTestPacket", "Sends one packet of the packet size.", Form::Command, Reg::packetSize, 4, 0, 0, "RW", "<CommandValue>1</CommandValue>"},
    Feature{"GevSCPSDoNotFragment", "Forbids the network to cut packets into pieces.", Form::Flag, Reg::packetSize, 4, 1, 1, "RW", ""},
    Feature{"GevSCPSPacketSize", "Size of the packets of a frame, with all headers.", Form::Number, Reg::packetSize, 4, 16, 31, "RW", packetLimits},
    Feature{"GevSCPD", "Pause between packets in ticks.", Form::Number, Reg::packetDelay, 4, 0, 31, "RW", wordLimits},
    Feature{"GevSCDA", "Address that gets the frames.", Form::Address, Reg::streamAddress, 4, 0, 31, "RW", wordLimits},
    Feature{"GevSCSP", "Port that the frames come from.", Form::Number, Reg::streamSource, 4, 16, 31, "RO", ""},
};
// clang-format on

std::string hex(std::uint32_t value) {
    char text[16];
    std::snprintf(text, sizeof text, "0x%08X", value);
    return text;
}

std::string element(const char* name, const std::string& content) {
    return std::string("<") + name + ">" + content + "</" + name + ">";
}

const char* elementNameOf(Form form) {
    switch (form) {
        case Form::Command:
            return "Command";
        case Form::Flag:
            return "Boolean";
        default:
            return "Integer";
    }
}

std::string representationOf(Form form) {
    if (form == Form::Address) {
        return element("Representation", "IPV4Address");
    }
    return form == Form::Mac ? element("Representation", "MACAddress") : std::string();
}

std::string featureNode(const Feature& feature) {
    const std::string kind = elementNameOf(feature.form);
    return "    <" + kind + " Name=\"" + feature.name + "\" NameSpace=\"Standard\">" +
           element("ToolTip", feature.toolTip) + element("Visibility", "Guru") +
           element("pValue", std::string(feature.name) + "Reg") + feature.limits +
           representationOf(feature.form) +
           (feature.form == Form::Flag ? "<OnValue>1</OnValue><OffValue>0</OffValue>" : "") + "</" +
           kind + ">\n";
}

std::string registerNode(const Feature& feature) {
    const bool isWhole = feature.lastBit - feature.firstBit + 1 == 8 * feature.length;
    // The bits of a command that can't be read are not kept apart.
    const bool isMasked = !isWhole && std::string_view(feature.access) != "WO";
    const std::string kind = isMasked ? "MaskedIntReg" : "IntReg";
    return "    <" + kind + " Name=\"" + feature.name + "Reg\">" +
           element("Visibility", "Invisible") + element("Address", hex(feature.address)) +
           element("Length", std::to_string(feature.length)) +
           element("AccessMode", feature.access) + element("pPort", "Device") +
           element("Cachable", "NoCache") +
           (isMasked ? element("LSB", std::to_string(feature.lastBit)) +
                           element("MSB", std::to_string(feature.firstBit))
                     : std::string()) +
           element("Sign", "Unsigned") + element("Endianess", "BigEndian") + "</" + kind + ">\n";
}

std::string controlNodes() {
    return R"(    <Enumeration Name="GevCCP" NameSpace="Standard"><ToolTip>Who may control the device.</ToolTip><Visibility>Guru</Visibility>
        <EnumEntry Name="OpenAccess" NameSpace="Standard"><Value>0</Value></EnumEntry>
        <EnumEntry Name="ExclusiveAccess" NameSpace="Standard"><Value>1</Value></EnumEntry>
        <EnumEntry Name="ControlAccess" NameSpace="Standard"><Value>2</Value></EnumEntry>
        <pValue>GevCCPReg</pValue></Enumeration>
    <IntReg Name="GevCCPReg"><Visibility>Invisible</Visibility><Address>0x00000A00</Address><Length>4</Length><AccessMode>RW</AccessMode><pPort>Device</pPort><Cachable>NoCache</Cachable><Sign>Unsigned</Sign><Endianess>BigEndian</Endianess></IntReg>
)";
}

void insertBefore(std::string& text, std::string_view mark, const std::string& what) {
    const std::size_t place = text.find(mark);
    if (place == std::string::npos) {
        throw GenICam::RuntimeException(
            ("The description of the emulated camera has no " + std::string(mark) + ".").c_str(),
            __FILE__, __LINE__);
    }
    text.insert(place, what);
}

// Every register names its port behind its address.
std::string moveRegisters(const std::string& text, std::uint32_t eventHeader) {
    constexpr std::string_view addressBegin = "<Address>";
    constexpr std::string_view portBegin = "<pPort>";
    std::string moved;
    std::size_t done = 0;
    while (true) {
        const std::size_t begin = text.find(addressBegin, done);
        if (begin == std::string::npos) {
            return moved + text.substr(done);
        }
        const std::size_t number = begin + addressBegin.size();
        const std::size_t end = text.find('<', number);
        const std::size_t port = text.find(portBegin, end) + portBegin.size();
        const std::string_view portName =
            std::string_view(text).substr(port, text.find('<', port) - port);
        auto address =
            static_cast<std::uint32_t>(std::stoul(text.substr(number, end - number), nullptr, 0));
        if (portName == "Device") {
            address += cameraBase;
        } else if (portName.substr(0, 5) == "Event") {
            address += eventHeader;
        }
        moved += text.substr(done, number - done) + hex(address);
        done = end;
    }
}

}  // namespace

std::string MakeDescriptionText(const std::string& emulated, EventIds eventIds) {
    constexpr std::uint32_t shortHeader = 16;
    constexpr std::uint32_t longHeader = 24;
    std::string text =
        moveRegisters(emulated, eventIds == EventIds::Long ? longHeader : shortHeader);
    std::string names = "<pFeature>GevCCP</pFeature>\n        ";
    std::string nodes = controlNodes();
    for (const Feature& feature : features) {
        names += element("pFeature", feature.name) + "\n        ";
        nodes += featureNode(feature) + registerNode(feature);
    }
    insertBefore(text, "<pFeature>PayloadSize</pFeature>", names);
    insertBefore(text, "    <Port Name=\"Device\"", nodes);
    return text;
}

ServedDescription MakeDescription(const std::string& emulated, FileForm form, EventIds eventIds) {
    const std::string name = "OrlixEmulatedCamera";
    std::string bytes = MakeDescriptionText(emulated, eventIds);
    std::string fileName = name + ".xml";
    if (form == FileForm::Zipped) {
        bytes = ZipOneFile(fileName, bytes);
        fileName = name + ".zip";
    }
    char place[40];
    std::snprintf(place, sizeof place, ";%x;%zx", fileBase, bytes.size());
    return {std::move(bytes), "Local:" + fileName + place};
}

}  // namespace Orlix::Camsim
