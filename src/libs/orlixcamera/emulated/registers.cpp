#include "orlixcamera/emulated/registers.h"

#include <algorithm>
#include <bit>
#include <cstdio>
#include <cstring>
#include <utility>

#include "gcbase/gcexception.h"
#include "orlixcamera/emulated/registertable.h"
#include "orlixcamera/emulated/sensorformats.h"
#include "orlixcamera/emulated/sensorimages.h"

namespace Orlix::Emulated {

using GenICam::AccessException;
using GenICam::InvalidArgumentException;
using GenICam::OutOfRangeException;

namespace {

std::string place(std::int64_t address) {
    char text[32];
    std::snprintf(text, sizeof text, "0x%llx", static_cast<unsigned long long>(address));
    return text;
}

std::string numberText(double value) {
    char text[40];
    std::snprintf(text, sizeof text, "%.15g", value);
    return text;
}

[[noreturn]] void throwNoRegister(const char* what, std::int64_t address, std::size_t length) {
    const std::string text = std::string(what) + " of " + std::to_string(length) +
                             " bytes at address " + place(address) +
                             " failed: no register of that size is there.";
    throw InvalidArgumentException(text.c_str(), __FILE__, __LINE__);
}

std::vector<double> factoryValues() {
    std::vector<double> values;
    for (const Row& row : AllRegisters()) {
        values.push_back(row.initial);
    }
    return values;
}

std::uint64_t encode(const Row& row, double value) {
    return row.kind == Kind::Real ? std::bit_cast<std::uint64_t>(value)
                                  : static_cast<std::uint64_t>(static_cast<std::int64_t>(value));
}

double decode(const Row& row, const void* buffer) {
    std::uint64_t bits = 0;
    std::memcpy(&bits, buffer, sizeof bits);
    return row.kind == Kind::Real ? std::bit_cast<double>(bits)
                                  : static_cast<double>(std::bit_cast<std::int64_t>(bits));
}

[[noreturn]] void throwAccess(const char* name, const char* reason) {
    const std::string text = std::string("Register '") + name + "' " + reason;
    throw AccessException(text.c_str(), __FILE__, __LINE__);
}

[[noreturn]] void throwRange(const char* name, double value) {
    const std::string text =
        std::string("Register '") + name + "' can't take the value " + numberText(value) + ".";
    throw OutOfRangeException(text.c_str(), __FILE__, __LINE__);
}

}  // namespace

std::string LabelOf(const Identity& identity) {
    const std::string& name =
        identity.userDefinedName.empty() ? identity.model : identity.userDefinedName;
    return name + " (" + identity.serialNumber + ")";
}

Registers::Registers(Identity identity) : identity_(std::move(identity)), values_(factoryValues()) {
    userSets_.fill(values_);
}

void Registers::Read(std::int64_t address, void* buffer, std::size_t length) const {
    auto* out = static_cast<std::uint8_t*>(buffer);
    std::size_t done = 0;
    while (done < length) {
        const std::int64_t here = address + static_cast<std::int64_t>(done);
        const std::size_t size = readOne(here, out + done, length - done);
        if (size == 0) {
            throwNoRegister("Read", address, length);
        }
        done += size;
    }
}

// The size of the register, or 0 if there is none that `room` bytes hold.
std::size_t Registers::readOne(std::int64_t address, std::uint8_t* out, std::size_t room) const {
    const std::size_t text = FindText(address);
    if (text < AllTexts().size()) {
        const std::size_t size = AllTexts()[text].size;
        if (size > room) {
            return 0;
        }
        const std::string& value = textOf(address);
        std::memset(out, 0, size);
        std::memcpy(out, value.data(), std::min(value.size(), size));
        return size;
    }
    const std::size_t row = FindRegister(address);
    if (row == AllRegisters().size() || room < registerSize) {
        return 0;
    }
    if (AllRegisters()[row].access == Access::Command) {
        throwAccess(AllRegisters()[row].name, "can't be read.");
    }
    const std::uint64_t bits = encode(AllRegisters()[row], valueOf(address));
    std::memcpy(out, &bits, sizeof bits);
    return registerSize;
}

void Registers::Write(std::int64_t address, const void* buffer, std::size_t length) {
    const std::size_t text = FindText(address);
    if (text < AllTexts().size()) {
        writeText(text, buffer, length);
        return;
    }
    const std::size_t row = FindRegister(address);
    if (row == AllRegisters().size() || length != registerSize) {
        throwNoRegister("Write", address, length);
    }
    if (AllRegisters()[row].access == Access::Read) {
        throwAccess(AllRegisters()[row].name, "can't be written.");
    }
    if (acquiring_ && AllRegisters()[row].lock == Lock::Acquisition) {
        throwAccess(AllRegisters()[row].name, "can't be written during an acquisition.");
    }
    const double value = decode(AllRegisters()[row], buffer);
    checkRange(row, value);
    apply(address, value);
}

void Registers::PowerUp() {
    acquiring_ = false;
    fired_.fill(false);
    loadUserSet(static_cast<std::size_t>(valueOf(At::userSetDefault)));
}

const std::string& Registers::textOf(std::int64_t address) const noexcept {
    switch (address) {
        case At::vendor:
            return identity_.vendor;
        case At::model:
            return identity_.model;
        case At::version:
            return identity_.version;
        case At::serialNumber:
            return identity_.serialNumber;
        case At::faultScript:
            return faultScript_;
        case At::imageFolder:
            return imageFolder_;
        default:
            return identity_.userDefinedName;
    }
}

double Registers::valueOf(std::int64_t address) const {
    const std::size_t row = FindRegister(address);
    return AllRegisters()[row].access == Access::Read ? computed(address) : values_[row];
}

void Registers::setValue(std::int64_t address, double value) {
    values_[FindRegister(address)] = value;
}

double Registers::computed(std::int64_t address) const {
    switch (address) {
        case At::sensorWidth:
            return sensorWidth;
        case At::sensorHeight:
            return sensorHeight;
        case At::widthMax:
            return widthMax();
        case At::heightMax:
            return heightMax();
        case At::widthInc:
            return WidthStepOf(pixelType());
        case At::heightInc:
            return HeightStepOf(pixelType());
        case At::payloadSize:
            return static_cast<double>(GetPayloadSize());
        case At::framesSent:
            return static_cast<double>(framesSent_);
        case At::lineStatusAll:
            return static_cast<double>(GetLineStatus());
        case At::acquiring:
            return acquiring_ ? 1 : 0;
        default:
            return 1 / GetFramePeriod();
    }
}

void Registers::writeText(std::size_t row, const void* buffer, std::size_t length) {
    const TextRow& wanted = AllTexts()[row];
    if (wanted.access != Access::Write) {
        throwAccess(wanted.name, "can't be written.");
    }
    if (length != wanted.size) {
        throwNoRegister("Write", wanted.address, length);
    }
    const auto* begin = static_cast<const char*>(buffer);
    const std::string text(begin, strnlen(begin, length));
    if (wanted.address == At::faultScript) {
        LoadFaults(text);
    } else if (wanted.address == At::imageFolder) {
        loadImages(text);
    } else {
        identity_.userDefinedName = text;
    }
}

void Registers::loadImages(const std::string& folder) {
    images_ = folder.empty() ? nullptr : SensorImages::Load(folder);
    imageFolder_ = folder;
}

void Registers::LoadFaults(const std::string& script) {
    faults_.Load(ParseFaultScript(script), identity_.number);
    faultScript_ = script;
    newFaults_ = true;
}

bool Registers::TakeNewFaults() noexcept {
    return std::exchange(newFaults_, false);
}

std::string_view Registers::GetName(std::int64_t address) noexcept {
    const std::size_t text = FindText(address);
    if (text < AllTexts().size()) {
        return AllTexts()[text].name;
    }
    const std::size_t row = FindRegister(address);
    return row < AllRegisters().size() ? AllRegisters()[row].name : "";
}

void Registers::checkRange(std::size_t row, double value) const {
    const Row& wanted = AllRegisters()[row];
    if (!(value >= wanted.min && value <= wanted.max)) {
        throwRange(wanted.name, value);
    }
    const Region region = getRegion();
    const auto checkPlace = [&](double other, std::uint32_t max, std::uint32_t step) {
        if (value + other > max || static_cast<std::uint32_t>(value) % step != 0) {
            throwRange(wanted.name, value);
        }
    };
    switch (wanted.address) {
        case At::pixelFormat:
            if (!IsSensorFormat(value)) {
                throwRange(wanted.name, value);
            }
            break;
        case At::width:
            checkPlace(region.offsetX, widthMax(), WidthStepOf(pixelType()));
            break;
        case At::height:
            checkPlace(region.offsetY, heightMax(), HeightStepOf(pixelType()));
            break;
        case At::offsetX:
            checkPlace(region.width, widthMax(), WidthStepOf(pixelType()));
            break;
        case At::offsetY:
            checkPlace(region.height, heightMax(), HeightStepOf(pixelType()));
            break;
        default:
            break;
    }
}

void Registers::apply(std::int64_t address, double value) {
    if (AllRegisters()[FindRegister(address)].access == Access::Write) {
        setValue(address, value);
        fitRegion();
        return;
    }
    switch (address) {
        case At::acquisitionStart:
            startAcquisition();
            break;
        case At::acquisitionStop:
            acquiring_ = false;
            break;
        case At::triggerSoftware:
            fire(Trigger::AcquisitionStart);
            break;
        case At::triggerSoftware + bankStep:
            fire(Trigger::FrameStart);
            break;
        case At::testEventGenerate:
            testEvent_ = true;
            break;
        case At::userSetSave + bankStep:
        case At::userSetSave + 2 * bankStep:
            saveUserSet(static_cast<std::size_t>((address - At::userSetSave) / bankStep));
            break;
        default:
            loadUserSet(static_cast<std::size_t>((address - At::userSetLoad) / bankStep));
            break;
    }
}

// A trigger outside of an acquisition, or of a mode that is off, is missed as on any camera.
void Registers::fire(Trigger trigger) {
    if (acquiring_ && IsTriggerOn(trigger)) {
        fired_[static_cast<std::size_t>(trigger)] = true;
    }
}

void Registers::startAcquisition() {
    fired_.fill(false);
    acquiring_ = true;
    ++acquisitionNumber_;
}

void Registers::loadUserSet(std::size_t number) {
    for (std::size_t row = 0; row < AllRegisters().size(); ++row) {
        if (AllRegisters()[row].store == Store::UserSet) {
            values_[row] = userSets_[number][row];
        }
    }
}

void Registers::saveUserSet(std::size_t number) {
    userSets_[number] = values_;
}

}  // namespace Orlix::Emulated
