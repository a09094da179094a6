// Writes a description of the features that a library or a transport layer has itself, so that a
// table of them is all that there is to write by hand. The features lie behind the port "Device",
// and nothing of them is cached. One thread at a time.
#pragma once

#include <cstdint>
#include <string>

#include "orlixcamera/api.h"

namespace Orlix::Transport {

// What every feature has. The texts live as long as the call that they are passed to.
struct FeatureTexts {
    const char* category;
    const char* name;
    const char* toolTip;
    const char* displayName = nullptr;  // the name, if there is none
};

// A number, or a switch that is 0 or 1, in a register of 8 bytes, the lowest first.
struct NumberFeature {
    FeatureTexts texts;
    std::int64_t address;
    bool isSwitch = false;
    bool isWritable = false;
    std::int64_t minimum = 0;  // these two of writable numbers
    std::int64_t maximum = 0;
    const char* lock = nullptr;  // the register that locks it while it isn't 0
    bool isStreamable = false;
    bool isGoneAtZero = false;
};

// A text that can only be read.
struct TextFeature {
    FeatureTexts texts;
    std::int64_t address;
    std::int64_t length;
};

class ORLIXCAMERA_API FeatureDescription {
public:
    static constexpr std::int64_t numberLength = 8;

    // The two are of this description and no other.
    FeatureDescription(const char* model, const char* productGuid, const char* versionGuid);

    // Features of one category follow each other.
    void Add(const NumberFeature& feature);
    void Add(const TextFeature& feature);
    // A number that is no feature.
    void AddRegister(const std::string& name, std::int64_t address, bool isWritable);

    [[nodiscard]] std::string GetText() const;

private:
    void addToCategory(const FeatureTexts& texts);

    std::string opening_;
    std::string lastCategory_;
    std::string root_;
    std::string categories_;
    std::string nodes_;
};

}  // namespace Orlix::Transport
