#include "orlixcamera/instantcamera/registermap.h"

#include <algorithm>
#include <bit>
#include <cstring>
#include <map>
#include <mutex>
#include <string>

#include "gcbase/gcexception.h"
#include "genapi/nodemapfactory.h"

namespace Orlix::Detail {

// The port copies numbers as they lie in memory.
static_assert(std::endian::native == std::endian::little);

namespace {

constexpr std::int64_t numberLength = 8;
constexpr std::int64_t openAddress = 0x10000;
constexpr std::int64_t grabbingAddress = 0x10008;
constexpr std::int64_t textBase = 0x100000;
constexpr std::int64_t textLength = 512;

std::string element(const char* name, const std::string& content) {
    return std::string("<") + name + ">" + content + "</" + name + ">";
}

std::string registerNode(const std::string& name, std::int64_t address, const char* access) {
    return "<IntReg Name=\"" + name + "\"><Visibility>Invisible</Visibility>" +
           element("Address", std::to_string(address)) +
           element("Length", std::to_string(numberLength)) + element("AccessMode", access) +
           "<pPort>Device</pPort><Cachable>NoCache</Cachable><Sign>Signed</Sign>"
           "<Endianess>LittleEndian</Endianess></IntReg>\n";
}

// What every feature has, in the order of the schema.
std::string texts(const RegisterRow& row) {
    return element("ToolTip", row.toolTip) + element("DisplayName", row.displayName) +
           element("Visibility", "Expert");
}

std::string textNode(const RegisterRow& row, std::size_t number) {
    const std::int64_t address = textBase + static_cast<std::int64_t>(number) * textLength;
    return std::string("<StringReg Name=\"") + row.name + "\">" + texts(row) +
           element("Address", std::to_string(address)) +
           element("Length", std::to_string(textLength)) +
           "<AccessMode>RO</AccessMode><pPort>Device</pPort><Cachable>NoCache</Cachable>"
           "</StringReg>\n";
}

std::string numberNode(const RegisterRow& row, std::size_t number) {
    const bool isBoolean = row.kind == RegisterKind::Boolean;
    const bool isWritable = row.writable != Writable::Never;
    const std::string value = std::string(row.name) + "Reg";
    const char* const type = isBoolean ? "Boolean" : "Integer";
    std::string text = std::string("<") + type + " Name=\"" + row.name + "\">" + texts(row);
    if (row.available == Available::UnlessZero) {
        text += element("pIsAvailable", value);
    }
    if (isWritable) {
        text += element("pIsLocked",
                        row.writable == Writable::WhileClosed ? "IsOpenReg" : "IsGrabbingReg") +
                element("Streamable", "Yes");
    }
    text += element("pValue", value);
    if (isBoolean) {
        text += "<OnValue>1</OnValue><OffValue>0</OffValue>";
    } else if (isWritable) {
        text += element("Min", std::to_string(row.minimum)) +
                element("Max", std::to_string(row.maximum));
    }
    const auto address = static_cast<std::int64_t>(number) * numberLength;
    return text + "</" + type + ">\n" + registerNode(value, address, isWritable ? "RW" : "RO");
}

std::string categories(std::span<const RegisterRow> table) {
    std::string root;
    std::string all;
    for (std::size_t first = 0; first < table.size();) {
        const char* const name = table[first].category;
        root += element("pFeature", name);
        all += std::string("<Category Name=\"") + name + "\">";
        for (; first < table.size() && std::strcmp(table[first].category, name) == 0; ++first) {
            all += element("pFeature", table[first].name);
        }
        all += "</Category>\n";
    }
    return "<Category Name=\"Root\">" + root + "</Category>\n" + all;
}

std::string describe(const char* model, std::span<const RegisterRow> table) {
    std::string text =
        std::string(
            "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<RegisterDescription "
            "xmlns=\"http://www.genicam.org/GenApi/Version_1_1\" ModelName=\"") +
        model +
        "\" VendorName=\"Orlix\" StandardNameSpace=\"None\" SchemaMajorVersion=\"1\" "
        "SchemaMinorVersion=\"1\" SchemaSubMinorVersion=\"0\" MajorVersion=\"1\" "
        "MinorVersion=\"0\" SubMinorVersion=\"0\" "
        "ProductGuid=\"1B6C6F0E-52A0-4C55-8B5C-6E6E4F9D7A01\" "
        "VersionGuid=\"5D9E2B1C-0F4B-4B7E-9A43-3C2A8D1E6B02\">\n" +
        categories(table);
    for (std::size_t number = 0; number < table.size(); ++number) {
        const RegisterRow& row = table[number];
        text += row.kind == RegisterKind::Text ? textNode(row, number) : numberNode(row, number);
    }
    return text + registerNode("IsOpenReg", openAddress, "RO") +
           registerNode("IsGrabbingReg", grabbingAddress, "RO") +
           "<Port Name=\"Device\"/>\n</RegisterDescription>\n";
}

// A camera makes its maps in no time, since a table's text is made and parsed once.
GenApi::CNodeMapRef createMap(const char* name, std::span<const RegisterRow> table) {
    static std::mutex mutex;
    static std::map<const RegisterRow*, GenApi::CNodeMapFactory> factories;
    const std::scoped_lock lock(mutex);
    auto found = factories.find(table.data());
    if (found == factories.end()) {
        const std::string text = describe(name, table);
        found = factories
                    .emplace(table.data(), GenApi::CNodeMapFactory(GenApi::ContentType_Xml,
                                                                   text.data(), text.size()))
                    .first;
    }
    return found->second.CreateNodeMap(name);
}

}  // namespace

class RegisterMap::Port final : public GenApi::CPortImpl {
public:
    Port(std::span<const RegisterRow> table, std::shared_ptr<IRegisters> registers)
        : table_(table), registers_(std::move(registers)) {}

