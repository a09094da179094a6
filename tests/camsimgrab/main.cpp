// Grabs frames from the first camera that the Aravis library finds and prints how many came whole,
// how many didn't, and how many had the chunk of their number: camsim_grab FRAMES [chunks]
#include <arv.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace {

constexpr guint64 frameIdChunk = 0x00010001;
constexpr guint64 waitMicroseconds = 20'000'000;

struct Counts {
    int completed = 0;
    int failed = 0;
    int withChunk = 0;
};

bool hasFrameNumber(ArvBuffer* buffer) {
    gsize size = 0;
    return arv_buffer_has_chunks(buffer) != 0 &&
           arv_buffer_get_chunk_data(buffer, frameIdChunk, &size) != nullptr && size == 8;
}

// On a machine that builds and tests other things meanwhile, either side may be kept waiting for
// long: what of a frame is late is waited for, and what comes meanwhile has room.
void bePatient(ArvStream* stream) {
    constexpr guint retention = 2'000'000;  // microseconds
    constexpr gint room = 4 << 20;
    g_object_set(stream, "frame-retention", retention, "socket-buffer",
                 ARV_GV_STREAM_SOCKET_BUFFER_FIXED, "socket-buffer-size", room, nullptr);
}

Counts grab(ArvCamera* camera, ArvStream* stream, int frames) {
    Counts counts;
    const guint payload = arv_camera_get_payload(camera, nullptr);
    for (int index = 0; index < frames; ++index) {
        arv_stream_push_buffer(stream, arv_buffer_new(payload, nullptr));
    }
    arv_camera_start_acquisition(camera, nullptr);
    while (counts.completed + counts.failed < frames) {
        ArvBuffer* const buffer = arv_stream_timeout_pop_buffer(stream, waitMicroseconds);
        if (buffer == nullptr) {
            break;
        }
        const bool whole = arv_buffer_get_status(buffer) == ARV_BUFFER_STATUS_SUCCESS;
        ++(whole ? counts.completed : counts.failed);
        counts.withChunk += whole && hasFrameNumber(buffer) ? 1 : 0;
        arv_stream_push_buffer(stream, buffer);
    }
    arv_camera_stop_acquisition(camera, nullptr);
    return counts;
}

}  // namespace

int main(int argc, char** argv) {
    if (argc < 2) {
        return 2;
    }
    const bool chunks = argc > 2 && std::strcmp(argv[2], "chunks") == 0;
    ArvCamera* const camera = arv_camera_new(nullptr, nullptr);
    if (camera == nullptr) {
        std::puts("no camera");
        return 1;
    }
    ArvDevice* const device = arv_camera_get_device(camera);
    arv_device_set_integer_feature_value(device, "Width", 640, nullptr);
    arv_device_set_integer_feature_value(device, "Height", 480, nullptr);
    // Slow enough for a machine that builds and tests other things meanwhile.
    arv_device_set_boolean_feature_value(device, "AcquisitionFrameRateEnable", TRUE, nullptr);
    arv_device_set_float_feature_value(device, "AcquisitionFrameRate", 20, nullptr);
    if (chunks) {
        arv_device_set_boolean_feature_value(device, "ChunkModeActive", TRUE, nullptr);
        arv_device_set_string_feature_value(device, "ChunkSelector", "FrameID", nullptr);
        arv_device_set_boolean_feature_value(device, "ChunkEnable", TRUE, nullptr);
    }
    ArvStream* const stream = arv_camera_create_stream(camera, nullptr, nullptr, nullptr);
    bePatient(stream);
    const Counts counts = grab(camera, stream, std::atoi(argv[1]));
    std::printf("%d %d %d\n", counts.completed, counts.failed, counts.withChunk);
    g_object_unref(stream);
    g_object_unref(camera);
    return 0;
}
