#include "orlixcamera/instantcamera/cameramap.h"

#include <array>
#include <utility>

#include "orlixcamera/instantcamera/streamcounters.h"

namespace Orlix::Detail {
namespace {

using Row = RegisterRow;
constexpr RegisterKind Integer = RegisterKind::Integer;
constexpr RegisterKind Boolean = RegisterKind::Boolean;
constexpr RegisterKind Text = RegisterKind::Text;

// What the registers of all three maps share.
class Registers : public IRegisters {
public:
    explicit Registers(std::shared_ptr<CameraSettings> settings) : settings_(std::move(settings)) {}

    [[nodiscard]] bool IsPresent() const override { return settings().isOpen; }
    [[nodiscard]] bool IsOpen() const override { return settings().isOpen; }
    [[nodiscard]] bool IsGrabbing() const override { return settings().isGrabbing; }
    void SetInteger(std::size_t, std::int64_t) override {}
    [[nodiscard]] gcstring GetText(std::size_t) const override { return {}; }

protected:
    [[nodiscard]] CameraSettings& settings() const { return *settings_; }

private:
    const std::shared_ptr<CameraSettings> settings_;
};

// ---- The camera object

using Number = std::atomic<std::int64_t> CameraSettings::*;
using Flag = std::atomic<bool> CameraSettings::*;
using Total = std::uint64_t StreamCounts::*;

// One row of the table with the member behind it.
struct Setting {
    Number number = nullptr;
    Flag flag = nullptr;
    Total total = nullptr;
};

constexpr std::array<Row, 16> cameraTable{{
    {"GrabControl", "MaxNumBuffer", "Max Num Buffer",
     "Most buffers that are filled and held at the same time. There are fewer where they would "
     "take "
     "more than the buffer memory.",
     Integer, Writable::WhileClosed, 1, largestBufferCount},
    {"GrabControl", "BufferMemory", "Buffer Memory",
     "Memory in MiB that all buffers take, but for the first 16, which are always made.", Integer,
     Writable::WhileClosed, 0, largestBufferMemory},
    {"GrabControl", "OutputQueueSize", "Output Queue Size",
     "Frames that the strategy of the latest images keeps.", Integer, Writable::WhileClosed, 1,
     largestBufferCount},
    {"GrabControl", "AcquisitionControlEnable", "Acquisition Control Enable",
     "Starts and stops the acquisition of the device along with grabbing.", Boolean,
     Writable::WhileClosed},
    {"EventControl", "GrabCameraEvents", "Grab Camera Events", "Delivers the events of the device.",
     Boolean, Writable::WhileClosed},
    {"ThreadControl", "GrabThreadPriority", "Grab Thread Priority",
     "Real-time priority of the thread that calls the image handlers; 0 is none.", Integer,
     Writable::WhileClosed, 0, highestPriority},
    {"ThreadControl", "EventThreadPriority", "Event Thread Priority",
     "Real-time priority of the thread that calls the event handlers; 0 is none.", Integer,
     Writable::WhileClosed, 0, highestPriority},
    {"Status", "IsOpen", "Is Open", "Whether a device is open.", Boolean},
    {"Status", "IsGrabbing", "Is Grabbing", "Whether frames are being grabbed.", Boolean},
    {"Status", "IsDeviceRemoved", "Is Device Removed", "Whether the open device was lost.",
     Boolean},
    {"Statistic", "TotalSent", "Total Sent",
     "Frames that devices sent since this camera was made: the sum of the next four."},
    {"Statistic", "TotalDelivered", "Total Delivered", "Frames that were handed over complete."},
    {"Statistic", "TotalFailed", "Total Failed", "Frames that failed."},
    {"Statistic", "TotalSkipped", "Total Skipped",
     "Frames left out for newer ones, as the strategy asks."},
    {"Statistic", "TotalLostForBuffer", "Total Lost For Buffer",
     "Frames that found no free buffer."},
    {"Statistic", "TotalEventsLost", "Total Events Lost",
     "Events that came faster than their handlers returned."},
}};

constexpr std::array<Setting, cameraTable.size()> cameraSettings{{
    {&CameraSettings::maxNumBuffer},
    {&CameraSettings::bufferMemory},
    {&CameraSettings::outputQueueSize},
    {nullptr, &CameraSettings::controlAcquisition},
    {nullptr, &CameraSettings::grabCameraEvents},
    {&CameraSettings::grabThreadPriority},
    {&CameraSettings::eventThreadPriority},
    {nullptr, &CameraSettings::isOpen},
    {nullptr, &CameraSettings::isGrabbing},
    {nullptr, &CameraSettings::isRemoved},
    {nullptr, nullptr, &StreamCounts::sent},
    {nullptr, nullptr, &StreamCounts::delivered},
    {nullptr, nullptr, &StreamCounts::failed},
    {nullptr, nullptr, &StreamCounts::skipped},
    {nullptr, nullptr, &StreamCounts::lostForBuffer},
    {nullptr, nullptr, &StreamCounts::eventsLost},
}};

class CameraRegisters final : public Registers {
public:
    CameraRegisters(std::shared_ptr<CameraSettings> settings,
                    std::shared_ptr<const StreamCounters> counters)
        : Registers(std::move(settings)), counters_(std::move(counters)) {}

