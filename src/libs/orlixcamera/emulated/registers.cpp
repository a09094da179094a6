#include "orlixcamera/emulated/registers.h"

#include <algorithm>
#include <bit>
#include <cmath>
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

// The link of the sensor: what reading out a frame takes at least.
constexpr double readOutOverhead = 2e-6;
constexpr double readOutBytesPerSecond = 4e9;

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

std::uint32_t roundDown(std::uint32_t value, std::uint32_t step) {
    return value / step * step;
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

PictureSettings Registers::GetPictureSettings() const {
    PictureSettings settings;
    settings.pixelType = pixelType();
    settings.region = getRegion();
    settings.reverseX = valueOf(At::reverseX) != 0;
    settings.reverseY = valueOf(At::reverseY) != 0;
    settings.pattern = static_cast<Pattern>(static_cast<int>(valueOf(At::testPattern)));
    settings.noiseLevel = static_cast<std::uint32_t>(valueOf(At::noiseLevel));
    settings.images = images_;
    settings.exposureMicroseconds = valueOf(At::exposureTime);
    std::int64_t bank = At::gain;
    for (double& gain : settings.gainDecibels) {
        gain = valueOf(bank);
        bank += bankStep;
    }
    return settings;
}

std::uint64_t Registers::GetPayloadSize() const {
    const Region region = getRegion();
    ChunkSettings chunks = GetChunkSettings();
    chunks.unknown = faults_.HasUnknownChunk();
    return ComputeBufferSize(pixelType(), region.width, region.height) + GetChunkBytes(chunks);
}

ChunkSettings Registers::GetChunkSettings() const {
    ChunkSettings settings;
    settings.active = valueOf(At::chunkModeActive) != 0;
    settings.byteOrder = identity_.chunkByteOrder;
    for (std::size_t chunk = 0; settings.active && chunk < chunkCount; ++chunk) {
        const bool enabled =
            valueOf(At::chunkEnable + static_cast<std::int64_t>(chunk) * bankStep) != 0;
        settings.enabled |= enabled ? 1U << chunk : 0U;
    }
    return settings;
}

bool Registers::IsEventOn(EventKind kind) const {
    return valueOf(At::eventNotification + static_cast<std::int64_t>(kind) * bankStep) != 0;
}

bool Registers::TakeTestEvent() noexcept {
    return std::exchange(testEvent_, false);
}

std::uint64_t Registers::GetLineStatus() const noexcept {
    constexpr std::uint64_t acquisitionActive = 1;
    constexpr std::uint64_t togglesWithFrames = 2;
    return (acquiring_ ? acquisitionActive : 0) | (framesSent_ % 2 != 0 ? togglesWithFrames : 0);
}

double Registers::readOutTime() const {
    return readOutOverhead + static_cast<double>(GetPayloadSize()) / readOutBytesPerSecond;
}

double Registers::GetFramePeriod() const {
    const double asked = valueOf(At::frameRateEnable) != 0 ? 1 / valueOf(At::frameRate) : 0;
    return std::max(asked, GetFrameTime());
}

double Registers::GetFrameTime() const {
    return std::max(readOutTime(), valueOf(At::exposureTime) * 1e-6);
}

std::uint64_t Registers::GetFrameLimit() const {
    constexpr double singleFrame = 1;
    constexpr double multiFrame = 2;
    const double mode = valueOf(At::acquisitionMode);
    if (mode == multiFrame) {
        return static_cast<std::uint64_t>(valueOf(At::acquisitionFrameCount));
    }
    return mode == singleFrame ? 1 : 0;
}

bool Registers::IsTriggerOn(Trigger trigger) const {
    return valueOf(At::triggerMode + static_cast<std::int64_t>(trigger) * bankStep) != 0;
}

bool Registers::TakeTrigger(Trigger trigger) noexcept {
    return std::exchange(fired_[static_cast<std::size_t>(trigger)], false);
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

// Other binning or another format may leave less room, or ask for other steps.
void Registers::fitRegion() {
    const auto fit = [this](std::int64_t sizeAt, std::int64_t offsetAt, std::uint32_t max,
                            std::uint32_t step) {
        const auto size = static_cast<std::uint32_t>(valueOf(sizeAt));
        const auto offset = static_cast<std::uint32_t>(valueOf(offsetAt));
        const std::uint32_t newSize = std::max(step, roundDown(std::min(size, max), step));
        setValue(sizeAt, newSize);
        setValue(offsetAt, roundDown(std::min(offset, max - newSize), step));
    };
    fit(At::width, At::offsetX, widthMax(), WidthStepOf(pixelType()));
    fit(At::height, At::offsetY, heightMax(), HeightStepOf(pixelType()));
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

Region Registers::getRegion() const {
    const auto value = [this](std::int64_t address) {
        return static_cast<std::uint32_t>(valueOf(address));
    };
    return {value(At::width), value(At::height), value(At::offsetX), value(At::offsetY)};
}

EPixelType Registers::pixelType() const {
    return static_cast<EPixelType>(static_cast<std::int64_t>(valueOf(At::pixelFormat)));
}

std::uint32_t Registers::widthMax() const {
    return roundDown(sensorWidth / static_cast<std::uint32_t>(valueOf(At::binningHorizontal)),
                     largestSizeStep);
}

std::uint32_t Registers::heightMax() const {
    return roundDown(sensorHeight / static_cast<std::uint32_t>(valueOf(At::binningVertical)),
                     largestSizeStep);
}

}  // namespace Orlix::Emulated
