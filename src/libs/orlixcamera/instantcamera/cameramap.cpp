#include "orlixcamera/instantcamera/cameramap.h"

#include <array>
#include <span>
#include <utility>
#include <variant>

#include "orlixcamera/instantcamera/streamcounters.h"

namespace Orlix::Detail {
namespace {

using Row = RegisterRow;
constexpr RegisterKind Integer = RegisterKind::Integer;
constexpr RegisterKind Boolean = RegisterKind::Boolean;
constexpr RegisterKind Text = RegisterKind::Text;

// Where the number of a row is.
using Number = std::atomic<std::int64_t> CameraSettings::*;
using Flag = std::atomic<bool> CameraSettings::*;
using Count = std::uint64_t StreamCounts::*;
using Size = std::int64_t StreamCounts::*;
using Source = std::variant<Number, Flag, Count, Size>;

struct Entry {
    Row row;
    Source source;
};

template <std::size_t size>
constexpr std::array<Row, size> rowsOf(const std::array<Entry, size>& table) {
    std::array<Row, size> rows{};
    for (std::size_t index = 0; index < size; ++index) {
        rows[index] = table[index].row;
    }
    return rows;
}

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

// Of a table whose rows have their numbers in the settings and the counters.
class NumberRegisters : public Registers {
public:
    NumberRegisters(std::shared_ptr<CameraSettings> settings,
                    std::shared_ptr<const StreamCounters> counters, std::span<const Entry> table)
        : Registers(std::move(settings)), counters_(std::move(counters)), table_(table) {}

    [[nodiscard]] std::int64_t GetInteger(std::size_t row) const override {
        const Source& source = table_[row].source;
        if (const auto* const number = std::get_if<Number>(&source)) {
            return (settings().**number).load();
        }
        if (const auto* const flag = std::get_if<Flag>(&source)) {
            return std::int64_t{(settings().**flag).load()};
        }
        const StreamCounts counts = getCounts(*counters_);
        const auto* const count = std::get_if<Count>(&source);
        return count != nullptr ? static_cast<std::int64_t>(counts.**count)
                                : counts.*std::get<Size>(source);
    }
    void SetInteger(std::size_t row, std::int64_t value) override {
        const Source& source = table_[row].source;
        if (const auto* const number = std::get_if<Number>(&source)) {
            (settings().**number).store(value);
        } else if (const auto* const flag = std::get_if<Flag>(&source)) {
            (settings().**flag).store(value != 0);
        }
    }

private:
    [[nodiscard]] virtual StreamCounts getCounts(const StreamCounters& counters) const = 0;

    const std::shared_ptr<const StreamCounters> counters_;
    const std::span<const Entry> table_;
};

// ---- The camera object

constexpr std::array cameraTable{
    Entry{
        {"GrabControl", "MaxNumBuffer", "Max Num Buffer",
         "Most buffers that are filled and held at the same time. There are fewer where they would "
         "take more than the buffer memory.",
         Integer, Writable::WhileClosed, 1, largestBufferCount},
        &CameraSettings::maxNumBuffer},
    Entry{{"GrabControl", "BufferMemory", "Buffer Memory",
           "Memory in MiB that all buffers take, but for the first 16, which are always made.",
           Integer, Writable::WhileClosed, 0, largestBufferMemory},
          &CameraSettings::bufferMemory},
    Entry{{"GrabControl", "OutputQueueSize", "Output Queue Size",
           "Frames that the strategy of the latest images keeps.", Integer, Writable::WhileClosed,
           1, largestBufferCount},
          &CameraSettings::outputQueueSize},
    Entry{{"GrabControl", "AcquisitionControlEnable", "Acquisition Control Enable",
           "Starts and stops the acquisition of the device along with grabbing.", Boolean,
           Writable::WhileClosed},
          &CameraSettings::controlAcquisition},
    Entry{{"EventControl", "GrabCameraEvents", "Grab Camera Events",
           "Delivers the events of the device.", Boolean, Writable::WhileClosed},
          &CameraSettings::grabCameraEvents},
    Entry{{"ThreadControl", "GrabThreadPriority", "Grab Thread Priority",
           "Real-time priority of the thread that calls the image handlers; 0 is none.", Integer,
           Writable::WhileClosed, 0, highestPriority},
          &CameraSettings::grabThreadPriority},
    Entry{{"ThreadControl", "EventThreadPriority", "Event Thread Priority",
           "Real-time priority of the thread that calls the event handlers; 0 is none.", Integer,
           Writable::WhileClosed, 0, highestPriority},
          &CameraSettings::eventThreadPriority},
    Entry{{"Status", "IsOpen", "Is Open", "Whether a device is open.", Boolean},
          &CameraSettings::isOpen},
    Entry{{"Status", "IsGrabbing", "Is Grabbing", "Whether frames are being grabbed.", Boolean},
          &CameraSettings::isGrabbing},
    Entry{{"Status", "IsDeviceRemoved", "Is Device Removed", "Whether the open device was lost.",
           Boolean},
          &CameraSettings::isRemoved},
    Entry{{"Statistic", "TotalSent", "Total Sent",
           "Frames that devices sent since this camera was made: the sum of the next four."},
          &StreamCounts::sent},
    Entry{{"Statistic", "TotalDelivered", "Total Delivered",
           "Frames that were handed over complete."},
          &StreamCounts::delivered},
    Entry{{"Statistic", "TotalFailed", "Total Failed", "Frames that failed."},
          &StreamCounts::failed},
    Entry{{"Statistic", "TotalSkipped", "Total Skipped",
           "Frames left out for newer ones, as the strategy asks."},
          &StreamCounts::skipped},
    Entry{{"Statistic", "TotalLostForBuffer", "Total Lost For Buffer",
           "Frames that found no free buffer."},
          &StreamCounts::lostForBuffer},
    Entry{{"Statistic", "TotalEventsLost", "Total Events Lost",
           "Events that came faster than their handlers returned."},
          &StreamCounts::eventsLost},
};

constexpr auto cameraRows = rowsOf(cameraTable);

class CameraRegisters final : public NumberRegisters {
public:
    CameraRegisters(std::shared_ptr<CameraSettings> settings,
                    std::shared_ptr<const StreamCounters> counters)
        : NumberRegisters(std::move(settings), std::move(counters), cameraTable) {}

