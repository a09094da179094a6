#include "orlixdataprocessingcore/core/nodearguments.h"

#include <gtest/gtest.h>

#include "gcbase/gcexception.h"
#include "orlixdataprocessingcore/core/nodemapcontainer.h"
#include "orlixdataprocessingcore/core/settings.h"
#include "orlixdataprocessingcore/core/string.h"

namespace Orlix::DataProcessing::Core {
namespace {

TEST(NodeArguments, KeepTheLastValueOfAName) {
    NodeArgumentCollection arguments;
    EXPECT_FALSE(arguments.hasArgument("Mode"));
    arguments.setArgument("Mode", Utils::Variant(String("A")));
    arguments.setArgument("Mode", Utils::Variant(String("B")));
    EXPECT_TRUE(arguments.hasArgument("Mode"));
    EXPECT_EQ(std::as_const(arguments).getArgumentValue("Mode").get<String>(true)->get(), "B");
}

TEST(NodeArguments, AnUnknownNameIsNamed) {
    try {
        static_cast<void>(NodeArgumentCollection().getArgumentValue("Mode"));
        FAIL();
    } catch (const GenICam::InvalidArgumentException& exception) {
        EXPECT_EQ(gcstring(exception.GetDescription()), "There is no argument \"Mode\".");
    }
}

TEST(SettingsPath, ReadsLikeACodeOfItsElements) {
    SettingsPath path("a");
    path.addElement("b").addElement(std::size_t{3}).addElement("c");
    EXPECT_EQ(path.toString(), "a.b[3].c");
    EXPECT_EQ(path.getElements().size(), 4U);
    EXPECT_EQ(SettingsPath().toString(), "");
}

TEST(NodeMapInfo, CarriesItsTextsAndItsMap) {
    const NodeMapInfo plain("@vCell", "Camera");
    EXPECT_EQ(plain.GetIdentifier(), "@vCell");
    EXPECT_EQ(plain.GetDisplayName(), "Camera");
    EXPECT_EQ(plain.GetNodeMap(), nullptr);
    int place = 0;  // the map itself is never touched
    auto* const map = reinterpret_cast<GenApi::INodeMap*>(&place);
    EXPECT_EQ(NodeMapInfo("@vCell", "Camera", map).GetNodeMap(), map);
}

}  // namespace
}  // namespace Orlix::DataProcessing::Core
