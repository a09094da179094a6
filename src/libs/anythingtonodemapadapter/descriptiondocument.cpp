#include "anythingtonodemapadapter/descriptiondocument.h"

#include <locale>
#include <sstream>
#include <utility>

#include "anythingtonodemapadapter/basicnodemapport.h"
#include "anythingtonodemapadapter/descriptiontext.h"

namespace AnythingToNodeMapAdapter::Detail {

namespace {

// The root element is the same for every node map; both GUIDs are the adapter's own.
constexpr auto documentHead =
    "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
    "<RegisterDescription xmlns=\"http://www.genicam.org/GenApi/Version_1_1\""
    " xmlns:xsi=\"http://www.w3.org/2001/XMLSchema-instance\""
    " xsi:schemaLocation=\"http://www.genicam.org/GenApi/Version_1_1\""
    " SchemaSubMinorVersion=\"0\" VendorName=\"Tarvek\" SchemaMinorVersion=\"1\""
    " SubMinorVersion=\"1\" VersionGuid=\"E6D851E3-9DF1-4875-B796-DA2477F1CA61\""
    " SchemaMajorVersion=\"1\" MajorVersion=\"0\" MinorVersion=\"0\" StandardNameSpace=\"None\""
    " ModelName=\"Params\" ProductGuid=\"85FC0460-25EB-4EBB-92B1-1BB54FF98422\""
    " ToolTip=\"Parameters\">\n"
    "\n";
constexpr auto documentEnd =
    "\n"
    "</RegisterDescription>\n";

}  // namespace

gcstring writeDescription(const NodeMapPorts& ports, const gcstring& portName,
                          const gcstring& prefix, DescriptionPurpose purpose) {
    std::ostringstream text;
    // A host may have set a locale whose numbers have grouped digits.
    text.imbue(std::locale::classic());
    text << documentHead;
    const bool ownPort = portName.empty();
    std::int64_t address = 0;
    for (const auto& [name, port] : ports) {
        if (purpose == DescriptionPurpose::NodeMap) {
            port->generateAndRecord(text, ownPort, portName, prefix, address);
        } else {
            port->generateNode(text, ownPort, portName, prefix, address);
        }
    }
    if (!ownPort) {
        writePort(text, portName, "Port node giving access to parameters.");
    }
    text << documentEnd;
    return gcstring(std::move(text).str());
}

}  // namespace AnythingToNodeMapAdapter::Detail
