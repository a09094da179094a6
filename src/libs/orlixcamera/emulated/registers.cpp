#include "orlixcamera/emulated/registers.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <utility>

#include "gcbase/gcexception.h"
#include "orlixcamera/pixel/pixeltable.h"

namespace Orlix::Emulated {

using GenICam::AccessException;
using GenICam::InvalidArgumentException;
using GenICam::OutOfRangeException;

namespace {

// The addresses that emulatedcamera.xml gives to its registers.
namespace At {
constexpr std::int64_t texts = 0x0000;
constexpr std::int64_t userDefinedName = 0x0100;
constexpr std::int64_t textsEnd = 0x0140;
constexpr std::int64_t sensorWidth = 0x1000;
constexpr std::int64_t sensorHeight = 0x1008;
constexpr std::int64_t widthMax = 0x1010;
constexpr std::int64_t heightMax = 0x1018;
constexpr std::int64_t widthInc = 0x1020;
constexpr std::int64_t heightInc = 0x1028;
constexpr std::int64_t payloadSize = 0x1030;
constexpr std::int64_t width = 0x1100;
constexpr std::int64_t height = 0x1108;
constexpr std::int64_t offsetX = 0x1110;
constexpr std::int64_t offsetY = 0x1118;
constexpr std::int64_t binningHorizontal = 0x1120;
constexpr std::int64_t binningVertical = 0x1128;
constexpr std::int64_t reverseX = 0x1130;
constexpr std::int64_t reverseY = 0x1138;
constexpr std::int64_t pixelFormat = 0x1140;
constexpr std::int64_t testPattern = 0x1148;
constexpr std::int64_t acquisitionMode = 0x1200;
constexpr std::int64_t acquisitionStart = 0x1208;
constexpr std::int64_t acquisitionStop = 0x1210;
constexpr std::int64_t acquisitionFrameCount = 0x1218;
constexpr std::int64_t acquiring = 0x1220;
constexpr std::int64_t exposureTime = 0x1228;
constexpr std::int64_t frameRateEnable = 0x1230;
constexpr std::int64_t frameRate = 0x1238;
constexpr std::int64_t resultingFrameRate = 0x1240;
constexpr std::int64_t triggerMode = 0x1250;
constexpr std::int64_t triggerSource = 0x1260;
constexpr std::int64_t triggerSoftware = 0x1270;
constexpr std::int64_t gain = 0x1300;
constexpr std::int64_t userSetLoad = 0x1400;
constexpr std::int64_t userSetSave = 0x1418;
constexpr std::int64_t userSetDefault = 0x1430;
}  // namespace At

constexpr std::size_t registerSize = 8;
constexpr std::size_t textSize = 64;
constexpr std::int64_t bankStep = 8;

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

// What the sensor can be asked for; emulatedcamera.xml has an entry for each.
constexpr std::array supportedFormats = {
    // clang-format off
    PixelType_Mono1Packed, PixelType_Mono2Packed, PixelType_Mono4Packed, PixelType_Mono8,
    PixelType_Mono10, PixelType_Mono10Packed, PixelType_Mono10p, PixelType_Mono12,
    PixelType_Mono12Packed, PixelType_Mono12p, PixelType_Mono16, PixelType_BayerGR8,
    PixelType_BayerRG8, PixelType_BayerGB8, PixelType_BayerBG8, PixelType_BayerGR10,
    PixelType_BayerRG10, PixelType_BayerGB10, PixelType_BayerBG10, PixelType_BayerGR12,
    PixelType_BayerRG12, PixelType_BayerGB12, PixelType_BayerBG12, PixelType_BayerGR12Packed,
    PixelType_BayerRG12Packed, PixelType_BayerGB12Packed, PixelType_BayerBG12Packed,
    PixelType_BayerGR10p, PixelType_BayerRG10p, PixelType_BayerGB10p, PixelType_BayerBG10p,
    PixelType_BayerGR12p, PixelType_BayerRG12p, PixelType_BayerGB12p, PixelType_BayerBG12p,
    PixelType_BayerGR16, PixelType_BayerRG16, PixelType_BayerGB16, PixelType_BayerBG16,
    PixelType_RGB8Packed, PixelType_BGR8Packed, PixelType_RGBA8Packed, PixelType_BGRA8Packed,
    PixelType_RGB10Packed, PixelType_BGR10Packed, PixelType_RGB12Packed, PixelType_BGR12Packed,
    PixelType_RGB12V1Packed, PixelType_RGB16Packed, PixelType_RGB8Planar, PixelType_RGB16Planar,
    PixelType_YUV422Packed, PixelType_YUV422_YUYV_Packed, PixelType_YCbCr422_8_YY_CbCr_Semiplanar,
    PixelType_YCbCr420_8_YY_CbCr_Semiplanar,
    // clang-format on
};

bool isSupported(double pixelFormat) {
    return std::any_of(supportedFormats.begin(), supportedFormats.end(), [&](EPixelType format) {
        return static_cast<double>(format) == pixelFormat;
    });
}

// Lines have whole bytes and whole groups of pixels that share chroma; a Bayer pattern begins with
// the same colour wherever the region lies.
std::uint32_t widthStep(EPixelType pixelType) {
    const PixelFormat& format = *FindPixelFormat(pixelType);
    std::uint32_t step =
        format.family == PixelFamily::Bayer || format.layout != PixelLayout::Whole ? 2 : 1;
    while (step * BitsPerPixel(pixelType) % 8 != 0) {
        step *= 2;
    }
    return step;
}

// So that the largest region is one that each format can have.
constexpr std::uint32_t largestStep = 8;

std::uint32_t heightStep(EPixelType pixelType) {
    const PixelFormat& format = *FindPixelFormat(pixelType);
    return format.family == PixelFamily::Bayer || format.layout == PixelLayout::Semiplanar420 ? 2
                                                                                              : 1;
}

std::uint32_t roundDown(std::uint32_t value, std::uint32_t step) {
    return value / step * step;
}

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
};
// clang-format on

static_assert(std::is_sorted(registerTable.begin(), registerTable.end(),
                             [](const Row& a, const Row& b) { return a.address < b.address; }));

constexpr std::size_t noRow = registerTable.size();

std::size_t findRow(std::int64_t address) noexcept {
    const auto found =
        std::lower_bound(registerTable.begin(), registerTable.end(), address,
                         [](const Row& row, std::int64_t value) { return row.address < value; });
    return found != registerTable.end() && found->address == address
               ? static_cast<std::size_t>(found - registerTable.begin())
               : noRow;
}

std::vector<double> factoryValues() {
    std::vector<double> values;
    for (const Row& row : registerTable) {
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

Registers::Registers(Identity identity) : identity_(std::move(identity)), values_(factoryValues()) {
    userSets_.fill(values_);
}

void Registers::Read(std::int64_t address, void* buffer, std::size_t length) const {
    auto* out = static_cast<std::uint8_t*>(buffer);
    std::size_t done = 0;
    while (done < length) {
        const std::int64_t here = address + static_cast<std::int64_t>(done);
        const std::string* text = findText(here);
        const std::size_t row = findRow(here);
        const std::size_t size = text != nullptr ? textSize : registerSize;
        if ((text == nullptr && row == noRow) || length - done < size) {
            throwNoRegister("Read", address, length);
        }
        if (text != nullptr) {
            std::memset(out + done, 0, textSize);
            std::memcpy(out + done, text->data(), std::min(text->size(), textSize));
        } else {
            if (registerTable[row].access == Access::Command) {
                throwAccess(registerTable[row].name, "can't be read.");
            }
            const std::uint64_t bits = encode(registerTable[row], valueOf(here));
            std::memcpy(out + done, &bits, sizeof bits);
        }
        done += size;
    }
}

void Registers::Write(std::int64_t address, const void* buffer, std::size_t length) {
    if (findText(address) != nullptr) {
        if (address != At::userDefinedName) {
            throwAccess("the device's identity", "can't be written.");
        }
        writeUserDefinedName(buffer, length);
        return;
    }
    const std::size_t row = findRow(address);
    if (row == noRow || length != registerSize) {
        throwNoRegister("Write", address, length);
    }
    if (registerTable[row].access == Access::Read) {
        throwAccess(registerTable[row].name, "can't be written.");
    }
    if (acquiring_ && registerTable[row].lock == Lock::Acquisition) {
        throwAccess(registerTable[row].name, "can't be written during an acquisition.");
    }
    const double value = decode(registerTable[row], buffer);
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
    settings.exposureMicroseconds = valueOf(At::exposureTime);
    settings.commonGainDecibels = valueOf(At::gain);
    std::int64_t bank = At::gain;
    for (double& gain : settings.gainDecibels) {
        bank += bankStep;
        gain = settings.commonGainDecibels + valueOf(bank);
    }
    return settings;
}

std::uint64_t Registers::GetPayloadSize() const {
    const Region region = getRegion();
    return ComputeBufferSize(pixelType(), region.width, region.height);
}

double Registers::GetFramePeriod() const {
    const double readOut =
        readOutOverhead + static_cast<double>(GetPayloadSize()) / readOutBytesPerSecond;
    const double asked = valueOf(At::frameRateEnable) != 0 ? 1 / valueOf(At::frameRate) : 0;
    return std::max({readOut, asked, valueOf(At::exposureTime) * 1e-6});
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

const std::string* Registers::findText(std::int64_t address) const noexcept {
    if (address < At::texts || address >= At::textsEnd ||
        address % static_cast<std::int64_t>(textSize) != 0) {
        return nullptr;
    }
    const std::array<const std::string*, 5> texts = {&identity_.vendor, &identity_.model,
                                                     &identity_.version, &identity_.serialNumber,
                                                     &identity_.userDefinedName};
    return texts[static_cast<std::size_t>(address) / textSize];
}

double Registers::valueOf(std::int64_t address) const {
    const std::size_t row = findRow(address);
    return registerTable[row].access == Access::Read ? computed(address) : values_[row];
}

void Registers::setValue(std::int64_t address, double value) {
    values_[findRow(address)] = value;
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
            return widthStep(pixelType());
        case At::heightInc:
            return heightStep(pixelType());
        case At::payloadSize:
            return static_cast<double>(GetPayloadSize());
        case At::acquiring:
            return acquiring_ ? 1 : 0;
        default:
            return 1 / GetFramePeriod();
    }
}

void Registers::writeUserDefinedName(const void* buffer, std::size_t length) {
    if (length != textSize) {
        throwNoRegister("Write", At::userDefinedName, length);
    }
    const auto* text = static_cast<const char*>(buffer);
    identity_.userDefinedName.assign(text, strnlen(text, textSize));
}

void Registers::checkRange(std::size_t row, double value) const {
    const Row& wanted = registerTable[row];
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
            if (!isSupported(value)) {
                throwRange(wanted.name, value);
            }
            break;
        case At::width:
            checkPlace(region.offsetX, widthMax(), widthStep(pixelType()));
            break;
        case At::height:
            checkPlace(region.offsetY, heightMax(), heightStep(pixelType()));
            break;
        case At::offsetX:
            checkPlace(region.width, widthMax(), widthStep(pixelType()));
            break;
        case At::offsetY:
            checkPlace(region.height, heightMax(), heightStep(pixelType()));
            break;
        default:
            break;
    }
}

void Registers::apply(std::int64_t address, double value) {
    if (registerTable[findRow(address)].access == Access::Write) {
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
    fit(At::width, At::offsetX, widthMax(), widthStep(pixelType()));
    fit(At::height, At::offsetY, heightMax(), heightStep(pixelType()));
}

void Registers::loadUserSet(std::size_t number) {
    for (std::size_t row = 0; row < registerTable.size(); ++row) {
        if (registerTable[row].store == Store::UserSet) {
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
                     largestStep);
}

std::uint32_t Registers::heightMax() const {
    return roundDown(sensorHeight / static_cast<std::uint32_t>(valueOf(At::binningVertical)),
                     largestStep);
}

}  // namespace Orlix::Emulated
