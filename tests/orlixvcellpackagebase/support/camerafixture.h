// A Camera with a pool of its own, and short ways to its ports and outputs.
#pragma once

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "genapi/genapi.h"
#include "orlixdataprocessingcore/core/nodearguments.h"
#include "orlixvcellpackagebase/camera.h"
#include "support/deviceresources.h"
#include "support/texts.h"

namespace Plugin::OrlixVCellPackageBase {

class CameraFixture : public testing::Test {
protected:
    static constexpr auto category = "orlix.dataprocessing.vcell.Camera";

    [[nodiscard]] Camera& node() {
        if (node_ == nullptr) {
            node_ = std::make_unique<Camera>(resources.pool);
        }
        return *node_;
    }
    void destroyNode() { node_.reset(); }

    [[nodiscard]] GenApi::INodeMap& map() { return *node().getNodeMapInfos().at(0).GetNodeMap(); }
    [[nodiscard]] GenApi::INode* feature(const char* name) { return map().GetNode(name); }

    [[nodiscard]] bool isAvailable(const char* name) { return GenApi::IsAvailable(feature(name)); }
    [[nodiscard]] std::string text(const char* name) {
        return GenApi::CStringPtr(feature(name))->GetValue().str();
    }
    [[nodiscard]] std::int64_t number(const char* name) {
        return GenApi::CIntegerPtr(feature(name))->GetValue();
    }
    [[nodiscard]] std::int64_t maximum(const char* name) {
        return GenApi::CIntegerPtr(feature(name))->GetMax();
    }
    void execute(const char* name) { GenApi::CCommandPtr(feature(name))->Execute(); }
    void setText(const char* name, const char* value) {
        GenApi::CStringPtr(feature(name))->SetValue(value);
    }
    void setNumber(const char* name, std::int64_t value) {
        GenApi::CIntegerPtr(feature(name))->SetValue(value);
    }

    [[nodiscard]] std::vector<std::string> outputs() {
        std::vector<std::string> names;
        for (const auto& output : node().getOutputDescriptors()) {
            names.push_back(output.name.str());
        }
        return names;
    }

    // A run without a device: the node can't determine its mode and grabs nothing.
    void startWithoutGrabbing() {
        node().setAcquisitionMode(static_cast<AcquisitionMode>(5));
        node().start(Orlix::DataProcessing::Core::NodeArgumentCollection());
    }

    [[nodiscard]] std::string failureLine(const char* function, const char* message) {
        return "3 Camera " + toText(&node()) +
               ": Plugin::OrlixVCellPackageBase::Camera::" + function + " failed. Message: \"" +
               message + "\" (src/plugins/";
    }

    CountingPool resources;

private:
    std::unique_ptr<Camera> node_;
};

}  // namespace Plugin::OrlixVCellPackageBase
