// A Camera over a device that sends events when a test tells it.
#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdint>

#include "support/scriptedcamera.h"

namespace Plugin::OrlixVCellPackageBase {

// What switches events on, and values of other kinds than integer. Both events read one register.
inline constexpr auto eventFeatures = R"(
  <Enumeration Name="EventSelector"><EnumEntry Name="ExposureEnd"><Value>1</Value></EnumEntry>
    <EnumEntry Name="Overrun"><Value>2</Value></EnumEntry><pValue>EventSelectorReg</pValue>
  </Enumeration>
  <IntReg Name="EventSelectorReg"><Address>32</Address><Length>8</Length><AccessMode>RW</AccessMode>
    <pPort>Device</pPort><Sign>Signed</Sign><Endianess>LittleEndian</Endianess></IntReg>
  <Enumeration Name="EventNotification"><EnumEntry Name="Off"><Value>0</Value></EnumEntry>
    <EnumEntry Name="On"><Value>1</Value></EnumEntry><pValue>EventNotificationReg</pValue>
  </Enumeration>
  <IntReg Name="EventNotificationReg"><Address>40</Address><Length>8</Length>
    <AccessMode>RW</AccessMode><pPort>Device</pPort><Sign>Signed</Sign>
    <Endianess>LittleEndian</Endianess></IntReg>
  <Boolean Name="EventFlag"><pValue>ExposureEndFrameIDReg</pValue></Boolean>
  <SwissKnife Name="EventHalf"><pVariable Name="V">ExposureEndFrameIDReg</pVariable>
    <Formula>V / 2.0</Formula></SwissKnife>
  <StringReg Name="EventText"><Address>0</Address><Length>8</Length><AccessMode>RO</AccessMode>
    <pPort>ExposureEndEvent</pPort></StringReg>
  <Enumeration Name="EventKind"><EnumEntry Name="A"><Value>7</Value></EnumEntry>
    <pValue>ExposureEndFrameIDReg</pValue></Enumeration>
)";

class CameraEvents : public ScriptedCamera {
protected:
    void add(const char* configuration) {
        camera().executeEventPinAdd();
        camera().setEventPinConfiguration(configuration);
    }
    void allocate() { ASSERT_THAT(camera().allocateResources(), testing::IsEmpty()); }
    void run() {
        extendDevice(eventFeatures);
        allocate();
        start();
    }
    Orlix::DataProcessing::Utils::Variant sendAndWait(RecordingSink& sink, std::int64_t value) {
        const std::size_t count = sink.values().size();
        device->SendEvent(CameraTest::exposureEndEvent, value);
        sink.waitForCount(count + 1);
        return sink.values().back();
    }
};

}  // namespace Plugin::OrlixVCellPackageBase
