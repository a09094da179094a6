// The memory of the emulated camera as the host sees it: registers at fixed addresses, what may be
// written into them and what follows from it. Belongs to one camera, which lets one thread at a
// time in. What is refused is an exception that names the register, and leaves it as it was.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "orlixcamera/api.h"
#include "orlixcamera/emulated/chunks.h"
#include "orlixcamera/emulated/event.h"
#include "orlixcamera/emulated/faultplan.h"
#include "orlixcamera/pixeltype.h"

namespace Orlix::Emulated {

class SensorImages;

// What tells one camera from another.
struct Identity {
    std::string vendor;
    std::string model;
    std::string version;
    std::string serialNumber;
    std::string userDefinedName;
    Transport::ChunkByteOrder chunkByteOrder = Transport::ChunkByteOrder::BigEndian;
    std::uint32_t number = 1;  // of the camera in its layer
};

// "Name (serial number)", for messages.
[[nodiscard]] std::string LabelOf(const Identity& identity);

enum class Pattern : std::uint8_t {
    Off,  // the scene in front of the sensor, as bright as exposure and gain make it
    Black,
    White,
    GreyHorizontalRamp,
    GreyVerticalRamp,
    GreyVerticalRampMoving,
    GreyDiagonalRamp,
    GreyDiagonalRampMoving,
    ColorBar,
};

struct Region {
    std::uint32_t width = 0;
    std::uint32_t height = 0;
    std::uint32_t offsetX = 0;
    std::uint32_t offsetY = 0;
    bool operator==(const Region&) const = default;
};

enum class Trigger : std::uint8_t { AcquisitionStart, FrameStart };

// All that a picture depends on.
struct PictureSettings {
    EPixelType pixelType = PixelType_Mono8;
    Region region;
    std::uint32_t binningX = 1;  // columns of the sensor that make one
    std::uint32_t binningY = 1;
    bool reverseX = false;
    bool reverseY = false;
    Pattern pattern = Pattern::Off;
    std::uint32_t noiseLevel = 0;  // largest deviation, in levels of 8 bits
    std::shared_ptr<const SensorImages> images;
    double exposureMicroseconds = 0;
    std::array<double, 4> gainDecibels{};  // of all, red, green, blue; the first adds to the others
    bool operator==(const PictureSettings&) const = default;
};

class ORLIXCAMERA_API Registers {
public:
    static constexpr std::uint32_t sensorWidth = 4096;
    static constexpr std::uint32_t sensorHeight = 3072;

    explicit Registers(Identity identity);

    // One or more whole registers that follow each other. Throws InvalidArgumentException where
    // none is, AccessException for one that can only be written.
    void Read(std::int64_t address, void* buffer, std::size_t length) const;
    // One whole register. Throws InvalidArgumentException where none is, AccessException for one
    // that can only be read or is locked by the acquisition, OutOfRangeException for a wrong value.
    void Write(std::int64_t address, const void* buffer, std::size_t length);

    // Begins as a camera that gets power: the user set that is chosen for it, no acquisition.
    void PowerUp();

    [[nodiscard]] const Identity& GetIdentity() const noexcept { return identity_; }
    [[nodiscard]] PictureSettings GetPictureSettings() const;
    [[nodiscard]] std::uint64_t GetPayloadSize() const;
    [[nodiscard]] ChunkSettings GetChunkSettings() const;
    // From the start of one frame to that of the next, in seconds, as all settings allow it.
    [[nodiscard]] double GetFramePeriod() const;
    // From the start of a frame to its end, in seconds.
    [[nodiscard]] double GetFrameTime() const;

    [[nodiscard]] bool IsAcquiring() const noexcept { return acquiring_; }
    // Counts the acquisitions, so that the end of one and the start of the next isn't missed.
    [[nodiscard]] std::uint64_t GetAcquisitionNumber() const noexcept { return acquisitionNumber_; }
    // Frames that an acquisition has, 0 for no limit.
    [[nodiscard]] std::uint64_t GetFrameLimit() const;
    void EndAcquisition() noexcept { acquiring_ = false; }

    [[nodiscard]] bool IsTriggerOn(Trigger trigger) const;
    // Whether the trigger was fired since it was last taken; takes it.
    [[nodiscard]] bool TakeTrigger(Trigger trigger) noexcept;

    [[nodiscard]] bool IsEventOn(EventKind kind) const;
    // Whether a test event was asked for since; takes it.
    [[nodiscard]] bool TakeTestEvent() noexcept;

    // What goes wrong; kept when the power is lost. Throws InvalidArgumentException as the parser.
    void LoadFaults(const std::string& script);
    [[nodiscard]] FaultPlan& GetFaults() noexcept { return faults_; }
    // Whether a script was loaded since; takes it.
    [[nodiscard]] bool TakeNewFaults() noexcept;
    // What the register at that address is called; empty if there is none.
    [[nodiscard]] static std::string_view GetName(std::int64_t address) noexcept;

    // Since the stream was opened.
    void ResetFramesSent() noexcept { framesSent_ = 0; }
    void CountFrame() noexcept { ++framesSent_; }
    // Line 1 is high during an acquisition, line 2 changes with every frame.
    [[nodiscard]] std::uint64_t GetLineStatus() const noexcept;

private:
    // One number for each row of the table of registers, whole ones exactly.
    using Values = std::vector<double>;

    std::size_t readOne(std::int64_t address, std::uint8_t* out, std::size_t room) const;
    [[nodiscard]] const std::string& textOf(std::int64_t address) const noexcept;
    [[nodiscard]] double valueOf(std::int64_t address) const;
    void setValue(std::int64_t address, double value);
    [[nodiscard]] double computed(std::int64_t address) const;
    [[nodiscard]] double readOutTime() const;
    void loadImages(const std::string& folder);
    void writeText(std::size_t row, const void* buffer, std::size_t length);
    void checkRange(std::size_t row, double value) const;
    void apply(std::int64_t address, double value);
    void fire(Trigger trigger);
    void startAcquisition();
    void fitRegion();
    void loadUserSet(std::size_t number);
    void saveUserSet(std::size_t number);
    [[nodiscard]] Region getRegion() const;
    [[nodiscard]] EPixelType pixelType() const;
    [[nodiscard]] std::uint32_t widthMax() const;
    [[nodiscard]] std::uint32_t heightMax() const;

    Identity identity_;
    Values values_;
    std::array<Values, 3> userSets_;  // the first is that of the factory
    bool acquiring_ = false;
    std::uint64_t acquisitionNumber_ = 0;
    std::array<bool, 2> fired_{};
    bool testEvent_ = false;
    std::uint64_t framesSent_ = 0;
    std::string imageFolder_;
    std::shared_ptr<const SensorImages> images_;
    std::string faultScript_;
    FaultPlan faults_;
    bool newFaults_ = false;
};

}  // namespace Orlix::Emulated