    [[nodiscard]] bool IsPresent() const override { return true; }

private:
    [[nodiscard]] StreamCounts getCounts(const StreamCounters& counters) const override {
        return counters.GetTotal();
    }
};

// ---- The stream

constexpr std::array streamTable{
    Entry{{"BufferControl", "MaxNumBuffer", "Max Num Buffer",
           "Most buffers that are filled and held at the same time.", Integer,
           Writable::WhileNotGrabbing, 1, largestBufferCount},
          &CameraSettings::maxNumBuffer},
    Entry{{"BufferControl", "DeliverFailedFrames", "Deliver Failed Frames",
           "Hands frames over that failed. Without it they are only counted.", Boolean,
           Writable::WhileNotGrabbing},
          &CameraSettings::deliverFailedFrames},
    Entry{{"BufferControl", "PayloadSize", "Payload Size",
           "Bytes of each buffer, from the first start of grabbing on.", Integer, Writable::Never,
           0, 0, Available::UnlessZero},
          &StreamCounts::payloadSize},
    Entry{{"BufferControl", "NumBuffers", "Num Buffers", "Buffers that were made for grabbing."},
          &StreamCounts::bufferCount},
    Entry{{"BufferControl", "NumHeldBuffers", "Num Held Buffers",
           "Results that somebody holds; their buffers are not filled meanwhile."},
          &StreamCounts::heldBuffers},
    Entry{{"Statistic", "StatisticSent", "Statistic Sent",
           "Frames that the device sent since it was opened."},
          &StreamCounts::sent},
    Entry{{"Statistic", "StatisticDelivered", "Statistic Delivered",
           "Frames that were handed over complete."},
          &StreamCounts::delivered},
    Entry{{"Statistic", "StatisticFailed", "Statistic Failed",
           "Frames that failed, the sum of the next five."},
          &StreamCounts::failed},
    Entry{{"Statistic", "StatisticFailedMissingPackets", "Statistic Failed Missing Packets",
           "Frames that arrived in part."},
          &StreamCounts::missingPackets},
    Entry{{"Statistic", "StatisticFailedWrongSize", "Statistic Failed Wrong Size",
           "Frames with more or fewer bytes than announced, or than their buffer holds."},
          &StreamCounts::wrongSize},
    Entry{{"Statistic", "StatisticFailedBadTrailer", "Statistic Failed Bad Trailer",
           "Frames whose chunks or trailer were invalid."},
          &StreamCounts::badTrailer},
    Entry{{"Statistic", "StatisticFailedTimedOut", "Statistic Failed Timed Out",
           "Frames whose end never came."},
          &StreamCounts::timedOut},
    Entry{{"Statistic", "StatisticFailedAborted", "Statistic Failed Aborted",
           "Frames that grabbing ended on, before they were handed over."},
          &StreamCounts::aborted},
    Entry{{"Statistic", "StatisticSkipped", "Statistic Skipped",
           "Frames left out for newer ones, as the strategy asks."},
          &StreamCounts::skipped},
    Entry{{"Statistic", "StatisticLostForBuffer", "Statistic Lost For Buffer",
           "Frames that found no free buffer."},
          &StreamCounts::lostForBuffer},
    Entry{{"Statistic", "StatisticResentPackets", "Statistic Resent Packets",
           "Packets that had to be sent again."},
          &StreamCounts::resentPackets},
    Entry{{"Statistic", "StatisticEventsLost", "Statistic Events Lost",
           "Events that came faster than their handlers returned."},
          &StreamCounts::eventsLost},
    Entry{{"Connection", "IsDeviceRemoved", "Is Device Removed",
           "Whether the open device was lost.", Boolean},
          &CameraSettings::isRemoved},
};

constexpr auto streamRows = rowsOf(streamTable);

class StreamRegisters final : public NumberRegisters {
public:
    StreamRegisters(std::shared_ptr<CameraSettings> settings,
                    std::shared_ptr<const StreamCounters> counters)
        : NumberRegisters(std::move(settings), std::move(counters), streamTable) {}

private:
    [[nodiscard]] StreamCounts getCounts(const StreamCounters& counters) const override {
        return counters.Get();
    }
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
        "CameraInstance", cameraRows,
        std::make_shared<CameraRegisters>(std::move(settings), std::move(counters)));
}

std::unique_ptr<RegisterMap> CreateStreamMap(std::shared_ptr<CameraSettings> settings,
                                             std::shared_ptr<const StreamCounters> counters) {
    return std::make_unique<RegisterMap>(
        "StreamGrabber", streamRows,
        std::make_shared<StreamRegisters>(std::move(settings), std::move(counters)));
}

std::unique_ptr<RegisterMap> CreateLayerMap(std::shared_ptr<CameraSettings> settings,
                                            const CDeviceInfo& info) {
    return std::make_unique<RegisterMap>(
        "DeviceTransportLayer", layerTable,
        std::make_shared<LayerRegisters>(std::move(settings), info));
}

}  // namespace Orlix::Detail
