#include "orlixhost/descriptionfile.h"

#include <algorithm>
#include <charconv>
#include <map>
#include <ostream>

#include "genapi/chunkport.h"
#include "genapi/eventadapter.h"
#include "genapi/iportconstruct.h"
#include "genapi/loadreport.h"
#include "genapi/memoryport.h"
#include "genapi/nodemapfactory.h"
#include "host/jsontext.h"
#include "host/message.h"
#include "host/textfile.h"
#include "orlixhost/parametertree.h"

namespace Orlix::Host {
namespace {

bool isZip(const std::string& data) {
    return data.compare(0, 4, "PK\x03\x04") == 0;
}

GenApi::CNodeMapRef loadMap(const std::string& file) {
    const std::string data = readTextFile(file);
    return withPlace(file, [&] {
        const auto type = isZip(data) ? GenApi::ContentType_ZippedXml : GenApi::ContentType_Xml;
        return GenApi::CNodeMapFactory(type, data.data(), data.size()).CreateNodeMap();
    });
}

// Beyond what it begins with, the memory may grow by the port's own limit.
std::unique_ptr<GenApi::CMemoryPort> zeros(std::int64_t size) {
    return std::make_unique<GenApi::CMemoryPort>(size, size + GenApi::CMemoryPort::defaultLimit);
}

std::unique_ptr<GenApi::CMemoryPort> makePort(const std::string& sizeOrFile) {
    if (sizeOrFile.empty()) {
        return zeros(GenApi::CMemoryPort::initialSize);
    }
    constexpr std::int64_t largest = std::int64_t{1} << 30;
    std::int64_t size = 0;
    const bool isHex = sizeOrFile.compare(0, 2, "0x") == 0;
    const char* last = sizeOrFile.data() + sizeOrFile.size();
    const auto [end, error] =
        std::from_chars(sizeOrFile.data() + (isHex ? 2 : 0), last, size, isHex ? 16 : 10);
    if (end == last) {
        if (error != std::errc{} || size < 0 || size > largest) {
            fail("a memory of " + sizeOrFile + " bytes is not possible; it may have 0 to " +
                 std::to_string(largest));
        }
        return zeros(size);
    }
    const std::string content = readTextFile(sizeOrFile);
    const auto length = static_cast<std::int64_t>(content.size());
    auto port = zeros(length);
    port->Write(content.data(), 0, length);
    return port;
}

bool isOnMemory(GenApi::INode& node) {
    auto* port = dynamic_cast<GenApi::IPortConstruct*>(&node);
    return port != nullptr && !port->IsChunkPort() && node.GetEventID().empty();
}

// Every port of the device itself lies on the same memory.
void connectAll(GenApi::INodeMap& map, GenApi::IPort& port) {
    GenApi::NodeList_t nodes;
    map.GetNodes(nodes);
    for (GenApi::INode* node : nodes) {
        if (isOnMemory(*node)) {
            map.Connect(&port, node->GetName());
        }
    }
}

const char* nameOf(GenApi::LoadSeverity severity) {
    return severity == GenApi::LoadSeverity::dropped ? "dropped" : "warning";
}

// "dropped: line 12: Integer "Width": reason"
std::string remarkText(const GenApi::LoadRemark& remark) {
    std::string text = std::string(nameOf(remark.severity)) + ": ";
    if (remark.line > 0) {
        text += "line " + std::to_string(remark.line) + ": ";
    }
    text += remark.element;
    if (!remark.name.empty()) {
        text += " " + inQuotes(remark.name);
    }
    return oneLine(text + ": " + remark.reason);
}

Json remarkJson(const GenApi::LoadRemark& remark) {
    return {{"severity", nameOf(remark.severity)},
            {"element", remark.element},
            {"name", remark.name},
            {"line", remark.line},
            {"reason", remark.reason}};
}

}  // namespace

struct DescriptionFile::Impl {
    [[nodiscard]] std::vector<Parameter> readFeatures() {
        return withPlace(file, [this] { return readParameters(*map._Ptr()); });
    }

    std::string file;
    // The port outlives the map's connection to it.
    std::unique_ptr<GenApi::CMemoryPort> port;
    std::map<std::string, GenApi::CChunkPort> chunks;
    GenApi::CNodeMapRef map;
    GenApi::CEventAdapterGeneric events;
};

DescriptionFile::DescriptionFile(const std::string& file, const MemoryImage& memory)
    : impl_(std::make_unique<Impl>()) {
    impl_->file = file;
    impl_->port = makePort(memory.sizeOrFile);
    impl_->map = loadMap(file);
    connectAll(*impl_->map._Ptr(), *impl_->port);
    impl_->events.AttachNodeMap(impl_->map._Ptr());
}

DescriptionFile::~DescriptionFile() = default;

GenApi::INodeMap& DescriptionFile::nodeMap() noexcept {
    return *impl_->map._Ptr();
}

GenApi::IPort& DescriptionFile::port() noexcept {
    return *impl_->port;
}

void DescriptionFile::attachChunk(const std::string& portNode,
                                  const std::vector<std::uint8_t>& bytes) {
    auto* port =
        dynamic_cast<GenApi::IPortConstruct*>(nodeMap().GetNode(GenApi::gcstring(portNode)));
    if (port == nullptr || !port->IsChunkPort()) {
        fail("Node '" + portNode + "' is no chunk port.");
    }
    GenApi::CChunkPort& chunk = impl_->chunks[portNode];
    port->SetPortImpl(&chunk);
    // The port keeps a copy; an empty chunk still needs a place.
    std::vector<std::uint8_t> data = bytes;
    data.resize(std::max<std::size_t>(data.size(), 1));
    chunk.AttachChunk(data.data(), 0, static_cast<std::int64_t>(bytes.size()), true);
}

void DescriptionFile::deliverEvent(const std::string& node,
                                   const std::vector<std::uint8_t>& bytes) {
    const GenApi::INode* target = nodeMap().GetNode(GenApi::gcstring(node));
    const std::string id = target == nullptr ? std::string() : target->GetEventID().str();
    if (id.empty()) {
        fail("Node '" + node + "' has no EventID.");
    }
    (void)impl_->events.DeliverMessage(std::stoull(id, nullptr, 16), bytes.data(),
                                       static_cast<std::int64_t>(bytes.size()));
}

void DescriptionFile::print(std::ostream& out) {
    printParameters(out, impl_->readFeatures());
    const GenApi::LoadReport& report = nodeMap().GetLoadReport();
    if (!report.remarks.empty()) {
        out << "\nRemarks of the loader:\n";
    }
    for (const GenApi::LoadRemark& remark : report.remarks) {
        out << "  " << remarkText(remark) << '\n';
    }
    if (report.notListed > 0) {
        out << "  and " << report.notListed << " more\n";
    }
}

void DescriptionFile::printAsJson(std::ostream& out) {
    // Before the first character is written.
    const std::vector<Parameter> features = impl_->readFeatures();
    const GenApi::LoadReport& report = nodeMap().GetLoadReport();
    Json remarks = Json::array();
    for (const GenApi::LoadRemark& remark : report.remarks) {
        remarks.push_back(remarkJson(remark));
    }
    out << "{\"vendor\": " << printJsonLine(nodeMap().GetVendorName().str())
        << ", \"model\": " << printJsonLine(nodeMap().GetModelName().str()) << ", \"features\": ";
    printParametersAsJson(out, features);
    out << ", \"remarks\": " << printJsonLine(remarks)
        << ", \"remarksNotListed\": " << report.notListed << "}\n";
}

}  // namespace Orlix::Host
