// One acquisition of a camera on the network, through this library or with a bare loop on Aravis,
// for scripts/camera-speed.sh, which runs both on the same simulated camera:
//
//     networkcamera_benchmark orlix|bare WIDTH HEIGHT PACKET RATE SECONDS
//
// Rate 0 is as fast as the camera can. Prints names and numbers in one line: what was lost is told
// by the numbers of the frames, so that it is the same on both sides, whatever each counts itself.
#include <arv.h>
#include <sys/resource.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <vector>

#include "orlixcamera/cameradevice.h"
#include "orlixcamera/cameralayer.h"
#include "orlixcamera/grabresultdata.h"
#include "orlixcamera/installedlayers.h"
#include "orlixcamera/instantcamera.h"

namespace {

using Clock = std::chrono::steady_clock;

constexpr unsigned patience = 5000;  // milliseconds

struct Task {
    int width = 1280;
    int height = 1024;
    int packet = 8000;
    double rate = 0;
    double seconds = 5;
};

enum class Grab : std::uint8_t { Whole, Failed, TimedOut };

// One wait for a frame; the numbers of frames go on without a gap where none is lost.
struct Taken {
    Grab grab = Grab::TimedOut;
    std::uint64_t number = 0;
};

struct Outcome {
    unsigned long whole = 0;
    unsigned long failed = 0;    // came with gaps, or not to their end
    unsigned long unseen = 0;    // never came: lost by the network, or found no buffer
    unsigned long timeOuts = 0;  // waits, not frames
    double seconds = 0;
    double processorSeconds = 0;
};

double processorTime() {
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    const auto seconds = [](const timeval& time) {
        return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) * 1e-6;
    };
    return seconds(usage.ru_utime) + seconds(usage.ru_stime);
}

// A frame that lost its leader has the number that its buffer had before, in the bare loop; it is
// missed where the next one comes.
void count(Outcome& outcome, const Taken& taken, std::uint64_t& lastNumber) {
    if (taken.grab == Grab::TimedOut) {
        ++outcome.timeOuts;
        return;
    }
    if (taken.number <= lastNumber) {
        return;
    }
    ++(taken.grab == Grab::Whole ? outcome.whole : outcome.failed);
    outcome.unseen += taken.number - lastNumber - 1;
    lastNumber = taken.number;
}

// Calls `take` for frames until the time is over, from the first whole one on.
template <typename Take>
Outcome measure(const Task& task, Take take) {
    Taken first = take();
    while (first.grab != Grab::Whole) {
        first = take();
    }
    Outcome outcome;
    std::uint64_t lastNumber = first.number;
    const auto begin = Clock::now();
    const double processor = processorTime();
    const auto end = begin + std::chrono::duration<double>(task.seconds);
    while (Clock::now() < end) {
        count(outcome, take(), lastNumber);
    }
    outcome.seconds = std::chrono::duration<double>(Clock::now() - begin).count();
    outcome.processorSeconds = processorTime() - processor;
    return outcome;
}

Outcome grabWithOrlix(const Task& task) {
    for (auto& transport : Orlix::CreateInstalledLayers()) {
        const auto layer = Orlix::CreateCameraLayer(std::move(transport));
        const auto infos = layer->EnumerateDevices();
        if (infos.empty()) {
            continue;
        }
        const auto device = layer->CreateDevice(infos.front());
        Orlix::CInstantCamera camera(device.get());
        camera.Open();
        Orlix::CIntegerParameter(camera.GetNodeMap(), "Width").SetValue(task.width);
        Orlix::CIntegerParameter(camera.GetNodeMap(), "Height").SetValue(task.height);
        if (task.rate > 0) {
            Orlix::CBooleanParameter(camera.GetNodeMap(), "AcquisitionFrameRateEnable")
                .SetValue(true);
            Orlix::CFloatParameter(camera.GetNodeMap(), "AcquisitionFrameRate").SetValue(task.rate);
        }
        Orlix::CIntegerParameter(camera.GetTLNodeMap(), "PacketSize").SetValue(task.packet);
        camera.StartGrabbing();
        return measure(task, [&] {
            Orlix::CGrabResultPtr result;
            if (!camera.RetrieveResult(patience, result, Orlix::TimeoutHandling_Return)) {
                return Taken{};
            }
            return Taken{result->GrabSucceeded() ? Grab::Whole : Grab::Failed,
                         result->GetFrameId()};
        });
    }
    std::fprintf(stderr, "There is no camera.\n");
    std::exit(1);
}

