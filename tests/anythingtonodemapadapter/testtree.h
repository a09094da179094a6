// The parameter tree of a test owner in an adapter, with every kind of parameter: with and without
// registers, signed and unsigned, readable and write-only commands, described and bare categories.
#pragma once

#include <memory>

#include "anythingtonodemapadapter/adapter.h"
#include "testowner.h"

namespace AnythingToNodeMapAdapter::Test {

inline constexpr Flags noRegisters{true, true, false, false};

// Filled by the constructor, without a live map. Members end in reverse: the adapter goes first,
// then the ports, then the owner, as in a node.
class TestTree {
public:
    TestTree() {
        adapter.addParameter(std::make_shared<CategoryParameterPort>("Root"));
        adapter.addParameter(std::make_shared<DescribedCategoryParameterPort>(
            "Control", "The Control", "Tip of the control.", "Text of the control."));
        adapter.addDependency("Root", "Feature", "Control");
        feature(speed);
        feature(offset);
        feature(enabled);
        feature(color);
        adapter.addEnumEntry("Color", red);
        adapter.addEnumEntry("Color", green);
        adapter.addEnumEntry("Color", blue, 1);
        feature(format);
        adapter.addEnumEntry("Format", yuv);
        feature(path);
        feature(status);
        feature(reset);
        feature(stop, -1);
        adapter.addDependency("Speed", "Selected", "Path");
        adapter.addDependency("Speed", "Selected", "Status");
        adapter.addDependency("Color", "Selected", "Offset");
        adapter.addDependency("Offset", "IsAvailable", "Enabled");
        adapter.addDependency("Offset", "Invalidator", "Speed");
        adapter.addDependency("Path", "Invalidator", "Color");
        adapter.addDependency("Status", "Invalidator", "Reset");
        adapter.addDependency("Stop", "Invalidator", "Reset");
        adapter.addDependency("Reset", "IsLocked", "Enabled");
    }

    // All ports of the adapter.
    NodeMapPorts ports() {
        return NodeMapPorts(adapter.findNodeMapPort("Color"), adapter.nodeMapPortsEnd());
    }

    GenApi::INodeMap* create(const gcstring& portName = "", const gcstring& prefix = "") {
        const GenApi::AutoLock guard(owner.lock);
        adapter.createNodeMap(&owner.lock, portName, prefix);
        return adapter.getNodeMap();
    }

    TestOwner owner;
    std::shared_ptr<SpeedPort> speed = makeSpeed(owner);
    std::shared_ptr<OffsetPort> offset = makeOffset(owner, noRegisters);
    std::shared_ptr<EnabledPort> enabled = makeEnabled(owner, {true, true, false, true});
    std::shared_ptr<ColorPort> color = makeColor(owner);
    std::shared_ptr<ColorEntryPort> red = makeColorEntry(Red, "Red");
    std::shared_ptr<ColorEntryPort> green = makeColorEntry(Green, "Green", noRegisters);
    std::shared_ptr<ColorEntryPort> blue = makeColorEntry(Blue, "Blue", {true, true, true, false});
    std::shared_ptr<FormatPort> format = makeFormat(owner, noRegisters);
    std::shared_ptr<EnumEntryParameterPort<unsigned int>> yuv =
        std::make_shared<EnumEntryParameterPort<unsigned int>>(0x82180044U, "YUV444Planar", "", "",
                                                               "", true, true, false, false);
    std::shared_ptr<PathPort> path = makePath(owner, {}, 1024);
    std::shared_ptr<StatusPort> status = makeStatus({true, false, true, false});
    std::shared_ptr<ResetPort> reset = makeReset(owner, true);
    std::shared_ptr<ResetPort> stop = makeReset(owner, false, {}, "Stop");
    CAnythingToNodeMapAdapter adapter;

private:
    template <typename Port>
    void feature(const std::shared_ptr<Port>& port, int mergePriority = 0) {
        adapter.addParameter(port, mergePriority);
        adapter.addDependency("Control", "Feature", port->getName());
    }
};

}  // namespace AnythingToNodeMapAdapter::Test
