#include "anythingtonodemapadapter/realnodemapportmultiparameter.h"

#include <gtest/gtest.h>

#include "anythingtonodemapadapter/integernodemapport.h"
#include "mocknodemap.h"
#include "nodemapporttools.h"
#include "testowner.h"

namespace AnythingToNodeMapAdapter::Test {

using Detail::CIntegerNodeMapPort;
using Detail::CRealNodeMapPortMultiParameter;
using testing::IsNull;
using testing::NiceMock;
using testing::Return;

// Two integers at 0x0 and 0x30 of one port.
class RealNodeMapPortMultiParameter : public testing::Test {
protected:
    RealNodeMapPortMultiParameter() {
        std::ostringstream out;
        std::int64_t address = 0;
        offset.generateAndRecord(out, false, "All", "", address);
        speed.generateAndRecord(out, false, "All", "", address);
        port.connect(&speed);
        port.connect(&offset);
        port.connect(nullptr);
    }

    TestOwner owner;
    CIntegerNodeMapPort offset{makeOffset(owner), 0};
    CIntegerNodeMapPort speed{makeSpeed(owner), 0};
    NiceMock<MockNodeMap> nodeMap;
    CRealNodeMapPortMultiParameter port{&nodeMap, "All"};
    GenApi::IPort* const asPort = &port;
};

TEST_F(RealNodeMapPortMultiParameter, ConnectsItselfAtConstruction) {
    EXPECT_CALL(nodeMap, Connect(testing::NotNull(), gcstring("Other"))).Times(1);
    const CRealNodeMapPortMultiParameter other(&nodeMap, "Other");
}

TEST_F(RealNodeMapPortMultiParameter, BeforeItIsOpenReadsAreZeroAndWritesVanish) {
    EXPECT_EQ(readWord(*asPort, 0), 0);
    writeWord(*asPort, 0x30, 99);
    EXPECT_EQ(owner.setterCalls, 0);
}

TEST_F(RealNodeMapPortMultiParameter, TheAddressDecidesAboutTheParameter) {
    port.open();
    EXPECT_EQ(readWord(*asPort, 0x0), -5);
    EXPECT_EQ(readWord(*asPort, 0x10), -100);
    EXPECT_EQ(readWord(*asPort, 0x30), 10);
    EXPECT_EQ(readWord(*asPort, 0x38), 500);
    writeWord(*asPort, 0x30, 20);
    EXPECT_EQ(owner.speed, 20U);
    EXPECT_EQ(owner.offset, -5);
}

TEST_F(RealNodeMapPortMultiParameter, UnmappedAddressesReadZeroAndSwallowWrites) {
    port.open();
    EXPECT_EQ(readWord(*asPort, 0x60), 0);
    EXPECT_EQ(readWord(*asPort, 0x2c), 0);
    EXPECT_EQ(readBytes(*asPort, -16, 4), std::string(4, '\0'));
    EXPECT_NO_THROW(writeWord(*asPort, 0x60, 1));
    EXPECT_EQ(owner.setterCalls, 0);
}

TEST_F(RealNodeMapPortMultiParameter, ADisconnectedParameterReadsZeroAndTheOthersAnswer) {
    port.open();
    port.disconnect(nullptr);
    port.disconnect(&offset);
    EXPECT_EQ(readWord(*asPort, 0x0), 0);
    writeWord(*asPort, 0x0, 50);
    EXPECT_EQ(owner.offset, -5);
    EXPECT_EQ(readWord(*asPort, 0x30), 10);
}

TEST_F(RealNodeMapPortMultiParameter, InvalidatesTheParametersOwnNode) {
    EXPECT_CALL(nodeMap, GetNode(gcstring("Speed"))).WillOnce(Return(nullptr));
    port.invalidate(speed);
}

TEST_F(RealNodeMapPortMultiParameter, ReleasedItIsOffTheNodeMapForGood) {
    port.open();
    EXPECT_CALL(nodeMap, Connect(IsNull(), gcstring("All"))).Times(1);
    EXPECT_CALL(nodeMap, GetNode(testing::_)).Times(0);
    port.release();
    port.release();
    EXPECT_EQ(readWord(*asPort, 0x30), 0);
    port.invalidate(speed);
}

TEST_F(RealNodeMapPortMultiParameter, IsAlwaysReadWrite) {
    EXPECT_EQ(asPort->GetAccessMode(), 4);
}

}  // namespace AnythingToNodeMapAdapter::Test
