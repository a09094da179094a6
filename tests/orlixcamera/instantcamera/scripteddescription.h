// What a scripted device has: its registers, its description, its events and chunks.
#pragma once

#include <cstdint>

namespace CameraTest {

// Registers of 8 bytes, little endian, by address.
namespace Address {
inline constexpr std::int64_t width = 0;
inline constexpr std::int64_t start = 8;
inline constexpr std::int64_t stop = 16;
inline constexpr std::int64_t payload = 24;
inline constexpr std::int64_t selector = 32;
inline constexpr std::int64_t notification = 40;
inline constexpr std::int64_t mode = 48;
}  // namespace Address

inline const char* const scriptedDescription = R"(<?xml version="1.0" encoding="UTF-8"?>
<RegisterDescription xmlns="http://www.genicam.org/GenApi/Version_1_1" ModelName="Scripted"
    VendorName="Orlix" StandardNameSpace="None" SchemaMajorVersion="1" SchemaMinorVersion="1"
    SchemaSubMinorVersion="0" MajorVersion="1" MinorVersion="0" SubMinorVersion="0"
    ProductGuid="1E6E1B0C-6C8B-4C0E-9D54-2B1A6A2F7D11"
    VersionGuid="17C0D7F2-1C5A-4D4B-8E0F-53A4A2C9E612">
  <Category Name="Root"><pFeature>Width</pFeature><pFeature>PayloadSize</pFeature></Category>
  <Integer Name="Width"><pIsLocked>TLParamsLocked</pIsLocked><Streamable>Yes</Streamable>
    <pValue>WidthReg</pValue><Min>1</Min><Max>4096</Max></Integer>
  <IntReg Name="WidthReg"><Address>0</Address><Length>8</Length><AccessMode>RW</AccessMode>
    <pPort>Device</pPort><Sign>Signed</Sign><Endianess>LittleEndian</Endianess></IntReg>
  <Command Name="AcquisitionStart"><pValue>StartReg</pValue><CommandValue>1</CommandValue></Command>
  <IntReg Name="StartReg"><Address>8</Address><Length>8</Length><AccessMode>WO</AccessMode>
    <pPort>Device</pPort><Sign>Signed</Sign><Endianess>LittleEndian</Endianess></IntReg>
  <Command Name="AcquisitionStop"><pValue>StopReg</pValue><CommandValue>1</CommandValue></Command>
  <IntReg Name="StopReg"><Address>16</Address><Length>8</Length><AccessMode>WO</AccessMode>
    <pPort>Device</pPort><Sign>Signed</Sign><Endianess>LittleEndian</Endianess></IntReg>
  <Integer Name="PayloadSize"><pValue>PayloadReg</pValue></Integer>
  <IntReg Name="PayloadReg"><Address>24</Address><Length>8</Length><AccessMode>RO</AccessMode>
    <pPort>Device</pPort><Cachable>NoCache</Cachable><Sign>Signed</Sign>
    <Endianess>LittleEndian</Endianess></IntReg>
  <Integer Name="TLParamsLocked"><Value>0</Value><Min>0</Min><Max>1</Max></Integer>
  <Enumeration Name="AcquisitionMode"><EnumEntry Name="SingleFrame"><Value>0</Value></EnumEntry>
    <EnumEntry Name="Continuous"><Value>1</Value></EnumEntry><pValue>ModeReg</pValue></Enumeration>
  <IntReg Name="ModeReg"><Address>48</Address><Length>8</Length><AccessMode>RW</AccessMode>
    <pPort>Device</pPort><Sign>Signed</Sign><Endianess>LittleEndian</Endianess></IntReg>

  <Integer Name="EventExposureEndFrameID"><pValue>ExposureEndFrameIDReg</pValue></Integer>
  <IntReg Name="ExposureEndFrameIDReg"><Address>0</Address><Length>8</Length>
    <AccessMode>RO</AccessMode><pPort>ExposureEndEvent</pPort><Sign>Signed</Sign>
    <Endianess>LittleEndian</Endianess></IntReg>
  <Integer Name="EventExposureEndTimestamp"><pValue>ExposureEndTimestampReg</pValue></Integer>
  <IntReg Name="ExposureEndTimestampReg"><Address>8</Address><Length>8</Length>
    <AccessMode>RO</AccessMode><pPort>ExposureEndEvent</pPort><Sign>Signed</Sign>
    <Endianess>LittleEndian</Endianess></IntReg>
  <Integer Name="EventOverrunTimestamp"><pValue>OverrunTimestampReg</pValue></Integer>
  <IntReg Name="OverrunTimestampReg"><Address>0</Address><Length>8</Length>
    <AccessMode>RO</AccessMode><pPort>OverrunEvent</pPort><Sign>Signed</Sign>
    <Endianess>LittleEndian</Endianess></IntReg>

  <Integer Name="ChunkFrameID"><pValue>ChunkFrameIDReg</pValue></Integer>
  <IntReg Name="ChunkFrameIDReg"><Address>0</Address><Length>8</Length><AccessMode>RO</AccessMode>
    <pPort>FrameIDChunk</pPort><Sign>Signed</Sign><Endianess>LittleEndian</Endianess></IntReg>

  <Port Name="Device"/>
  <Port Name="ExposureEndEvent"><EventID>9001</EventID></Port>
  <Port Name="OverrunEvent"><EventID>9002</EventID></Port>
  <Port Name="FrameIDChunk"><ChunkID>A1</ChunkID></Port>
</RegisterDescription>
)";

inline constexpr std::uint16_t exposureEndEvent = 0x9001;
inline constexpr std::uint16_t overrunEvent = 0x9002;
inline constexpr std::uint32_t imageChunk = 1;
inline constexpr std::uint32_t frameIdChunk = 0xA1;

}  // namespace CameraTest
