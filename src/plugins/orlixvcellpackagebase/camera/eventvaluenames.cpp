#include "camera/eventvaluenames.h"

#include <algorithm>
#include <iterator>

namespace Plugin::OrlixVCellPackageBase {

namespace {

struct EventValue {
    int index;
    const char* name;
};

// The first row with a name counts: 7 stands before 0, and hides 8. Row 28 has the data of line 3
// and the time of line 2; names are spelled as cameras spell them.
constexpr EventValue eventValues[] = {
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
    {8, "EventExposureEndData"},
    {8, "EventExposureEndFrameID"},
    {8, "EventExposureEndTimestamp"},
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
    {29, "EventVirtualLine3RisingEdgeData"},
    {29, "EventVirtualLine3RisingEdgeTimestamp"},
    {30, "EventVirtualLine4RisingEdgeData"},
    {30, "EventVirtualLine4RisingEdgeTimestamp"},
};

}  // namespace

int getEventValueIndex(const GenICam::gcstring& valueName) {
    const auto* const found =
        std::find_if(std::begin(eventValues), std::end(eventValues),
                     [&](const EventValue& value) { return valueName == value.name; });
    return found != std::end(eventValues) ? found->index : -1;
}

}  // namespace Plugin::OrlixVCellPackageBase
