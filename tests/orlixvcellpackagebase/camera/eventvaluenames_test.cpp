#include "camera/eventvaluenames.h"

#include <gtest/gtest.h>

namespace Plugin::OrlixVCellPackageBase {
namespace {

struct Row {
    int index;
    const char* name;
};

constexpr Row rows[] = {
    {7, "EventExposureEndData"},
    {7, "EventExposureEndFrameID"},
    {7, "EventExposureEndTimestamp"},
    {0, "EventAcquisitionStartData"},
    {0, "EventAcquisitionStartFrameID"},
    {0, "EventAcquisitionStartTimestamp"},
    {1, "EventAcquisitionStartOvertriggerData"},
    {2, "EventAcquistionStartWaitData"},
    {3, "EventAcquistionWaitData"},
    {4, "EventActionLateData"},
    {5, "EventCriticalTemperatureData"},
    {6, "EventOverrunEventData"},
    {6, "EventOverrunEventTimestamp"},
    {9, "EventFrameBurstStartData"},
    {9, "EventFrameBurstTimestamp"},
    {10, "EventFrameBurstStartOvertriggerData"},
    {11, "EventFrameBurstStartWaitData"},
    {11, "EventFrameBurstStartWaitTimestamp"},
    {12, "EventFrameStartData"},
    {12, "EventFrameStartTimestamp"},
    {13, "EventFrameStartOvertriggerData"},
    {13, "EventFrameStartOvertriggerTimestamp"},
    {14, "EventFrameStartWaitData"},
    {14, "EventFrameStartWaitTimestamp"},
    {15, "EventFrameTimeoutData"},
    {15, "EventFrameTimeouTimestamp"},
    {16, "EventFrameTriggerMissedData"},
    {16, "EventFrameTriggerMissedTimestamp"},
    {17, "EventFrameWaitData"},
    {17, "EventFrameWaitTimestamp"},
    {18, "EventLine1RisingEdgeData"},
    {18, "EventLine1RisingEdgeTimestamp"},
    {19, "EventLine2RisingEdgeData"},
    {19, "EventLine2RisingEdgeTimestamp"},
    {20, "EventLine3RisingEdgeData"},
    {20, "EventLine3RisingEdgeTimestamp"},
    {21, "EventLine4RisingEdgeData"},
    {21, "EventLine4RisingEdgeTimestamp"},
    {22, "EventLineStartOvertriggerData"},
    {22, "EventLineStartOvertriggrTimestamp"},
    {23, "EventOverTemperatureData"},
    {23, "EventOverTemperatureTimestamp"},
    {24, "EventOverrunData"},
    {24, "EventOverrunTimestamp"},
    {25, "EventTemperatureStatusChangedData"},
    {25, "EventTemperatureStatusChangedTimestamp"},
    {26, "EventTestData"},
    {26, "EventTestTimestamp"},
    {27, "EventVirtualLine1RisingEdgeData"},
    {27, "EventVirtualLine1RisingEdgeTimestamp"},
    {28, "EventVirtualLine3RisingEdgeData"},
    {28, "EventVirtualLine2RisingEdgeTimestamp"},
    {29, "EventVirtualLine3RisingEdgeTimestamp"},
    {30, "EventVirtualLine4RisingEdgeData"},
    {30, "EventVirtualLine4RisingEdgeTimestamp"},
};

TEST(EventValueIndex, IsThatOfTheRow) {
    for (const Row& row : rows) {
        EXPECT_EQ(getEventValueIndex(row.name), row.index) << row.name;
    }
}

TEST(EventValueIndex, RowSevenComesBeforeRowEight) {
    EXPECT_EQ(getEventValueIndex("EventExposureEndFrameID"), 7);
}

TEST(EventValueIndex, DataOfVirtualLineThreeGoesWithTheTimeOfLineTwo) {
    EXPECT_EQ(getEventValueIndex("EventVirtualLine3RisingEdgeData"), 28);
    EXPECT_EQ(getEventValueIndex("EventVirtualLine2RisingEdgeTimestamp"), 28);
    EXPECT_EQ(getEventValueIndex("EventVirtualLine2RisingEdgeData"), -1);
    EXPECT_EQ(getEventValueIndex("EventVirtualLine3RisingEdgeTimestamp"), 29);
}

TEST(EventValueIndex, UnknownNamesHaveNone) {
    EXPECT_EQ(getEventValueIndex(""), -1);
    EXPECT_EQ(getEventValueIndex("eventexposureenddata"), -1);
    EXPECT_EQ(getEventValueIndex("EventExposureEndDat"), -1);
}

}  // namespace
}  // namespace Plugin::OrlixVCellPackageBase
