// The seam between the camera library and the ways to reach a camera. A back end implements the
// three interfaces below and nothing else; nothing above this header knows which one it talks to.
//
// Ownership: the layer outlives its devices, a device outlives its streams. Threads: every function
// may be called on any thread unless it says otherwise; none calls a sink while it holds a lock.
// Failure: exceptions of gcbase; after the loss of a device every call that needs it throws
// RuntimeException at once, nothing blocks longer than its own time-out.
#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "gcbase/gcstring.h"
#include "orlixcamera/deviceinfo.h"
#include "orlixcamera/pixeltype.h"

namespace Orlix::Transport {

// What became of a frame. Every frame that a device sends gets exactly one.
enum class FrameFate : std::uint8_t {
    Delivered,       // complete
    MissingPackets,  // arrived in part; what came is in the buffer, the rest is undefined
    WrongSize,       // more or fewer bytes than the leader announced, or than the buffer holds
    BadTrailer,      // complete, but the device marked its chunks or trailer as invalid
    TimedOut,        // the end of the frame never came
    Aborted,         // the stream was stopped, or the device lost, while it was being filled
};

enum class PayloadKind : std::uint8_t { Image, ImageWithChunks, ChunksOnly };
enum class ChunkByteOrder : std::uint8_t { BigEndian, LittleEndian };

// One frame's memory and what is known of its content. The stream's user owns the object and the
// memory; between Queue and the return from Wait both belong to the stream.
struct StreamBuffer {
    void* data = nullptr;
    std::size_t capacity = 0;
    void* user = nullptr;  // the queuer's own; the stream doesn't touch it

    FrameFate fate = FrameFate::Aborted;
    gcstring error;  // empty for Delivered
    PayloadKind kind = PayloadKind::Image;
    ChunkByteOrder chunkByteOrder = ChunkByteOrder::BigEndian;
    std::size_t filled = 0;       // bytes of image and chunks that the device sent
    std::uint64_t frameId = 0;    // counts from 1 with each start; gaps are frames that were lost
    std::uint64_t timestamp = 0;  // ticks of the device's clock
    EPixelType pixelType = PixelType_Undefined;
    std::uint32_t width = 0;
    std::uint32_t height = 0;
    std::uint32_t offsetX = 0;
    std::uint32_t offsetY = 0;
    std::size_t paddingX = 0;
};

// Counts since the stream was opened. The device has sent as many frames as the first three say
// together; the others count packets.
struct StreamStatistics {
    std::uint64_t delivered = 0;
    std::uint64_t failed = 0;           // put into a buffer with another fate than Delivered
    std::uint64_t missedForBuffer = 0;  // no buffer was queued when they came
    std::uint64_t resentPackets = 0;
    std::uint64_t missingPackets = 0;
};

// Fills queued buffers in the order of queuing and hands them out in the order of frames.
class IStream {
public:
    virtual ~IStream() = default;
    IStream(const IStream&) = delete;
    IStream& operator=(const IStream&) = delete;

    // Before Start or at any time after it. `buffer` stays valid until Wait or TakeBack returns it.
    virtual void Queue(StreamBuffer& buffer) = 0;
    // Begins to receive; `payloadSize` bytes are the most that a frame has.
    virtual void Start(std::size_t payloadSize) = 0;
    // The next filled buffer; null after the time-out, and at once when the stream is stopped.
    [[nodiscard]] virtual StreamBuffer* Wait(std::chrono::milliseconds timeOut) = 0;
    // Ends receiving and every Wait, which it waits for no longer than these take to leave.
    virtual void Stop() noexcept = 0;
    // After Stop: the buffers that are still queued or filled, one by one, then null.
    [[nodiscard]] virtual StreamBuffer* TakeBack() noexcept = 0;
    [[nodiscard]] virtual StreamStatistics GetStatistics() const = 0;

protected:
    IStream() = default;
};

// A message of the device. `data` is what the description addresses from 0 on; it is valid during
// the call only.
struct EventMessage {
    std::uint16_t eventId = 0;
    std::uint64_t timestamp = 0;  // ticks of the device's clock
    const std::uint8_t* data = nullptr;
    std::size_t size = 0;
};

// Called on threads of the back end, never two of a kind at once and with no lock held. No call is
// made after SetSink(nullptr) has returned, unless that is called from within the sink itself.
class IDeviceSink {
public:
    virtual void OnEvent(const EventMessage& message) = 0;
    // The device is gone for good; once for each opening, on a thread of its own.
    virtual void OnLost() = 0;

protected:
    ~IDeviceSink() = default;
};

class IDevice {
public:
    virtual ~IDevice() = default;  // closes; never throws
    IDevice(const IDevice&) = delete;
    IDevice& operator=(const IDevice&) = delete;

    [[nodiscard]] virtual const CDeviceInfo& GetInfo() const noexcept = 0;
    // Takes control. Throws AccessException "Device '...' is in use by ... (address)." if another
    // program, or another object of this one, holds it, RuntimeException if it can't be reached.
    virtual void Open() = 0;
    virtual void Close() noexcept = 0;
    [[nodiscard]] virtual bool IsOpen() const noexcept = 0;

    // The device's memory, whole ranges or an exception.
    virtual void Read(std::int64_t address, void* buffer, std::size_t length) = 0;
    virtual void Write(std::int64_t address, const void* buffer, std::size_t length) = 0;

    // The description file as it lies in the device, plain or zipped; shared by all of one model.
    [[nodiscard]] virtual std::shared_ptr<const std::string> GetDescription() = 0;
    // The description of the layer's own features and their memory (link speed, packet size,
    // heartbeat and so on); null text if there are none.
    [[nodiscard]] virtual std::shared_ptr<const std::string> GetLayerDescription() = 0;
    virtual void ReadLayer(std::int64_t address, void* buffer, std::size_t length) = 0;
    virtual void WriteLayer(std::int64_t address, const void* buffer, std::size_t length) = 0;

    // Asks an open device for a sign of life, for three seconds at most: false if there is none,
    // and the device is lost then. Where a lost device makes every access fail at once, as a back
    // end without a network does, there is nothing to ask.
    [[nodiscard]] virtual bool CheckAlive() { return true; }

    // Null for none; waits for a call that runs. A sink lives until then.
    virtual void SetSink(IDeviceSink* sink) = 0;
    // One at a time. The device must be open.
    [[nodiscard]] virtual std::unique_ptr<IStream> OpenStream() = 0;

protected:
    IDevice() = default;
};

class ILayer {
public:
    virtual ~ILayer() = default;
    ILayer(const ILayer&) = delete;
    ILayer& operator=(const ILayer&) = delete;

    // "DeviceClass" and what else tells the layer apart; a resource of the pool.
    [[nodiscard]] virtual const CInfoBase& GetInfo() const noexcept = 0;
    // All devices that answer now, also those in use. May take a second.
    [[nodiscard]] virtual std::vector<CDeviceInfo> Enumerate() = 0;
    // A closed device; opening it tells whether it is there. Throws InvalidArgumentException if
    // `info` names no device of this layer.
    [[nodiscard]] virtual std::shared_ptr<IDevice> CreateDevice(const CDeviceInfo& info) = 0;
    // Called on any thread when a device came or went; an empty function ends it.
    virtual void SetDevicesChanged(std::function<void()> changed) = 0;

protected:
    ILayer() = default;
};

}  // namespace Orlix::Transport