    [[nodiscard]] GenApi::EAccessMode GetAccessMode() const override {
        return registers_->IsPresent() ? GenApi::RW : GenApi::NA;
    }

    void Read(void* pBuffer, std::int64_t Address, std::int64_t Length) override {
        if (Address >= textBase) {
            readText(static_cast<char*>(pBuffer), rowAt(Address - textBase, textLength), Length);
            return;
        }
        std::int64_t value = 0;
        if (Address == openAddress) {
            value = registers_->IsOpen() ? 1 : 0;
        } else if (Address == grabbingAddress) {
            value = registers_->IsGrabbing() ? 1 : 0;
        } else {
            value = registers_->GetInteger(rowAt(Address, numberLength));
        }
        std::memcpy(pBuffer, &value, static_cast<std::size_t>(std::min(Length, numberLength)));
    }

    void Write(const void* pBuffer, std::int64_t Address, std::int64_t Length) override {
        std::int64_t value = 0;
        std::memcpy(&value, pBuffer, static_cast<std::size_t>(std::min(Length, numberLength)));
        registers_->SetInteger(rowAt(Address, numberLength), value);
    }

private:
    [[nodiscard]] std::size_t rowAt(std::int64_t offset, std::int64_t length) const {
        const std::int64_t row = offset / length;
        if (offset < 0 || offset % length != 0 || row >= std::ssize(table_)) {
            const std::string text = "There is no register at offset " + std::to_string(offset) +
                                     " of the camera's own settings.";
            throw GenICam::InvalidArgumentException(text.c_str(), __FILE__, __LINE__);
        }
        return static_cast<std::size_t>(row);
    }

    void readText(char* buffer, std::size_t row, std::int64_t length) const {
        const std::string text = registers_->GetText(row).str();
        const auto room = static_cast<std::size_t>(length);
        std::memset(buffer, 0, room);
        std::memcpy(buffer, text.data(), std::min(text.size(), room));
    }

    const std::span<const RegisterRow> table_;
    const std::shared_ptr<IRegisters> registers_;
};

RegisterMap::RegisterMap(const char* deviceName, std::span<const RegisterRow> table,
                         std::shared_ptr<IRegisters> registers)
    : map_(createMap(deviceName, table)),
      port_(std::make_unique<Port>(table, std::move(registers))) {
    map_->Connect(port_.get(), "Device");
}

RegisterMap::~RegisterMap() = default;

void RegisterMap::Invalidate() {
    port_->InvalidateNode();
}

}  // namespace Orlix::Detail
