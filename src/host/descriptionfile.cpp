#include "orlixhost/descriptionfile.h"

#include <ostream>

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
    // The port outlives the map's connection to it.
    GenApi::CMemoryPort port;
    GenApi::CNodeMapRef map;
};

DescriptionFile::DescriptionFile(const std::string& file) : impl_(std::make_unique<Impl>()) {
    impl_->map = loadMap(file);
    impl_->map._Connect(&impl_->port);
}

DescriptionFile::~DescriptionFile() = default;

GenApi::INodeMap& DescriptionFile::nodeMap() noexcept {
    return *impl_->map._Ptr();
}

void DescriptionFile::print(std::ostream& out) {
    printParameters(out, readParameters(nodeMap()));
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
    const GenApi::LoadReport& report = nodeMap().GetLoadReport();
    Json remarks = Json::array();
    for (const GenApi::LoadRemark& remark : report.remarks) {
        remarks.push_back(remarkJson(remark));
    }
    out << "{\"vendor\": " << printJsonLine(nodeMap().GetVendorName().str())
        << ", \"model\": " << printJsonLine(nodeMap().GetModelName().str()) << ", \"features\": ";
    printParametersAsJson(out, readParameters(nodeMap()));
    out << ", \"remarks\": " << printJsonLine(remarks)
        << ", \"remarksNotListed\": " << report.notListed << "}\n";
}

}  // namespace Orlix::Host
