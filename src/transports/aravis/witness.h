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

    // Whether the stream has a buffer for the next frame. What came here until then is sent on
    // before: a frame's end must not come behind the beginning of the next.
    void SetBuffers(Buffers buffers) noexcept;
    // A frame has got a buffer. It may be in the midst of it, with its leader behind. `underruns`
    // packets of the stream have found none so far.
    void NoteStart(std::uint64_t underruns);
    // What was seen of a frame that has ended; forgets it and those before.
    [[nodiscard]] Evidence TakeEvidence(std::uint64_t block);
    // The frames between the last one that was handed out and this one that found no buffer; those
    // before a frame without a leader are told with the next that has one. What waited in Aravis'
    // own socket while the last buffer was taken is not seen here, but in the underruns between the
    // starts of both.
    [[nodiscard]] std::uint64_t TakeMissedBefore(std::uint64_t block);
    // Those behind it, except for `held`, which did find one; 0 for one without a leader. The
    // newest is in doubt until the next one comes or the thread has ended.
    [[nodiscard]] std::uint64_t CountMissed(std::span<const std::uint64_t> held);
    // Takes what lies in its socket, and ends the thread.
    void End() noexcept;

private:
    struct Note {
        std::uint64_t number = 0;
        Evidence evidence = Evidence::None;
    };
    // Of a frame that has a buffer.
    struct Start {
        // Of those without by then: the frame itself if the buffer came in the midst of it.
        std::uint64_t newest = 0;
        std::uint64_t underruns = 0;
    };
    struct Packet;

    Witness(const StreamSocket& socket, const StreamShape& shape);
    [[nodiscard]] bool open();
    void attach(Buffers buffers) noexcept;
    void run() noexcept;
    void sendOn() noexcept;
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

    std::mutex receive_;  // bytes_, and the order of packets; outside of mutex_
    std::vector<std::uint8_t> bytes_;

    std::mutex mutex_;
    Buffers buffers_ = Buffers::Queued;
    bool hasLongIds_ = false;
    bool hasEnded_ = false;
    std::deque<Note> notes_;
    NumberSet missed_;  // frames that came while no buffer was queued
    std::uint64_t newest_ = 0;
    std::deque<Start> starts_;     // of those that were not taken
    std::vector<Start> unknown_;   // of those without a leader behind the last one that was taken
    std::uint64_t lastTaken_ = 0;  // with a leader
    std::uint64_t underrunsOfLast_ = 0;
};

}  // namespace Orlix::Aravis