    [[nodiscard]] bool IsPresent() const override { return true; }
    [[nodiscard]] std::int64_t GetInteger(std::size_t row) const override {
        const Setting& setting = cameraSettings.at(row);
        if (setting.total != nullptr) {
            return static_cast<std::int64_t>(counters_->GetTotal().*setting.total);
        }
        return setting.number != nullptr ? (settings().*setting.number).load()
                                         : std::int64_t{(settings().*setting.flag).load()};
    }
    void SetInteger(std::size_t row, std::int64_t value) override {
        const Setting& setting = cameraSettings.at(row);
        if (setting.number != nullptr) {
            (settings().*setting.number).store(value);
        } else {
            (settings().*setting.flag).store(value != 0);
        }
    }

private:
    const std::shared_ptr<const StreamCounters> counters_;
};

// ---- The stream

// Where a row of the stream has its number.
struct Count {
    std::uint64_t StreamCounts::*total = nullptr;
    std::int64_t StreamCounts::*size = nullptr;
};

constexpr std::array<Row, 18> streamTable{{
    {"BufferControl", "MaxNumBuffer", "Max Num Buffer",
     "Most buffers that are filled and held at the same time.", Integer, Writable::WhileNotGrabbing,
     1, largestBufferCount},
    {"BufferControl", "DeliverFailedFrames", "Deliver Failed Frames",
     "Hands frames over that failed. Without it they are only counted.", Boolean,
     Writable::WhileNotGrabbing},
    {"BufferControl", "PayloadSize", "Payload Size",
     "Bytes of each buffer, from the first start of grabbing on.", Integer, Writable::Never, 0, 0,
     Available::UnlessZero},
    {"BufferControl", "NumBuffers", "Num Buffers", "Buffers that were made for grabbing."},
    {"BufferControl", "NumHeldBuffers", "Num Held Buffers",
     "Results that somebody holds; their buffers are not filled meanwhile."},
    {"Statistic", "StatisticSent", "Statistic Sent",
     "Frames that the device sent since it was opened."},
    {"Statistic", "StatisticDelivered", "Statistic Delivered",
     "Frames that were handed over complete."},
    {"Statistic", "StatisticFailed", "Statistic Failed",
     "Frames that failed, the sum of the next five."},
    {"Statistic", "StatisticFailedMissingPackets", "Statistic Failed Missing Packets",
     "Frames that arrived in part."},
    {"Statistic", "StatisticFailedWrongSize", "Statistic Failed Wrong Size",
     "Frames with more or fewer bytes than announced, or than their buffer holds."},
    {"Statistic", "StatisticFailedBadTrailer", "Statistic Failed Bad Trailer",
     "Frames whose chunks or trailer were invalid."},
    {"Statistic", "StatisticFailedTimedOut", "Statistic Failed Timed Out",
     "Frames whose end never came."},
    {"Statistic", "StatisticFailedAborted", "Statistic Failed Aborted",
     "Frames that grabbing ended on, before they were handed over."},
    {"Statistic", "StatisticSkipped", "Statistic Skipped",
     "Frames left out for newer ones, as the strategy asks."},
    {"Statistic", "StatisticLostForBuffer", "Statistic Lost For Buffer",
     "Frames that found no free buffer."},
    {"Statistic", "StatisticResentPackets", "Statistic Resent Packets",
     "Packets that had to be sent again."},
    {"Statistic", "StatisticEventsLost", "Statistic Events Lost",
     "Events that came faster than their handlers returned."},
    {"Connection", "IsDeviceRemoved", "Is Device Removed", "Whether the open device was lost.",
     Boolean},
}};

constexpr std::array<Count, streamTable.size()> streamCounts{{
    {},
    {},
    {nullptr, &StreamCounts::payloadSize},
    {nullptr, &StreamCounts::bufferCount},
    {nullptr, &StreamCounts::heldBuffers},
    {&StreamCounts::sent},
    {&StreamCounts::delivered},
    {&StreamCounts::failed},
    {&StreamCounts::missingPackets},
    {&StreamCounts::wrongSize},
    {&StreamCounts::badTrailer},
    {&StreamCounts::timedOut},
    {&StreamCounts::aborted},
    {&StreamCounts::skipped},
    {&StreamCounts::lostForBuffer},
    {&StreamCounts::resentPackets},
    {&StreamCounts::eventsLost},
    {},
}};

class StreamRegisters final : public Registers {
public:
    StreamRegisters(std::shared_ptr<CameraSettings> settings,
                    std::shared_ptr<const StreamCounters> counters)
        : Registers(std::move(settings)), counters_(std::move(counters)) {}

