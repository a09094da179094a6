// A package of nodes for tests: a source of every kind of value, one that can not stop, and a node
// with an input that keeps its value.
#include <unistd.h>

#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <thread>

#include "gcbase/gcexception.h"
#include "orlixdataprocessingcore/core/advancednode.h"
#include "orlixdataprocessingcore/core/array.h"
#include "orlixdataprocessingcore/core/boolean.h"
#include "orlixdataprocessingcore/core/errors.h"
#include "orlixdataprocessingcore/core/float.h"
#include "orlixdataprocessingcore/core/graphupdate.h"
#include "orlixdataprocessingcore/core/image.h"
#include "orlixdataprocessingcore/core/integer.h"
#include "orlixdataprocessingcore/core/nodearguments.h"
#include "orlixdataprocessingcore/core/settings.h"
#include "orlixdataprocessingcore/core/simplenode.h"
#include "orlixdataprocessingcore/core/string.h"
#include "orlixdataprocessingcore/threading/recursiveclock.h"
#include "orlixdataprocessingcore/utils/property.h"

namespace Orlix::Host::Testing {
namespace {

using namespace DataProcessing::Core;
using DataProcessing::Utils::TypeInfo;
using DataProcessing::Utils::Variant;

constexpr const char* catalog = R"({"Version": "1.0.0", "Vendor": "Test", "Modules": [
{"Name": "ValueSource", "Uuid": "00000000-0000-0000-0000-00000000000a", "ObjectVersion": "1.0.0",
 "MinRequiredSoftwareVersion": "1.0.0", "MinRequiredFileVersion": "1.0.0",
 "InterfaceType": "Native", "DisplayName": "Values", "Tags": [], "ShortDescription": "",
 "DetailedDescription": "", "SupportedUuids": ["00000000-0000-0000-0000-00000000000b"],
 "HasDynamicInfo": false},
{"Name": "StuckSource", "Uuid": "00000000-0000-0000-0000-00000000000c", "ObjectVersion": "1.0.0",
 "MinRequiredSoftwareVersion": "1.0.0", "MinRequiredFileVersion": "1.0.0",
 "InterfaceType": "Native", "DisplayName": "Stuck", "Tags": [], "ShortDescription": "",
 "DetailedDescription": "", "SupportedUuids": [], "HasDynamicInfo": false},
{"Name": "Beside", "Uuid": "00000000-0000-0000-0000-00000000000e", "ObjectVersion": "1.0.0",
 "MinRequiredSoftwareVersion": "1.0.0", "MinRequiredFileVersion": "1.0.0",
 "InterfaceType": "Native", "DisplayName": "Beside", "Tags": [], "ShortDescription": "",
 "DetailedDescription": "", "SupportedUuids": [], "HasDynamicInfo": false},
{"Name": "Future", "Uuid": "00000000-0000-0000-0000-00000000000d", "ObjectVersion": "9.0.0",
 "MinRequiredSoftwareVersion": "9.0.0", "MinRequiredFileVersion": "1.0.0",
 "InterfaceType": "Native", "DisplayName": "Future", "Tags": [], "ShortDescription": "",
 "DetailedDescription": "", "SupportedUuids": [], "HasDynamicInfo": false}]})";

// Gives "count" updates, or updates without end for 0, as fast as the graph takes them; if it is
// "eager", all of them before its start returns. One that is "unwilling" fails to start, one that
// is "stubborn" fails to stop, and one that is "greedy" fails to let its resources go.
class ValueSource : public AdvancedNode {
public:
    explicit ValueSource(const std::shared_ptr<IResourcePool>& pool) : AdvancedNode(pool) {
        setLock(std::make_shared<DataProcessing::Threading::RecursiveCLock>());
        addOutput<Integer>("Number");
        addOutput<Float>("Ratio");
        addOutput<Boolean>("IsOdd");
        addOutput<String>("Text");
        addOutput<Array<Integer>>("List");
        addOutput<Integer>("Fragile");
    }
    ~ValueSource() override { cleanup(); }

    bool isForwardingUpdates() const override { return false; }

    void loadSettings(const std::shared_ptr<ISettings>& settings) override {
        if (settings->contains(SettingsPath("count"))) {
            count_ = settings->getUnsigned(SettingsPath("count"));
        }
        isEager_ = settings->contains(SettingsPath("eager"));
        isStubborn_ = settings->contains(SettingsPath("stubborn"));
        isGreedy_ = settings->contains(SettingsPath("greedy"));
        isUnwilling_ = settings->contains(SettingsPath("unwilling"));
    }
    void saveSettings(const std::shared_ptr<ISettings>& settings) override {
        settings->setUnsigned(SettingsPath("count"), count_);
    }

protected:
    void onStarting(const NodeArgumentCollection& arguments) override {
        if (arguments.hasArgument("Text")) {
            text_ = arguments.getArgumentValue("Text").get<String>(true)->get();
        }
        if (isUnwilling_) {
            throw GenICam::RuntimeException("I will not.", __FILE__, __LINE__);
        }
        stop_ = false;
        thread_ = std::thread([this] { work(); });
        if (isEager_) {
            thread_.join();
        }
    }
    void onStopping() override {
        stop_ = true;
        if (thread_.joinable()) {
            thread_.join();
        }
        if (isStubborn_) {
            throw GenICam::RuntimeException("I can not end.", __FILE__, __LINE__);
        }
    }
    void freeAdditionalResources(bool flag) override {
        if (isGreedy_) {
            throw GenICam::RuntimeException("It is mine.", __FILE__, __LINE__);
        }
        AdvancedNode::freeAdditionalResources(flag);
    }

private:
    template <typename T>
    void addOutput(const char* name) {
        createOutput(name, "", TypeInfo::getTypeInfo<T>(true), true, unlimitedJobs);
    }

