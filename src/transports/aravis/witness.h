// Sees what Aravis keeps to itself of a network stream. A second socket at the stream's own address
// gets those few packets that tell it, chosen by the kernel; a thread notes them and sends them on
// to Aravis in a form that ends their frame at once: trailers that the device marked as bad,
// packets beyond the end of a buffer, and, while no buffer is queued, all that tells of a frame. A
// sound frame that finds a buffer passes it by. Any thread may call.
#pragma once

#include <cstdint>
#include <deque>
#include <memory>
#include <mutex>
#include <span>
#include <thread>
#include <vector>

#include "aravis/frame.h"
#include "aravis/numberset.h"
#include "aravis/packetfilter.h"
#include "aravis/streamsocket.h"

namespace Orlix::Aravis {

class Witness {
public:
    // Null where the system doesn't let two sockets share an address. `socket` outlives it.
    [[nodiscard]] static std::unique_ptr<Witness> Open(const StreamSocket& socket,
                                                       const StreamShape& shape);
    ~Witness();
    Witness(const Witness&) = delete;
    Witness& operator=(const Witness&) = delete;

    // Whether the stream has a buffer for the next frame.
    void SetBuffers(Buffers buffers) noexcept;
    // A frame has got a buffer. It may be in the midst of it, with its leader behind.
    void NoteStart();
    // What was seen of a frame that has ended; forgets it.
    [[nodiscard]] Evidence TakeEvidence(std::uint64_t block);
    // The frames between the last one that was handed out and this one that found no buffer; 0 for
    // a frame without a leader. What waited in Aravis' own socket while the last buffer was taken
    // is not seen here: `hadUnderruns` tells that packets found none since the last call.
    [[nodiscard]] std::uint64_t TakeMissedBefore(std::uint64_t block, bool hadUnderruns);
    // Those behind it, except for `held`, which did find one; 0 for one without a leader. The
    // newest is in doubt until the next one comes or the thread has ended.
    [[nodiscard]] std::uint64_t CountMissed(std::span<const std::uint64_t> held);
    // Takes what lies in its socket, and ends the thread.
    void End() noexcept;

private:
    struct Note {
        std::uint64_t block = 0;
        Evidence evidence = Evidence::None;
    };
    struct Packet;

    Witness(const StreamSocket& socket, const StreamShape& shape);
    [[nodiscard]] bool open();
    void attach(Buffers buffers) noexcept;
    void run() noexcept;
    void take(std::span<std::uint8_t> bytes);
    void note(const Packet& packet, bool isBad, bool isLong);
    void addUnseen(std::uint64_t lastHeld);
    [[nodiscard]] std::uint64_t numberOf(std::uint64_t block, std::uint64_t near) const noexcept;

    const StreamSocket& stream_;
    const StreamShape shape_;
    const std::vector<sock_filter> whenQueued_;
    const std::vector<sock_filter> whenNone_;
    int socket_ = -1;
    int wake_ = -1;
    std::thread thread_;

    std::mutex mutex_;
    Buffers buffers_ = Buffers::Queued;
    bool hasLongIds_ = false;
    bool hasEnded_ = false;
    std::deque<Note> notes_;
    NumberSet missed_;  // frames that came while no buffer was queued
    std::uint64_t newest_ = 0;
    // For each frame that has a buffer and was not taken: the newest of those without by then,
    // which is the frame itself if the buffer came in the midst of it.
    std::deque<std::uint64_t> starts_;
    std::uint64_t lastTaken_ = 0;
};

}  // namespace Orlix::Aravis
