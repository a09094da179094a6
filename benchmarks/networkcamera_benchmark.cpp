// One acquisition of a camera on the network, through this library or with a bare loop on Aravis,
// for scripts/camera-speed.sh, which runs both on the same simulated camera:
//
//     networkcamera_benchmark orlix|bare WIDTH HEIGHT PACKET SECONDS
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

struct Task {
    int width = 1280;
    int height = 1024;
    int packet = 8000;
    double seconds = 5;
};

struct Outcome {
    unsigned long whole = 0;
    unsigned long failed = 0;
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

// Calls `take` for frames until the time is over; it returns whether the frame was whole.
template <typename Take>
Outcome measure(const Task& task, Take take) {
    Outcome outcome;
    const auto begin = Clock::now();
    const double processor = processorTime();
    const auto end = begin + std::chrono::duration<double>(task.seconds);
    while (Clock::now() < end) {
        ++(take() ? outcome.whole : outcome.failed);
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
        Orlix::CIntegerParameter(camera.GetTLNodeMap(), "PacketSize").SetValue(task.packet);
        camera.StartGrabbing();
        return measure(task, [&] {
            Orlix::CGrabResultPtr result;
            return camera.RetrieveResult(5000, result) && result->GrabSucceeded();
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
        ArvBuffer* const buffer = arv_stream_timeout_pop_buffer(stream, 5000000);
        if (buffer == nullptr) {
            return false;
        }
        const bool isWhole = arv_buffer_get_status(buffer) == ARV_BUFFER_STATUS_SUCCESS;
        arv_stream_push_buffer(stream, buffer);
        return isWhole;
    });
    arv_device_execute_command(device, "AcquisitionStop", nullptr);
    g_object_unref(stream);
    g_object_unref(device);
    return outcome;
}

}  // namespace

int main(int count, char** arguments) {
    if (count != 6) {
        std::fprintf(stderr,
                     "usage: networkcamera_benchmark orlix|bare WIDTH HEIGHT PACKET SECONDS\n");
        return 2;
    }
    const Task task{std::atoi(arguments[2]), std::atoi(arguments[3]), std::atoi(arguments[4]),
                    std::atof(arguments[5])};
    const bool isBare = std::strcmp(arguments[1], "bare") == 0;
    const Outcome outcome = isBare ? grabBare(task) : grabWithOrlix(task);
    std::printf(
        "%-6s %4dx%-4d  %7.1f frames/s  %6lu whole  %4lu failed  %5.1f ms processor a frame\n",
        arguments[1], task.width, task.height, static_cast<double>(outcome.whole) / outcome.seconds,
        outcome.whole, outcome.failed,
        1000 * outcome.processorSeconds / static_cast<double>(outcome.whole + outcome.failed));
    return 0;
}
