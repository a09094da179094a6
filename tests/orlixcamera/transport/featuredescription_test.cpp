#include "orlixcamera/transport/featuredescription.h"

#include <gtest/gtest.h>

#include <cstdint>

#include "genapi/iinteger.h"
#include "genapi/memoryport.h"
#include "genapi/nodemapfactory.h"
#include "genapi/nodemapref.h"
#include "genapi/pointer.h"

namespace {

using Orlix::Transport::FeatureDescription;
using Orlix::Transport::NumberFeature;
using Orlix::Transport::TextFeature;

FeatureDescription empty() {
    return {"Model", "1B6C6F0E-52A0-4C55-8B5C-6E6E4F9D7A01",
            "5D9E2B1C-0F4B-4B7E-9A43-3C2A8D1E6B02"};
}

TEST(FeatureDescription, HasEachFeatureInItsCategory) {
    FeatureDescription description = empty();
    description.Add(NumberFeature{.texts = {"First", "Switch", "On or off.", "A switch"},
                                  .address = 8,
                                  .isSwitch = true,
                                  .isWritable = true,
                                  .lock = "LockReg",
                                  .isStreamable = true,
                                  .isGoneAtZero = true});
    description.Add(TextFeature{{"First", "Name", "Who it is."}, 64, 32});
    description.Add(NumberFeature{.texts = {"Second", "Number", "How many."}, .address = 0});
    description.AddRegister("LockReg", 16, false);
    const std::string text = description.GetText();
    EXPECT_NE(text.find("<Category Name=\"Root\"><pFeature>First</pFeature>"
                        "<pFeature>Second</pFeature></Category>\n"
                        "<Category Name=\"First\"><pFeature>Switch</pFeature>"
                        "<pFeature>Name</pFeature></Category>\n"
                        "<Category Name=\"Second\"><pFeature>Number</pFeature></Category>\n"),
              std::string::npos)
        << text;
    EXPECT_NE(text.find("<Boolean Name=\"Switch\"><ToolTip>On or off.</ToolTip>"
                        "<DisplayName>A switch</DisplayName><Visibility>Expert</Visibility>"
                        "<pIsAvailable>SwitchReg</pIsAvailable><pIsLocked>LockReg</pIsLocked>"
                        "<Streamable>Yes</Streamable><pValue>SwitchReg</pValue>"
                        "<OnValue>1</OnValue><OffValue>0</OffValue></Boolean>\n"),
              std::string::npos)
        << text;
}

TEST(FeatureDescription, IsReadByANodeMap) {
    FeatureDescription description = empty();
    description.Add(NumberFeature{.texts = {"All", "Width", "Pixels of a line."},
                                  .address = 0,
                                  .isWritable = true,
                                  .minimum = 2,
                                  .maximum = 10});
    const std::string text = description.GetText();
    GenApi::CNodeMapFactory factory(GenApi::ContentType_Xml, text.data(), text.size());
    GenApi::CNodeMapRef map = factory.CreateNodeMap("Test");
    GenApi::CMemoryPort port;
    map->Connect(&port, "Device");
    const GenApi::CIntegerPtr width = map->GetNode("Width");
    ASSERT_TRUE(width.IsValid());
    EXPECT_EQ(width->GetMin(), 2);
    EXPECT_EQ(width->GetMax(), 10);
    width->SetValue(7);
    std::uint8_t lowest = 0;
    port.Read(&lowest, 0, 1);
    EXPECT_EQ(lowest, 7);
}

}  // namespace