    void work() {
        for (std::uint64_t number = 1; !stop_ && (count_ == 0 || number <= count_); ++number) {
            if (!waitUntilSpaceAvailable()) {
                return;
            }
            createJob(getUpdateFactory()->createUpdate(this, nullptr), valuesOf(number), {});
        }
    }

    [[nodiscard]] PinValues valuesOf(std::uint64_t number) const {
        PinValues values;
        values["Number"] = Variant(Integer(number));
        values["Ratio"] = Variant(Float(static_cast<double>(number) / 2));
        values["IsOdd"] = Variant(Boolean(number % 2 == 1));
        values["Text"] = Variant(String(text_));
        values["List"] = Variant(Array<Integer>({Integer(number), Integer(number + 1)}));
        values["Fragile"] = number % 2 == 0 ? Variant(Integer(number)) : Variant(Integer(error()));
        return values;
    }

    [[nodiscard]] static std::shared_ptr<IError> error() {
        return std::make_shared<InvalidValueError>("The number is odd.", DateTime::now());
    }

    std::uint64_t count_ = 0;
    bool isEager_ = false;
    bool isUnwilling_ = false;
    bool isStubborn_ = false;
    bool isGreedy_ = false;
    gcstring text_ = "none";
    std::atomic<bool> stop_{false};
    std::thread thread_;
};

// Says that it is being stopped, and then never ends.
class StuckSource final : public ValueSource {
public:
    using ValueSource::ValueSource;

protected:
    void onStopping() override {
        std::fputs("stopping\n", stderr);
        for (;;) {
            ::pause();
        }
    }
};

// Hands numbers on, beside the last image that has come.
class Beside final : public SimpleNode {
public:
    explicit Beside(const std::shared_ptr<IResourcePool>& pool) : SimpleNode(pool) {
        setLock(std::make_shared<DataProcessing::Threading::RecursiveCLock>());
        createInput("Number", "", number_, Variant(Integer(0)), true, unlimitedJobs);
        createInput("Image", "", image_, Variant(Image()), true, unlimitedJobs);
        createOutput("Number", "", output_, true, unlimitedJobs);
        setAutoResetEnabled("Image", false);
    }
    ~Beside() override { cleanup(); }

    void loadSettings(const std::shared_ptr<ISettings>&) override {}
    void saveSettings(const std::shared_ptr<ISettings>&) override {}
    void execute() override { output_.setValue(number_.getValue()); }

private:
    DataProcessing::Utils::ResettableProperty<Integer> number_;
    DataProcessing::Utils::ResettableProperty<Image> image_;
    DataProcessing::Utils::ResettableProperty<Integer> output_;
};

}  // namespace
}  // namespace Orlix::Host::Testing

#define ORLIX_TEST_EXPORT extern "C" __attribute__((visibility("default")))

using Orlix::DataProcessing::Core::INode;
using Pool = std::shared_ptr<Orlix::DataProcessing::Core::IResourcePool>;

ORLIX_TEST_EXPORT unsigned int get_InterfaceVersion() {
    return 2;
}
ORLIX_TEST_EXPORT char* create_StaticInfo() {
    return ::strdup(Orlix::Host::Testing::catalog);
}
ORLIX_TEST_EXPORT void destroy_Info(char** info) {
    std::free(*info);
    *info = nullptr;
}
ORLIX_TEST_EXPORT INode* create_ValueSource(const Pool& pool) {
    return new Orlix::Host::Testing::ValueSource(pool);
}
ORLIX_TEST_EXPORT void destroy_ValueSource(INode* node) {
    delete node;
}
ORLIX_TEST_EXPORT INode* create_StuckSource(const Pool& pool) {
    return new Orlix::Host::Testing::StuckSource(pool);
}
ORLIX_TEST_EXPORT void destroy_StuckSource(INode* node) {
    delete node;
}
ORLIX_TEST_EXPORT INode* create_Beside(const Pool& pool) {
    return new Orlix::Host::Testing::Beside(pool);
}
ORLIX_TEST_EXPORT void destroy_Beside(INode* node) {
    delete node;
}
ORLIX_TEST_EXPORT INode* create_Future(const Pool&) {
    return nullptr;
}
ORLIX_TEST_EXPORT void destroy_Future(INode* node) {
    delete node;
}
