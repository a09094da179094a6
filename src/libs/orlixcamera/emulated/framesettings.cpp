// What follows from the registers: the picture, its size, and how long a frame takes.
#include <algorithm>
#include <utility>

#include "orlixcamera/emulated/registers.h"
#include "orlixcamera/emulated/registertable.h"
#include "orlixcamera/emulated/sensorformats.h"

namespace Orlix::Emulated {

namespace {

// The link of the sensor: what reading out a frame takes at least.
constexpr double readOutOverhead = 2e-6;
constexpr double readOutBytesPerSecond = 4e9;

std::uint32_t roundDown(std::uint32_t value, std::uint32_t step) {
    return value / step * step;
}

}  // namespace

PictureSettings Registers::GetPictureSettings() const {
    PictureSettings settings;
    settings.pixelType = pixelType();
    settings.region = getRegion();
    settings.binningX = static_cast<std::uint32_t>(valueOf(At::binningHorizontal));
    settings.binningY = static_cast<std::uint32_t>(valueOf(At::binningVertical));
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