// As short as it can be; with the same socket and as many buffers.
Outcome grabBare(const Task& task) {
    arv_update_device_list();
    ArvDevice* const device = arv_open_device(nullptr, nullptr);
    if (device == nullptr) {
        std::fprintf(stderr, "There is no camera.\n");
        std::exit(1);
    }
    arv_gv_device_set_stream_options(ARV_GV_DEVICE(device),
                                     ARV_GV_STREAM_OPTION_PACKET_SOCKET_DISABLED);
    arv_gv_device_set_packet_size_adjustment(ARV_GV_DEVICE(device),
                                             ARV_GV_PACKET_SIZE_ADJUSTMENT_NEVER);
    arv_device_set_integer_feature_value(device, "Width", task.width, nullptr);
    arv_device_set_integer_feature_value(device, "Height", task.height, nullptr);
    if (task.rate > 0) {
        arv_device_set_boolean_feature_value(device, "AcquisitionFrameRateEnable", TRUE, nullptr);
        arv_device_set_float_feature_value(device, "AcquisitionFrameRate", task.rate, nullptr);
    }
    arv_gv_device_set_packet_size(ARV_GV_DEVICE(device), task.packet, nullptr);
    ArvStream* const stream = arv_device_create_stream(device, nullptr, nullptr, nullptr);
    const auto payload = static_cast<std::size_t>(
        arv_device_get_integer_feature_value(device, "PayloadSize", nullptr));
    g_object_set(stream, "socket-buffer", ARV_GV_STREAM_SOCKET_BUFFER_FIXED, "socket-buffer-size",
                 static_cast<int>(2 * payload), nullptr);
    constexpr int buffers = 16;
    for (int index = 0; index < buffers; ++index) {
        arv_stream_push_buffer(stream, arv_buffer_new_allocate(payload));
    }
    arv_device_execute_command(device, "AcquisitionStart", nullptr);
    const Outcome outcome = measure(task, [&] {
        ArvBuffer* const buffer = arv_stream_timeout_pop_buffer(stream, patience * 1000ULL);
        if (buffer == nullptr) {
            return Taken{};
        }
        const bool isWhole = arv_buffer_get_status(buffer) == ARV_BUFFER_STATUS_SUCCESS;
        const Taken taken{isWhole ? Grab::Whole : Grab::Failed, arv_buffer_get_frame_id(buffer)};
        arv_stream_push_buffer(stream, buffer);
        return taken;
    });
    arv_device_execute_command(device, "AcquisitionStop", nullptr);
    g_object_unref(stream);
    g_object_unref(device);
    return outcome;
}

}  // namespace

int main(int count, char** arguments) {
    if (count != 7) {
        std::fprintf(stderr,
                     "usage: networkcamera_benchmark orlix|bare WIDTH HEIGHT PACKET RATE "
                     "SECONDS\n");
        return 2;
    }
    const Task task{std::atoi(arguments[2]), std::atoi(arguments[3]), std::atoi(arguments[4]),
                    std::atof(arguments[5]), std::atof(arguments[6])};
    const bool isBare = std::strcmp(arguments[1], "bare") == 0;
    const Outcome outcome = isBare ? grabBare(task) : grabWithOrlix(task);
    std::printf("seconds %.3f whole %lu failed %lu unseen %lu timeouts %lu processor %.4f\n",
                outcome.seconds, outcome.whole, outcome.failed, outcome.unseen, outcome.timeOuts,
                outcome.processorSeconds);
    return 0;
}