    [[nodiscard]] std::int64_t GetInteger(std::size_t row) const override {
        const Count& count = streamCounts.at(row);
        if (count.total != nullptr) {
            return static_cast<std::int64_t>(counters_->Get().*count.total);
        }
        if (count.size != nullptr) {
            return counters_->Get().*count.size;
        }
        switch (row) {
            case maxNumBuffer:
                return settings().maxNumBuffer;
            case deliverFailedFrames:
                return std::int64_t{settings().deliverFailedFrames};
            default:
                return std::int64_t{settings().isRemoved};
        }
    }
    void SetInteger(std::size_t row, std::int64_t value) override {
        if (row == maxNumBuffer) {
            settings().maxNumBuffer = value;
        } else if (row == deliverFailedFrames) {
            settings().deliverFailedFrames = value != 0;
        }
    }

private:
    static constexpr std::size_t maxNumBuffer = 0;
    static constexpr std::size_t deliverFailedFrames = 1;

    const std::shared_ptr<const StreamCounters> counters_;
};

// ---- The connection

// The texts are properties of the device, by name.
constexpr std::array<Row, 5> layerTable{{
    {"TransportLayerControl", "DeviceClass", "Device Class",
     "The kind of connection that the device is reached through.", Text},
    {"TransportLayerControl", "FullName", "Full Name",
     "The name of the device, which is unique on this computer.", Text},
    {"TransportLayerControl", "FriendlyName", "Friendly Name", "The name of the device for a user.",
     Text},
    {"TransportLayerControl", "IpAddress", "IP Address", "The network address of the device.",
     Text},
    {"TransportLayerControl", "IsDeviceRemoved", "Is Device Removed",
     "Whether the open device was lost.", Boolean},
}};

class LayerRegisters final : public Registers {
public:
    LayerRegisters(std::shared_ptr<CameraSettings> settings, const CDeviceInfo& info)
        : Registers(std::move(settings)), info_(info) {}

    [[nodiscard]] std::int64_t GetInteger(std::size_t) const override {
        return std::int64_t{settings().isRemoved};
    }
    [[nodiscard]] gcstring GetText(std::size_t row) const override {
        gcstring text;
        static_cast<void>(info_.GetPropertyValue(layerTable.at(row).name, text));
        return text;
    }

private:
    const CDeviceInfo info_;
};

}  // namespace

std::unique_ptr<RegisterMap> CreateCameraMap(std::shared_ptr<CameraSettings> settings,
                                             std::shared_ptr<const StreamCounters> counters) {
    return std::make_unique<RegisterMap>(
        "CameraInstance", cameraTable,
        std::make_shared<CameraRegisters>(std::move(settings), std::move(counters)));
}

std::unique_ptr<RegisterMap> CreateStreamMap(std::shared_ptr<CameraSettings> settings,
                                             std::shared_ptr<const StreamCounters> counters) {
    return std::make_unique<RegisterMap>(
        "StreamGrabber", streamTable,
        std::make_shared<StreamRegisters>(std::move(settings), std::move(counters)));
}

std::unique_ptr<RegisterMap> CreateLayerMap(std::shared_ptr<CameraSettings> settings,
                                            const CDeviceInfo& info) {
    return std::make_unique<RegisterMap>(
        "DeviceTransportLayer", layerTable,
        std::make_shared<LayerRegisters>(std::move(settings), info));
}

}  // namespace Orlix::Detail
