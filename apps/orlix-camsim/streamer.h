// The stream channel: a thread takes the frames of the emulated camera and sends them as blocks, as
// long as a program has opened the channel; packets that are asked for again come from the history.
// The functions belong to the thread of the server.
#pragma once

#include <condition_variable>
#include <cstdint>
#include <memory>
#include <mutex>
#include <optional>
#include <thread>
#include <vector>

#include "block.h"
#include "device.h"
#include "gvcp.h"
#include "orlixcamera/emulated/camera.h"
#include "orlixcamera/emulated/picture.h"
#include "packetsender.h"
#include "statistics.h"
#include "wirefaults.h"

namespace Orlix::Camsim {

// What a frame with chunks carries: the picture as the first chunk, or no picture at all.
enum class ChunkPayload : std::uint8_t { WithPicture, Alone };

struct StreamOptions {
    std::size_t keptBlocks = 16;        // for resends
    std::uint64_t firstBlock = 1;       // number of the first frame of a channel
    std::uint32_t linkMegabits = 1000;  // a second; 0 for a link without a limit
    Segmenting segmenting = Segmenting::Off;
    ChunkPayload chunkPayload = ChunkPayload::WithPicture;
    std::optional<std::uint16_t> payloadType;  // told instead of that of the frame
    std::uint64_t tickFrequency = nanosecondsPerSecond;
};

class Streamer final : public IResender {
public:
    // The socket stays the caller's.
    Streamer(std::shared_ptr<Emulated::Camera> camera, int socket, const StreamOptions& options,
             const WireFaults& faults, const Silence& silence, Statistics& statistics);
    ~Streamer() override;

    // Frames are numbered from the start again when the channel is opened.
    void Set(Emulated::Session session, const StreamSettings& settings);
    void FireTestPacket(const StreamSettings& settings);
    void Resend(const ResendRequest& request) override;

private:
    using Camera = Emulated::Camera;

    void stop() noexcept;
    void run(Emulated::Session session);
    void sendFrame(const Emulated::FrameOrder& order);
    void fill(Block& block, const Emulated::FrameOrder& order);
    void describe(Block& block, const Emulated::FrameOrder& order) const;
    static void describePicture(Block& block, const Emulated::FrameOrder& order);
    void spoil(Block& block, const Emulated::FrameOrder& order);
    void planSteps(const Block& block, const Emulated::FrameOrder& order);
    void dropMiddle(const Block& block, std::uint64_t count);
    void transmit(Block& block, const StreamSettings& settings);
    void napUntil(Clock::time_point time);
    void sendSteps(Block& block, std::size_t first, std::size_t end);
    [[nodiscard]] std::chrono::nanoseconds timeOf(const Block& block,
                                                  std::uint32_t packet) const noexcept;
    [[nodiscard]] bool hasPicture(const Emulated::FrameOrder& order) const noexcept;
    [[nodiscard]] static Status statusOfResent(const Block& block, std::uint32_t packet) noexcept;
    void deny(const ResendRequest& request);
    [[nodiscard]] StreamSettings settings() const;
    [[nodiscard]] std::uint64_t nextId(std::uint64_t id, bool longIds) const noexcept;

    const std::shared_ptr<Camera> camera_;
    const int socket_;
    const StreamOptions options_;
    const WireFaults& faults_;
    const Silence& silence_;
    Statistics& statistics_;
    History history_;

    mutable std::mutex mutex_;
    std::condition_variable stopping_;
    bool isStopping_ = false;
    StreamSettings settings_;

    std::thread thread_;
    Emulated::Session session_ = 0;  // that the thread runs for
    bool stop_ = false;              // under the camera's lock while the thread runs

    // The thread's own.
    Emulated::Picture picture_;
    std::uint64_t blockId_ = 0;
    PacketSender sender_;
    std::vector<WireStep> steps_;
    std::vector<OutgoingPacket> outgoing_;
    Clock::time_point nextPacket_;

    // The server's thread's.
    PacketSender resender_;
    std::vector<OutgoingPacket> again_;
    std::uint64_t attempt_ = 0;
};

}  // namespace Orlix::Camsim
