#include "anythingtonodemapadapter/realnodemapportsingleparameter.h"

#include <gtest/gtest.h>

#include "anythingtonodemapadapter/integernodemapport.h"
#include "mocknodemap.h"
#include "nodemapporttools.h"
#include "testowner.h"

namespace AnythingToNodeMapAdapter::Test {

using Detail::CRealNodeMapPortSingleParameter;
using testing::IsNull;
using testing::NiceMock;

class RealNodeMapPortSingleParameter : public testing::Test {
protected:
    RealNodeMapPortSingleParameter() { describe(""); }

    void describe(const gcstring& prefix) {
        std::ostringstream out;
        std::int64_t address = 0;
        speed.generateAndRecord(out, true, "", prefix, address);
    }

    TestOwner owner;
    Detail::CIntegerNodeMapPort speed{makeSpeed(owner), 0};
    NiceMock<MockNodeMap> nodeMap;
    CRealNodeMapPortSingleParameter port{&nodeMap};
    GenApi::IPort* const asPort = &port;
};

TEST_F(RealNodeMapPortSingleParameter, ConnectsItselfUnderTheNameOfTheParametersPort) {
    EXPECT_CALL(nodeMap, Connect(asPort, gcstring("SpeedPort"))).Times(1);
    port.connect(&speed);
}

TEST_F(RealNodeMapPortSingleParameter, HandsAccessesOnUnchanged) {
    port.connect(&speed);
    EXPECT_EQ(readWord(*asPort, 8), 500);
    writeWord(*asPort, 0, 30);
    EXPECT_EQ(owner.speed, 30U);
    EXPECT_EQ(readWord(*asPort, 48), untouched);
}

TEST_F(RealNodeMapPortSingleParameter, ExceptionOfTheSetterPasses) {
    port.connect(&speed);
    EXPECT_THROW(writeWord(*asPort, 0, 0), GenICam::RuntimeException);
}

TEST_F(RealNodeMapPortSingleParameter, DisconnectsUnderTheNameThatItConnectedWith) {
    port.connect(&speed);
    describe("Next");
    EXPECT_CALL(nodeMap, Connect(IsNull(), gcstring("SpeedPort"))).Times(1);
    port.disconnect(&speed);
}

TEST_F(RealNodeMapPortSingleParameter, NullPortOrNodeMapDoesNothing) {
    EXPECT_CALL(nodeMap, Connect(testing::_, testing::_)).Times(0);
    port.connect(nullptr);
    port.disconnect(nullptr);
    CRealNodeMapPortSingleParameter homeless(nullptr);
    homeless.connect(&speed);
    homeless.disconnect(&speed);
}

TEST_F(RealNodeMapPortSingleParameter, InvalidatingWithoutAPortNodeDoesNothing) {
    port.connect(&speed);
    EXPECT_NO_THROW(port.invalidate(speed));
}

TEST_F(RealNodeMapPortSingleParameter, IsAlwaysReadWrite) {
    EXPECT_EQ(asPort->GetAccessMode(), 4);
}

}  // namespace AnythingToNodeMapAdapter::Test
