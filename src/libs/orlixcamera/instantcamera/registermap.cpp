#include "orlixcamera/instantcamera/registermap.h"

#include <algorithm>
#include <bit>
#include <cstring>
#include <map>
#include <mutex>
#include <string>

#include "gcbase/gcexception.h"
#include "genapi/nodemapfactory.h"
#include "orlixcamera/transport/featuredescription.h"

namespace Orlix::Detail {

// The port copies numbers as they lie in memory.
static_assert(std::endian::native == std::endian::little);

namespace {

using Transport::FeatureDescription;

constexpr std::int64_t numberLength = FeatureDescription::numberLength;
constexpr const char* openName = "IsOpenReg";
constexpr const char* grabbingName = "IsGrabbingReg";
constexpr std::int64_t openAddress = 0x10000;
constexpr std::int64_t grabbingAddress = 0x10008;
constexpr std::int64_t textBase = 0x100000;
constexpr std::int64_t textLength = 512;

Transport::FeatureTexts textsOf(const RegisterRow& row) {
    return {row.category, row.name, row.toolTip, row.displayName};
}

Transport::TextFeature textOf(const RegisterRow& row, std::int64_t number) {
    return {textsOf(row), textBase + number * textLength, textLength};
}

Transport::NumberFeature numberOf(const RegisterRow& row, std::int64_t number) {
    const bool isWritable = row.writable != Writable::Never;
    const char* const lock = row.writable == Writable::WhileClosed ? openName : grabbingName;
    return {.texts = textsOf(row),
            .address = number * numberLength,
            .isSwitch = row.kind == RegisterKind::Boolean,
            .isWritable = isWritable,
            .minimum = row.minimum,
            .maximum = row.maximum,
            .lock = isWritable ? lock : nullptr,
            .isStreamable = isWritable,
            .isGoneAtZero = row.available == Available::UnlessZero};
}

std::string describe(const char* model, std::span<const RegisterRow> table) {
    FeatureDescription description(model, "1B6C6F0E-52A0-4C55-8B5C-6E6E4F9D7A01",
                                   "5D9E2B1C-0F4B-4B7E-9A43-3C2A8D1E6B02");
    for (std::int64_t number = 0; number < std::ssize(table); ++number) {
        const RegisterRow& row = table[static_cast<std::size_t>(number)];
        row.kind == RegisterKind::Text ? description.Add(textOf(row, number))
                                       : description.Add(numberOf(row, number));
    }
    description.AddRegister(openName, openAddress, false);
    description.AddRegister(grabbingName, grabbingAddress, false);
    return description.GetText();
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
