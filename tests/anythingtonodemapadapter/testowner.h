// An owner with one parameter of each kind, as a node would be, and an observer that counts.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "anythingtonodemapadapter/booleanparameterport.h"
#include "anythingtonodemapadapter/categoryparameterport.h"
#include "anythingtonodemapadapter/commandparameterport.h"
#include "anythingtonodemapadapter/enumentryparameterport.h"
#include "anythingtonodemapadapter/enumparameterport.h"
#include "anythingtonodemapadapter/integerparameterport.h"
#include "anythingtonodemapadapter/stringparameterport.h"
#include "gcbase/gcexception.h"
#include "genapi/synch.h"

namespace AnythingToNodeMapAdapter::Test {

enum Color : std::uint32_t { Red = 0, Green = 1, Blue = 7 };

// Setters count their calls. Every access takes the owner's lock, as a node's does.
class TestOwner {
public:
    std::uint64_t getSpeed() const { return read(speed); }
    void setSpeed(std::uint64_t value) {
        if (value == 0) {
            throw GenICam::RuntimeException("Speed must be greater than 0.", __FILE__, __LINE__);
        }
        write(speed, value);
    }
    std::int64_t getOffset() const { return read(offset); }
    void setOffset(std::int64_t value) { write(offset, value); }
    bool getEnabled() const { return read(enabled); }
    void setEnabled(bool value) { write(enabled, value); }
    Color getColor() const { return read(color); }
    void setColor(Color value) { write(color, value); }
    unsigned int getFormat() const { return read(format); }
    void setFormat(unsigned int value) { write(format, value); }
    gcstring getPath() const { return read(path); }
    void setPath(const gcstring& value) { write(path, value); }
    bool isExecutingReset() const { return read(executing); }
    void executeReset() { ++resets; }

    mutable GenApi::CLock lock;
    std::uint64_t speed = 10;
    std::int64_t offset = -5;
    bool enabled = true;
    Color color = Green;
    unsigned int format = 0x82180044U;
    gcstring path = "images";
    bool executing = false;
    int resets = 0;
    int setterCalls = 0;

private:
    template <typename T>
    T read(const T& value) const {
        const GenApi::AutoLock guard(lock);
        return value;
    }
    template <typename T>
    void write(T& value, const T& newValue) {
        const GenApi::AutoLock guard(lock);
        ++setterCalls;
        value = newValue;
    }
};

using SpeedPort =
    IntegerParameterPortRelay<std::uint64_t, TestOwner, &TestOwner::getSpeed, &TestOwner::setSpeed>;
using OffsetPort = IntegerParameterPortRelay<std::int64_t, TestOwner, &TestOwner::getOffset,
                                             &TestOwner::setOffset>;
using EnabledPort =
    BooleanParameterPortRelay<TestOwner, &TestOwner::getEnabled, &TestOwner::setEnabled>;
using ColorPort =
    EnumParameterPortRelay<Color, TestOwner, &TestOwner::getColor, &TestOwner::setColor>;
using FormatPort =
    EnumParameterPortRelay<unsigned int, TestOwner, &TestOwner::getFormat, &TestOwner::setFormat>;
using PathPort = StringParameterPortRelay<TestOwner, &TestOwner::getPath, &TestOwner::setPath>;
using ResetPort =
    CommandParameterPortRelay<TestOwner, &TestOwner::isExecutingReset, &TestOwner::executeReset>;
using ColorEntryPort = EnumEntryParameterPort<Color>;
using StatusPort = StringParameterPort<gcstring, NoAction>;

// The four flags of a port in the order in which its constructor takes them.
struct Flags {
    bool available = true;
    bool writable = true;
    bool hasAvailabilityRegister = true;
    bool hasLockRegister = true;
};

// Ports with short texts; a test that needs others builds its own.
inline std::shared_ptr<SpeedPort> makeSpeed(TestOwner& owner, Flags f = {}) {
    return std::make_shared<SpeedPort>(
        owner, "Speed", "Speed Of It", "How fast.", "How fast it is.", "Beginner", f.available,
        f.writable, f.hasAvailabilityRegister, f.hasLockRegister, 1, 500, 1, "PureNumber");
}
inline std::shared_ptr<OffsetPort> makeOffset(TestOwner& owner, Flags f = {}) {
    return std::make_shared<OffsetPort>(owner, "Offset", "", "", "", "Guru", f.available,
                                        f.writable, f.hasAvailabilityRegister, f.hasLockRegister,
                                        -100, 4294967295, 5, "Linear", "mm");
}
inline std::shared_ptr<EnabledPort> makeEnabled(TestOwner& owner, Flags f = {}) {
    return std::make_shared<EnabledPort>(owner, "Enabled", "On Or Off", "Tip.", "Text.", "Expert",
                                         f.available, f.writable, f.hasAvailabilityRegister,
                                         f.hasLockRegister);
}
inline std::shared_ptr<ColorPort> makeColor(TestOwner& owner, Flags f = {}) {
    return std::make_shared<ColorPort>(owner, "Color", "Colour", "Tip.", "Text.", "Beginner",
                                       f.available, f.writable, f.hasAvailabilityRegister,
                                       f.hasLockRegister);
}
inline std::shared_ptr<ColorEntryPort> makeColorEntry(Color value, const char* name, Flags f = {}) {
    return std::make_shared<ColorEntryPort>(value, name, gcstring(name) + " Colour", "Tip.",
                                            "Text.", f.available, f.writable,
                                            f.hasAvailabilityRegister, f.hasLockRegister);
}
inline std::shared_ptr<FormatPort> makeFormat(TestOwner& owner, Flags f = {}) {
    return std::make_shared<FormatPort>(owner, "Format", "", "", "", "Expert", f.available,
                                        f.writable, f.hasAvailabilityRegister, f.hasLockRegister);
}
inline std::shared_ptr<PathPort> makePath(TestOwner& owner, Flags f = {}, std::int64_t size = 16) {
    return std::make_shared<PathPort>(owner, "Path", "Path", "Tip.", "Text.", "Beginner",
                                      f.available, f.writable, f.hasAvailabilityRegister,
                                      f.hasLockRegister, size);
}
inline std::shared_ptr<StatusPort> makeStatus(Flags f = {}) {
    return std::make_shared<StatusPort>("idle", 12, "Status", "Status", "Tip.", "Text.", "Beginner",
                                        f.available, f.writable, f.hasAvailabilityRegister,
                                        f.hasLockRegister);
}
inline std::shared_ptr<ResetPort> makeReset(TestOwner& owner, bool writeOnly, Flags f = {},
                                            const char* name = "Reset") {
    return std::make_shared<ResetPort>(owner, name, "Reset It", "Tip.", "Text.", "Beginner",
                                       f.available, f.writable, f.hasAvailabilityRegister,
                                       f.hasLockRegister, writeOnly);
}

// Counts notifications and remembers whose they were.
class CountingObserver final : public IParameterPortObserver {
public:
    void onParameterChanged(IBasicParameterPort& port) override {
        names.emplace_back(port.getName());
    }

    std::vector<std::string> names;
};

}  // namespace AnythingToNodeMapAdapter::Test
