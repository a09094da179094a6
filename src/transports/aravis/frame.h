// What Aravis says of a buffer that it has filled, in the terms of this library.
#pragma once

#include <cstdint>

#include "aravis/found.h"
#include "aravis/glib.h"
#include "orlixcamera/transport/transport.h"

namespace Orlix::Aravis {

// What is known of a frame beside Aravis' word. Where two hold, the later one is told.
enum class Evidence : std::uint8_t {
    None,
    EndOnly,     // nothing but its end is missing
    BadTrailer,  // the device marked it as invalid
    TooLong,     // it has more bytes than its buffer
};

// The numbers of the frames of one acquisition, from 1. Numbers of 16 bits begin anew at 1 after
// 65535; cameras may begin with any.
class FrameCounter {
public:
    // The number of the frame of that id; gaps are frames that were lost.
    [[nodiscard]] std::uint64_t Count(std::uint64_t blockId);
    // A frame whose number got lost is taken for the one behind the last.
    [[nodiscard]] std::uint64_t CountUnknown() noexcept;

private:
    bool begun_ = false;
    std::uint64_t lastId_ = 0;
    std::uint64_t number_ = 0;
};

// Describes frames of one stream. The pictures of a failed buffer may be those that the memory had
// before, or none; then the geometry is that of the last good frame.
class FrameReader {
public:
    FrameReader(Protocol protocol, std::size_t payloadSize)
        : protocol_(protocol), payloadSize_(payloadSize) {}

    // Ticks a second of the device's clock, which Aravis has made nanoseconds of; 0 if the device
    // tells none, and then what Aravis says stays.
    void SetTickFrequency(std::uint64_t frequency) noexcept { tickFrequency_ = frequency; }
    // Fills in all but the memory and its user.
    void Read(ArvBuffer& source, Transport::StreamBuffer& frame, Evidence evidence);
    // To be called for a buffer that Aravis gets anew; then IsUsed tells whether a frame began in
    // it.
    static void Forget(ArvBuffer& source) {
        arv_buffer_set_timestamp(&source, 0);
        arv_buffer_set_frame_id(&source, 0);
    }
    [[nodiscard]] static bool IsUsed(ArvBuffer& source) {
        return arv_buffer_get_frame_id(&source) != 0;
    }

private:
    struct Geometry {
        EPixelType pixelType = PixelType_Undefined;
        std::uint32_t width = 0;
        std::uint32_t height = 0;
        std::uint32_t offsetX = 0;
        std::uint32_t offsetY = 0;
        std::size_t paddingX = 0;
        Transport::PayloadKind kind = Transport::PayloadKind::Image;
    };

    [[nodiscard]] static Geometry geometryOf(ArvBuffer& source);
    void describe(Transport::StreamBuffer& frame) const;
    [[nodiscard]] std::uint64_t numberOf(ArvBuffer& source);
    [[nodiscard]] std::uint64_t ticksOf(std::uint64_t nanoseconds) const noexcept;

    const Protocol protocol_;
    const std::size_t payloadSize_;
    std::uint64_t tickFrequency_ = 0;
    Geometry geometry_;
    FrameCounter counter_;
};

}  // namespace Orlix::Aravis
