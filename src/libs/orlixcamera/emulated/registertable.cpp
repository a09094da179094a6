#include "orlixcamera/emulated/registertable.h"

#include <algorithm>
#include <array>

#include "orlixcamera/emulated/registers.h"

namespace Orlix::Emulated {
namespace {

constexpr Row geometry(std::int64_t address, const char* name, double initial, double min,
                       double max) {
    return {address, name, Kind::Integer, Access::Write, Lock::Acquisition, Store::UserSet, initial,
            min,     max};
}
constexpr Row choice(std::int64_t address, const char* name, double initial, double max) {
    return {address, name, Kind::Integer, Access::Write, Lock::Free, Store::UserSet, initial,
            0,       max};
}
constexpr Row real(std::int64_t address, const char* name, double initial, double min, double max) {
    return {address, name, Kind::Real, Access::Write, Lock::Free, Store::UserSet,
            initial, min,  max};
}
constexpr Row result(std::int64_t address, const char* name, Kind kind = Kind::Integer) {
    return {address, name, kind, Access::Read, Lock::Free, Store::No, 0, 0, 0};
}
constexpr Row command(std::int64_t address, const char* name, Lock lock = Lock::Free) {
    return {address, name, Kind::Integer, Access::Command, lock, Store::No, 0, 1, 1};
}

// clang-format off
constexpr std::array registerTable = {
    result(At::sensorWidth, "SensorWidth"),
    result(At::sensorHeight, "SensorHeight"),
    result(At::widthMax, "WidthMax"),
    result(At::heightMax, "HeightMax"),
    result(At::widthInc, "WidthInc"),
    result(At::heightInc, "HeightInc"),
    result(At::payloadSize, "PayloadSize"),
    result(At::framesSent, "FramesSent"),
    result(At::lineStatusAll, "LineStatusAll"),
    //       address                name                  initial           smallest, largest
    geometry(At::width,             "Width",              1024,             1, Registers::sensorWidth),
    geometry(At::height,            "Height",             768,              1, Registers::sensorHeight),
    geometry(At::offsetX,           "OffsetX",            0,                0, Registers::sensorWidth),
    geometry(At::offsetY,           "OffsetY",            0,                0, Registers::sensorHeight),
    geometry(At::binningHorizontal, "BinningHorizontal",  1,                1, 4),
    geometry(At::binningVertical,   "BinningVertical",    1,                1, 4),
    geometry(At::reverseX,          "ReverseX",           0,                0, 1),
    geometry(At::reverseY,          "ReverseY",           0,                0, 1),
    geometry(At::pixelFormat,       "PixelFormat",        PixelType_Mono8,  0, 0xFFFFFFFF),
    choice(At::testPattern,         "TestPattern",        0,                   8),
    choice(At::noiseLevel,          "NoiseLevel",         0,                   64),
    geometry(At::acquisitionMode,   "AcquisitionMode",    0,                0, 2),
    command(At::acquisitionStart,   "AcquisitionStart",   Lock::Acquisition),
    command(At::acquisitionStop,    "AcquisitionStop"),
    geometry(At::acquisitionFrameCount, "AcquisitionFrameCount", 1,         1, 65535),
    result(At::acquiring,           "Acquiring"),
    real(At::exposureTime,          "ExposureTime",       5000,             1, 1e7),
    choice(At::frameRateEnable,     "AcquisitionFrameRateEnable", 0,           1),
    real(At::frameRate,             "AcquisitionFrameRate", 100,            0.1, 1e5),
    result(At::resultingFrameRate,  "ResultingFrameRate", Kind::Real),
    choice(At::triggerMode,                 "TriggerMode of AcquisitionStart", 0, 1),
    choice(At::triggerMode + bankStep,      "TriggerMode of FrameStart",       0, 1),
    choice(At::triggerSource,               "TriggerSource of AcquisitionStart", 0, 0),
    choice(At::triggerSource + bankStep,    "TriggerSource of FrameStart",     0, 0),
    command(At::triggerSoftware,            "TriggerSoftware of AcquisitionStart"),
    command(At::triggerSoftware + bankStep, "TriggerSoftware of FrameStart"),
    real(At::gain,                  "Gain of All",        0,                0, 24),
    real(At::gain + bankStep,       "Gain of Red",        0,                0, 24),
    real(At::gain + 2 * bankStep,   "Gain of Green",      0,                0, 24),
    real(At::gain + 3 * bankStep,   "Gain of Blue",       0,                0, 24),
    command(At::userSetLoad,                "UserSetLoad of Default",  Lock::Acquisition),
    command(At::userSetLoad + bankStep,     "UserSetLoad of UserSet1", Lock::Acquisition),
    command(At::userSetLoad + 2 * bankStep, "UserSetLoad of UserSet2", Lock::Acquisition),
    command(At::userSetSave + bankStep,     "UserSetSave of UserSet1"),
    command(At::userSetSave + 2 * bankStep, "UserSetSave of UserSet2"),
    Row{At::userSetDefault, "UserSetDefault", Kind::Integer, Access::Write, Lock::Free, Store::No, 0, 0, 2},
    geometry(At::chunkModeActive,           "ChunkModeActive", 0,              0, 1),
    geometry(At::chunkEnable,               "ChunkEnable of Image", 1,         1, 1),
    geometry(At::chunkEnable + bankStep,    "ChunkEnable of FrameID", 0,       0, 1),
    geometry(At::chunkEnable + 2 * bankStep, "ChunkEnable of Timestamp", 0,    0, 1),
    geometry(At::chunkEnable + 3 * bankStep, "ChunkEnable of ExposureTime", 0, 0, 1),
    geometry(At::chunkEnable + 4 * bankStep, "ChunkEnable of Gain", 0,         0, 1),
    geometry(At::chunkEnable + 5 * bankStep, "ChunkEnable of LineStatusAll", 0, 0, 1),
    geometry(At::chunkEnable + 6 * bankStep, "ChunkEnable of SceneName", 0,    0, 1),
    geometry(At::chunkEnable + 7 * bankStep, "ChunkEnable of Triggered", 0,    0, 1),
    choice(At::eventNotification,                "EventNotification of FrameStart",  0, 1),
    choice(At::eventNotification + bankStep,     "EventNotification of ExposureEnd", 0, 1),
    choice(At::eventNotification + 2 * bankStep, "EventNotification of FrameEnd",    0, 1),
    choice(At::eventNotification + 3 * bankStep, "EventNotification of Overrun",     0, 1),
    choice(At::eventNotification + 4 * bankStep, "EventNotification of EventOverrun", 0, 1),
    choice(At::eventNotification + 5 * bankStep, "EventNotification of Test",        0, 1),
    command(At::testEventGenerate,          "TestEventGenerate"),
};
// clang-format on

static_assert(std::is_sorted(registerTable.begin(), registerTable.end(),
                             [](const Row& a, const Row& b) { return a.address < b.address; }));

constexpr std::array textTable = {
    TextRow{At::vendor, 64, "DeviceVendorName", Access::Read},
    TextRow{At::model, 64, "DeviceModelName", Access::Read},
    TextRow{At::version, 64, "DeviceVersion", Access::Read},
    TextRow{At::serialNumber, 64, "DeviceSerialNumber", Access::Read},
    TextRow{At::userDefinedName, 64, "DeviceUserID", Access::Write},
    TextRow{At::faultScript, 4096, "FaultScript", Access::Write},
    TextRow{At::imageFolder, 1024, "ImageFolder", Access::Write},
};

template <typename Table>
std::size_t findIn(const Table& table, std::int64_t address) noexcept {
    const auto found =
        std::lower_bound(table.begin(), table.end(), address,
                         [](const auto& row, std::int64_t value) { return row.address < value; });
    return found != table.end() && found->address == address
               ? static_cast<std::size_t>(found - table.begin())
               : table.size();
}

}  // namespace

std::span<const Row> AllRegisters() noexcept {
    return registerTable;
}

std::span<const TextRow> AllTexts() noexcept {
    return textTable;
}

std::size_t FindRegister(std::int64_t address) noexcept {
    return findIn(registerTable, address);
}

std::size_t FindText(std::int64_t address) noexcept {
    return findIn(textTable, address);
}

}  // namespace Orlix::Emulated
