// A layer of emulated cameras with the first one open, its features and its stream.
#pragma once

#include <deque>
#include <memory>
#include <thread>
#include <vector>

#include "orlixcamera/emulated/featuremap.h"
#include "orlixcamera/emulated/layer.h"

namespace EmulatedTest {

namespace Transport = Orlix::Transport;
using Orlix::Emulated::Layer;

inline constexpr std::chrono::seconds patience{20};

struct OpenCamera {
    explicit OpenCamera(Layer& layer, std::size_t index = 0)
        : device(layer.CreateDevice(layer.Enumerate().at(index))) {
        device->Open();
    }

    std::shared_ptr<Transport::IDevice> device;
    FeatureMap<Transport::IDevice> features{*device->GetDescription(), *device};
};

// A small picture at a high rate, and a stream of it.
struct StreamingCamera : OpenCamera {
    explicit StreamingCamera(Layer& layer, std::size_t index = 0) : OpenCamera(layer, index) {
        features.integer("Width")->SetValue(64);
        features.integer("Height")->SetValue(48);
        features.set("ExposureTime", "50");
        stream = device->OpenStream();
    }

    void queue(std::size_t count, std::size_t capacity) {
        for (std::size_t index = 0; index < count; ++index) {
            memory.emplace_back(capacity);
            Transport::StreamBuffer& buffer = buffers.emplace_back();
            buffer.data = memory.back().data();
            buffer.capacity = capacity;
            stream->Queue(buffer);
        }
    }
    [[nodiscard]] std::size_t payload() const {
        return static_cast<std::size_t>(features.integer("PayloadSize")->GetValue());
    }
    void start(std::size_t bufferCount) {
        queue(bufferCount, payload());
        stream->Start(payload());
        features.execute("AcquisitionStart");
    }
    [[nodiscard]] Transport::StreamBuffer* wait() const { return stream->Wait(patience); }
    // The acquisition's own end, which no call tells.
    void waitForEnd() const {
        while (features.integer("Acquiring")->GetValue() != 0) {
            std::this_thread::yield();
        }
    }
    std::size_t takeBackAll() const {
        std::size_t count = 0;
        while (stream->TakeBack() != nullptr) {
            ++count;
        }
        return count;
    }

    // References to their members stay valid while they grow.
    std::deque<std::vector<std::uint8_t>> memory;
    std::deque<Transport::StreamBuffer> buffers;
    std::unique_ptr<Transport::IStream> stream;
};

}  // namespace EmulatedTest
