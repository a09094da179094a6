// The registers of the emulated camera as commands of GVCP reach them: any words, also parts of a
// register, while the camera itself knows whole registers only. One thread at a time.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

#include "orlixcamera/emulated/camera.h"
#include "protocol.h"

namespace Orlix::Camsim {

// Addresses are those of the emulated camera. Nothing is answered where the camera lets the time
// run out, or was unplugged meanwhile.
class CameraMemory {
public:
    explicit CameraMemory(std::shared_ptr<Emulated::Camera> camera) : camera_(std::move(camera)) {}

    // Without a session it reads as one who only watches.
    [[nodiscard]] std::optional<Status> Read(Emulated::Session session, std::uint32_t address,
                                             MutableBytes out);
    // A text that comes in pieces is taken over with its terminating zero or its last byte.
    [[nodiscard]] std::optional<Status> Write(Emulated::Session session, std::uint32_t address,
                                              Bytes bytes);

private:
    struct Extent {
        std::uint32_t address = 0;
        std::uint32_t size = 0;
        bool isText = false;
        bool isReadable = true;
        bool isWritable = false;
    };

    [[nodiscard]] static std::optional<Extent> find(std::uint32_t address);
    [[nodiscard]] std::vector<std::uint8_t> load(Emulated::Session session, const Extent& extent);
    [[nodiscard]] Status writePart(Emulated::Session session, const Extent& extent,
                                   std::uint32_t offset, Bytes bytes);
    void writeText(Emulated::Session session, const Extent& extent, std::uint32_t offset,
                   Bytes bytes);
    void writeNumber(Emulated::Session session, const Extent& extent, std::uint32_t offset,
                     Bytes bytes);

    const std::shared_ptr<Emulated::Camera> camera_;
    // The text that is being written, until its end has come.
    std::uint32_t pendingAddress_ = 0;
    std::vector<std::uint8_t> pending_;
};

}  // namespace Orlix::Camsim
