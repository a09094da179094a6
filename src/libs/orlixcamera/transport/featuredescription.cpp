#include "orlixcamera/transport/featuredescription.h"

namespace Orlix::Transport {
namespace {

std::string element(const char* name, const std::string& content) {
    return std::string("<") + name + ">" + content + "</" + name + ">";
}

// In the order of the schema.
std::string common(const FeatureTexts& texts) {
    const std::string displayName =
        texts.displayName != nullptr ? element("DisplayName", texts.displayName) : "";
    return element("ToolTip", texts.toolTip) + displayName + element("Visibility", "Expert");
}

std::string place(std::int64_t address, std::int64_t length, const char* access) {
    return element("Address", std::to_string(address)) + element("Length", std::to_string(length)) +
           element("AccessMode", access) + "<pPort>Device</pPort><Cachable>NoCache</Cachable>";
}

std::string rules(const NumberFeature& feature, const std::string& value) {
    std::string text;
    if (feature.isGoneAtZero) {
        text += element("pIsAvailable", value);
    }
    if (feature.lock != nullptr) {
        text += element("pIsLocked", feature.lock);
    }
    return feature.isStreamable ? text + element("Streamable", "Yes") : text;
}

std::string range(const NumberFeature& feature) {
    if (feature.isSwitch) {
        return "<OnValue>1</OnValue><OffValue>0</OffValue>";
    }
    return feature.isWritable ? element("Min", std::to_string(feature.minimum)) +
                                    element("Max", std::to_string(feature.maximum))
                              : "";
}

}  // namespace

FeatureDescription::FeatureDescription(const char* model, const char* productGuid,
                                       const char* versionGuid)
    : opening_(std::string("<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<RegisterDescription "
                           "xmlns=\"http://www.genicam.org/GenApi/Version_1_1\" ModelName=\"") +
               model +
               "\" VendorName=\"Orlix\" StandardNameSpace=\"None\" SchemaMajorVersion=\"1\" "
               "SchemaMinorVersion=\"1\" SchemaSubMinorVersion=\"0\" MajorVersion=\"1\" "
               "MinorVersion=\"0\" SubMinorVersion=\"0\" ProductGuid=\"" +
               productGuid + "\" VersionGuid=\"" + versionGuid + "\">\n") {}

void FeatureDescription::addToCategory(const FeatureTexts& texts) {
    if (lastCategory_ != texts.category) {
        categories_ += lastCategory_.empty() ? "" : "</Category>\n";
        categories_ += std::string("<Category Name=\"") + texts.category + "\">";
        root_ += element("pFeature", texts.category);
        lastCategory_ = texts.category;
    }
    categories_ += element("pFeature", texts.name);
}

void FeatureDescription::Add(const NumberFeature& feature) {
    addToCategory(feature.texts);
    const std::string value = std::string(feature.texts.name) + "Reg";
    const char* const type = feature.isSwitch ? "Boolean" : "Integer";
    nodes_ += std::string("<") + type + " Name=\"" + feature.texts.name + "\">" +
              common(feature.texts) + rules(feature, value) + element("pValue", value) +
              range(feature) + "</" + type + ">\n";
    AddRegister(value, feature.address, feature.isWritable);
}

void FeatureDescription::Add(const TextFeature& feature) {
    addToCategory(feature.texts);
    nodes_ += std::string("<StringReg Name=\"") + feature.texts.name + "\">" +
              common(feature.texts) + place(feature.address, feature.length, "RO") +
              "</StringReg>\n";
}

void FeatureDescription::AddRegister(const std::string& name, std::int64_t address,
                                     bool isWritable) {
    nodes_ += "<IntReg Name=\"" + name + "\"><Visibility>Invisible</Visibility>" +
              place(address, numberLength, isWritable ? "RW" : "RO") +
              "<Sign>Signed</Sign><Endianess>LittleEndian</Endianess></IntReg>\n";
}

std::string FeatureDescription::GetText() const {
    return opening_ + "<Category Name=\"Root\">" + root_ + "</Category>\n" + categories_ +
           (lastCategory_.empty() ? "" : "</Category>\n") + nodes_ +
           "<Port Name=\"Device\"/>\n</RegisterDescription>\n";
}

}  // namespace Orlix::Transport
