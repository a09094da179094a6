// The code of docs/adapter.md. Every code block there stands here too, so that it compiles and
// runs; the last test compares the two.
#include <gtest/gtest.h>

#include <string>

#include "anythingtonodemapadapter/adapter.h"
#include "anythingtonodemapadapter/categoryparameterport.h"
#include "anythingtonodemapadapter/enumentryparameterport.h"
#include "anythingtonodemapadapter/enumparameterport.h"
#include "anythingtonodemapadapter/integerparameterport.h"
#include "filetext.h"
#include "gcbase/gcexception.h"
#include "genapi/genapi.h"

namespace AnythingToNodeMapAdapter::Test {
namespace {

enum class Mode : std::uint32_t { Hold = 0, Heat = 1 };

class Heater {
public:
    Heater();

    // Each takes the lock, as every access from the node map does.
    std::int64_t getTemperature() const;
    void setTemperature(std::int64_t value);
    Mode getMode() const;
    void setMode(Mode value);

    GenApi::INodeMap* getNodeMap() { return adapter_.getNodeMap(); }
    void start();

private:
    using TemperaturePort = IntegerParameterPortRelay<std::int64_t, Heater, &Heater::getTemperature,
                                                      &Heater::setTemperature>;
    using ModePort = EnumParameterPortRelay<Mode, Heater, &Heater::getMode, &Heater::setMode>;
    using ModeEntry = EnumEntryParameterPort<Mode>;

    void addTemperature();
    void addMode();

    mutable GenApi::CLock lock_;
    std::int64_t temperature_ = 20;
    Mode mode_ = Mode::Hold;
    std::shared_ptr<TemperaturePort> temperaturePort_;
    std::shared_ptr<ModePort> modePort_;
    CAnythingToNodeMapAdapter adapter_;
};

std::int64_t Heater::getTemperature() const {
    const GenApi::AutoLock guard(lock_);
    return temperature_;
}

void Heater::setTemperature(std::int64_t value) {
    if (value > 90) {
        throw GenICam::InvalidArgumentException("Temperature must not be above 90.", __FILE__,
                                                __LINE__);
    }
    const GenApi::AutoLock guard(lock_);
    if (value != temperature_) {
        temperature_ = value;
        temperaturePort_->notify();
    }
}

void Heater::addTemperature() {
    const gcstring text = "Temperature that the heater keeps.";
    temperaturePort_ = std::make_shared<TemperaturePort>(
        *this, "Temperature", "Temperature", text, text, "Beginner",
        // available, writable, both with a register: both can change later
        true, true, true, true,
        // range, increment, representation
        0, 90, 1, "Linear");
    adapter_.addParameter(temperaturePort_);
    adapter_.addDependency("Root", "Feature", "Temperature");
}

void Heater::addMode() {
    const gcstring text = "What the heater does.";
    modePort_ = std::make_shared<ModePort>(*this, "Mode", "Mode", text, text, "Expert",
                                           // always available, always writable: no registers
                                           true, true, false, false);
    adapter_.addParameter(modePort_);
    adapter_.addEnumEntry("Mode", std::make_shared<ModeEntry>(Mode::Hold, "Hold", "Hold", "Hold.",
                                                              "Hold.", true, true, false, false));
    adapter_.addEnumEntry("Mode", std::make_shared<ModeEntry>(Mode::Heat, "Heat", "Heat", "Heat.",
                                                              "Heat.", true, true, false, false));
    adapter_.addDependency("Root", "Feature", "Mode");
}

Heater::Heater() {
    const GenApi::AutoLock guard(lock_);
    adapter_.addParameter(std::make_shared<CategoryParameterPort>("Root"));
    addTemperature();
    addMode();
    // The node's lock becomes the map's lock; no names: every parameter gets a port of its own.
    adapter_.createNodeMap(&lock_, "", "");
}

void Heater::start() {
    const GenApi::AutoLock guard(lock_);
    temperaturePort_->setWritable(false);
    modePort_->setTypedValue(Mode::Heat);
}

Mode Heater::getMode() const {
    const GenApi::AutoLock guard(lock_);
    return mode_;
}

void Heater::setMode(Mode value) {
    const GenApi::AutoLock guard(lock_);
    mode_ = value;
}

TEST(Tutorial, TheHeaterIsUsedThroughItsNodeMap) {
    Heater heater;
    GenApi::INodeMap* nodeMap = heater.getNodeMap();
    GenApi::CIntegerPtr temperature(nodeMap->GetNode("Temperature"));
    GenApi::CEnumerationPtr mode(nodeMap->GetNode("Mode"));

    temperature->SetValue(60);
    EXPECT_EQ(heater.getTemperature(), 60);
    EXPECT_EQ(mode->ToString(), "Hold");

    heater.start();
    EXPECT_FALSE(GenApi::IsWritable(temperature));
    EXPECT_EQ(mode->ToString(), "Heat");
}

TEST(Tutorial, TheSetterHasTheLastWord) {
    Heater heater;
    const GenApi::CIntegerPtr temperature(heater.getNodeMap()->GetNode("Temperature"));
    EXPECT_THROW(temperature->SetValue(91), GenICam::OutOfRangeException);
    EXPECT_THROW(temperature->SetValue(91, false), GenICam::InvalidArgumentException);
    EXPECT_EQ(heater.getTemperature(), 20);
}

TEST(Tutorial, EveryBlockOfThePageStandsInThisFile) {
    const std::string page = fileText(TUTORIAL_PAGE);
    const std::string source = fileText(TUTORIAL_SOURCE);
    const std::string open = "```cpp\n";
    int blocks = 0;
    for (std::size_t at = page.find(open); at != std::string::npos; at = page.find(open, at)) {
        at += open.size();
        const std::string block = page.substr(at, page.find("```", at) - at);
        EXPECT_NE(source.find(block), std::string::npos) << block;
        ++blocks;
    }
    EXPECT_EQ(blocks, 7);
}

}  // namespace
}  // namespace AnythingToNodeMapAdapter::Test
