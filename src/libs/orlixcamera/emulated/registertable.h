// The registers of the emulated camera: where they lie, what they are called and what may be
// written into them. Constants; any thread may read them at any time.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

#include "orlixcamera/api.h"

namespace Orlix::Emulated {

// The addresses that emulatedcamera.xml gives to its registers.
namespace At {
inline constexpr std::int64_t vendor = 0x0000;
inline constexpr std::int64_t model = 0x0040;
inline constexpr std::int64_t version = 0x0080;
inline constexpr std::int64_t serialNumber = 0x00C0;
inline constexpr std::int64_t userDefinedName = 0x0100;
inline constexpr std::int64_t sensorWidth = 0x1000;
inline constexpr std::int64_t sensorHeight = 0x1008;
inline constexpr std::int64_t widthMax = 0x1010;
inline constexpr std::int64_t heightMax = 0x1018;
inline constexpr std::int64_t widthInc = 0x1020;
inline constexpr std::int64_t heightInc = 0x1028;
inline constexpr std::int64_t payloadSize = 0x1030;
inline constexpr std::int64_t framesSent = 0x1038;
inline constexpr std::int64_t lineStatusAll = 0x1040;
inline constexpr std::int64_t width = 0x1100;
inline constexpr std::int64_t height = 0x1108;
inline constexpr std::int64_t offsetX = 0x1110;
inline constexpr std::int64_t offsetY = 0x1118;
inline constexpr std::int64_t binningHorizontal = 0x1120;
inline constexpr std::int64_t binningVertical = 0x1128;
inline constexpr std::int64_t reverseX = 0x1130;
inline constexpr std::int64_t reverseY = 0x1138;
inline constexpr std::int64_t pixelFormat = 0x1140;
inline constexpr std::int64_t testPattern = 0x1148;
inline constexpr std::int64_t noiseLevel = 0x1150;
inline constexpr std::int64_t acquisitionMode = 0x1200;
inline constexpr std::int64_t acquisitionStart = 0x1208;
inline constexpr std::int64_t acquisitionStop = 0x1210;
inline constexpr std::int64_t acquisitionFrameCount = 0x1218;
inline constexpr std::int64_t acquiring = 0x1220;
inline constexpr std::int64_t exposureTime = 0x1228;
inline constexpr std::int64_t frameRateEnable = 0x1230;
inline constexpr std::int64_t frameRate = 0x1238;
inline constexpr std::int64_t resultingFrameRate = 0x1240;
inline constexpr std::int64_t triggerMode = 0x1250;
inline constexpr std::int64_t triggerSource = 0x1260;
inline constexpr std::int64_t triggerSoftware = 0x1270;
inline constexpr std::int64_t gain = 0x1300;
inline constexpr std::int64_t userSetLoad = 0x1400;
inline constexpr std::int64_t userSetSave = 0x1418;
inline constexpr std::int64_t userSetDefault = 0x1430;
inline constexpr std::int64_t chunkModeActive = 0x1500;
inline constexpr std::int64_t chunkEnable = 0x1508;
inline constexpr std::int64_t eventNotification = 0x1600;
inline constexpr std::int64_t testEventGenerate = 0x1640;
inline constexpr std::int64_t faultScript = 0x2000;
inline constexpr std::int64_t imageFolder = 0x3000;
}  // namespace At

// Registers of one feature, one for each value of its selector, follow each other in this distance.
inline constexpr std::int64_t bankStep = 8;
inline constexpr std::size_t registerSize = 8;

enum class Kind : std::uint8_t { Integer, Real };
enum class Access : std::uint8_t { Read, Write, Command };
// Free ones may be written during an acquisition.
enum class Lock : std::uint8_t { Free, Acquisition };
enum class Store : std::uint8_t { No, UserSet };

// A register that holds a number.
struct Row {
    std::int64_t address;
    const char* name;
    Kind kind;
    Access access;
    Lock lock;
    Store store;
    double initial;
    double min;
    double max;
};

// A register that holds a text.
struct TextRow {
    std::int64_t address;
    std::size_t size;
    const char* name;
    Access access;
};

// In the order of their addresses.
[[nodiscard]] ORLIXCAMERA_API std::span<const Row> AllRegisters() noexcept;
[[nodiscard]] ORLIXCAMERA_API std::span<const TextRow> AllTexts() noexcept;

// The index of the register at exactly this address, or the number of all if there is none.
[[nodiscard]] std::size_t FindRegister(std::int64_t address) noexcept;
[[nodiscard]] std::size_t FindText(std::int64_t address) noexcept;

}  // namespace Orlix::Emulated
