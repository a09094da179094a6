// The life of a node-map port: described, connected, detached.
#include "anythingtonodemapadapter/basicnodemapport.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "anythingtonodemapadapter/booleannodemapport.h"
#include "anythingtonodemapadapter/integernodemapport.h"
#include "anythingtonodemapadapter/nodemapportconnector.h"
#include "nodemapporttools.h"
#include "testowner.h"

namespace AnythingToNodeMapAdapter::Test {

using Detail::CBasicNodeMapPort;
using Detail::CBooleanNodeMapPort;
using Detail::CIntegerNodeMapPort;

class MockConnector : public Detail::CNodeMapPortConnector {
public:
    MOCK_METHOD(void, invalidate, (CBasicNodeMapPort & port), (override));
    MOCK_METHOD(void, connect, (CBasicNodeMapPort * port), (override));
    MOCK_METHOD(void, disconnect, (CBasicNodeMapPort * port), (override));
};

TEST(BasicNodeMapPort, RecordsItsOwnPortAndStartsAgainAtZero) {
    TestOwner owner;
    CIntegerNodeMapPort port(makeSpeed(owner), 0);
    std::ostringstream out;
    std::int64_t address = 0;
    port.generateAndRecord(out, true, "", "My", address);
    EXPECT_EQ(port.portName(), "MySpeedPort");
    EXPECT_EQ(port.registerStart(), 0);
    EXPECT_EQ(port.registerLength(), 48);
    EXPECT_EQ(address, 0);
    EXPECT_THAT(out.str(), testing::HasSubstr("<Port Name = \"MySpeedPort\">"));
}

TEST(BasicNodeMapPort, RecordsItsBlockInASharedPortWithoutAName) {
    TestOwner owner;
    CBooleanNodeMapPort port(makeEnabled(owner), 0);
    std::ostringstream out;
    std::int64_t address = 48;
    port.generateAndRecord(out, false, "All", "", address);
    EXPECT_EQ(port.portName(), "");
    EXPECT_EQ(port.registerStart(), 48);
    EXPECT_EQ(port.registerLength(), 24);
    EXPECT_EQ(address, 72);
    EXPECT_THAT(out.str(), testing::HasSubstr("<pPort>All</pPort>"));
}

TEST(BasicNodeMapPort, PassesChangesOfItsParameterToTheConnector) {
    TestOwner owner;
    const auto parameter = makeSpeed(owner);
    CIntegerNodeMapPort port(parameter, 0);
    parameter->setValue(20, false);
    const auto connector = std::make_shared<MockConnector>();
    EXPECT_CALL(*connector, invalidate(testing::Ref(port))).Times(2);
    port.setConnector(connector);
    parameter->setValue(30, false);
    parameter->setAvailable(false);
    parameter->setValue(40, true);
}

TEST(BasicNodeMapPort, DetachDisconnectsOnce) {
    TestOwner owner;
    CIntegerNodeMapPort port(makeSpeed(owner), 0);
    const auto connector = std::make_shared<MockConnector>();
    port.setConnector(connector);
    EXPECT_CALL(*connector, disconnect(&port)).Times(1);
    port.detach();
    port.detach();
    EXPECT_EQ(port.connector(), nullptr);
}

}  // namespace AnythingToNodeMapAdapter::Test
