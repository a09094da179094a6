#include "aravis/frame.h"

#include <algorithm>
#include <array>
#include <string>

namespace Orlix::Aravis {

using Transport::FrameFate;
using Transport::PayloadKind;
using Transport::StreamBuffer;

namespace {

struct Reason {
    ArvBufferStatus status;
    FrameFate fate;
    const char* text;
};

constexpr std::array reasons = {
    Reason{ARV_BUFFER_STATUS_SUCCESS, FrameFate::Delivered, ""},
    Reason{ARV_BUFFER_STATUS_MISSING_PACKETS, FrameFate::MissingPackets,
           "Packets of the frame are missing."},
    Reason{ARV_BUFFER_STATUS_WRONG_PACKET_ID, FrameFate::MissingPackets,
           "Packets of the frame came with numbers that don't belong to it."},
    Reason{ARV_BUFFER_STATUS_TIMEOUT, FrameFate::MissingPackets,
           "Packets of the frame are missing."},
    Reason{ARV_BUFFER_STATUS_SIZE_MISMATCH, FrameFate::WrongSize,
           "The frame has more bytes than its buffer."},
    Reason{ARV_BUFFER_STATUS_ABORTED, FrameFate::Aborted,
           "The stream was stopped during the frame."},
};

constexpr Reason lostEnd = {ARV_BUFFER_STATUS_TIMEOUT, FrameFate::TimedOut,
                            "The end of the frame didn't come in time."};
constexpr Reason badTrailer = {ARV_BUFFER_STATUS_SUCCESS, FrameFate::BadTrailer,
                               "The device marked the trailer of the frame as invalid."};
// Some of these Aravis calls complete, others it leaves as empty as it got them; no fate is nearer.
constexpr Reason unknownKind = {ARV_BUFFER_STATUS_CLEARED, FrameFate::BadTrailer,
                                "The kind of the frame's payload is not supported."};
constexpr Reason tooLong = {ARV_BUFFER_STATUS_SUCCESS, FrameFate::WrongSize,
                            "The frame has more bytes than its buffer."};

// Those that Aravis takes apart.
bool isKnown(ArvBufferPayloadType type) {
    return type == ARV_BUFFER_PAYLOAD_TYPE_IMAGE || type == ARV_BUFFER_PAYLOAD_TYPE_CHUNK_DATA ||
           type == ARV_BUFFER_PAYLOAD_TYPE_EXTENDED_CHUNK_DATA ||
           type == ARV_BUFFER_PAYLOAD_TYPE_MULTIPART;
}

// A frame with gaps has failed for them, whatever else there is; `evidence` is of one that has all
// but its end. Aravis says of it that it came too late, or that the next one came.
const Reason& reasonOf(ArvBuffer& source, Evidence evidence) {
    const ArvBufferStatus status = arv_buffer_get_status(&source);
    const bool hasGap =
        status == ARV_BUFFER_STATUS_TIMEOUT || status == ARV_BUFFER_STATUS_MISSING_PACKETS;
    if (hasGap && evidence == Evidence::EndOnly) {
        return lostEnd;
    }
    const bool isWhole = status == ARV_BUFFER_STATUS_SUCCESS;
    if (isWhole && !isKnown(arv_buffer_get_payload_type(&source))) {
        return unknownKind;
    }
    if ((hasGap || isWhole) && evidence == Evidence::TooLong) {
        return tooLong;
    }
    if (isWhole && evidence == Evidence::BadTrailer) {
        return badTrailer;
    }
    const auto* const at = std::find_if(reasons.begin(), reasons.end(), [&](const Reason& reason) {
        return reason.status == status;
    });
    return at != reasons.end() ? *at : unknownKind;
}

// Of a whole frame. Aravis tells of the pictures in these kinds of payload only, and calls all else
// a mistake of its caller.
bool startsWithImage(ArvBuffer& source) {
    const ArvBufferPayloadType payload = arv_buffer_get_payload_type(&source);
    if (!isKnown(payload) || payload == ARV_BUFFER_PAYLOAD_TYPE_CHUNK_DATA ||
        arv_buffer_get_n_parts(&source) == 0) {
        return false;
    }
    const ArvBufferPartDataType type = arv_buffer_get_part_data_type(&source, 0);
    return type >= ARV_BUFFER_PART_DATA_TYPE_2D_IMAGE &&
           type <= ARV_BUFFER_PART_DATA_TYPE_CONFIDENCE_MAP &&
           arv_buffer_get_image_width(&source) > 0;
}

// Of a whole frame. Aravis doesn't count the kind of GigE Vision 1.x.
bool hasChunksIn(ArvBuffer& source) {
    return arv_buffer_has_chunks(&source) != FALSE ||
           arv_buffer_get_payload_type(&source) == ARV_BUFFER_PAYLOAD_TYPE_EXTENDED_CHUNK_DATA;
}

constexpr std::uint64_t lastShortId = 0xFFFF;

}  // namespace

std::uint64_t FrameCounter::Count(std::uint64_t blockId) {
    if (!begun_) {
        begun_ = true;
        ++number_;
    } else if (blockId > lastId_) {
        number_ += blockId - lastId_;
    } else if (blockId < lastId_ && lastId_ <= lastShortId && lastId_ - blockId > lastShortId / 2) {
        number_ += lastShortId - lastId_ + blockId;  // 0 is no number
    } else {
        ++number_;  // the camera has begun to count anew
    }
    lastId_ = blockId;
    return number_;
}

std::uint64_t FrameCounter::CountUnknown() noexcept {
    ++lastId_;
    return ++number_;
}

// Aravis takes the number of a frame from its leader. Who got none leaves what Forget has set,
// which is no number in GigE Vision.
std::uint64_t FrameReader::numberOf(ArvBuffer& source) {
    const std::uint64_t blockId = arv_buffer_get_frame_id(&source);
    return protocol_ == Protocol::GigE && blockId == 0 ? counter_.CountUnknown()
                                                       : counter_.Count(blockId);
}

// Aravis has rounded down. Chunks and events come in ticks, too, and are compared with this.
std::uint64_t FrameReader::ticksOf(std::uint64_t nanoseconds) const noexcept {
    constexpr std::uint64_t second = 1'000'000'000;
    constexpr std::uint64_t fastest = 10 * second;  // a product below has room for it
    if (tickFrequency_ == 0 || tickFrequency_ == second || tickFrequency_ > fastest) {
        return nanoseconds;
    }
    return nanoseconds / second * tickFrequency_ +
           (nanoseconds % second * tickFrequency_ + second - 1) / second;
}

void FrameReader::Read(ArvBuffer& source, StreamBuffer& frame, Evidence evidence) {
    const ArvBufferStatus status = arv_buffer_get_status(&source);
    const Reason& reason = reasonOf(source, evidence);
    frame.fate = reason.fate;
    frame.error = gcstring(reason.text);
    frame.frameId = numberOf(source);
    // Of other kinds Aravis tells the time of this computer.
    const bool hasTime = isKnown(arv_buffer_get_payload_type(&source));
    frame.timestamp = hasTime ? ticksOf(arv_buffer_get_timestamp(&source)) : 0;
    frame.chunkByteOrder = protocol_ == Protocol::GigE ? Transport::ChunkByteOrder::BigEndian
                                                       : Transport::ChunkByteOrder::LittleEndian;
    if (status == ARV_BUFFER_STATUS_SUCCESS) {
        geometry_ = geometryOf(source);
        std::size_t size = 0;
        static_cast<void>(arv_buffer_get_data(&source, &size));
        frame.filled = size;
    } else {
        // Nobody counts the bytes of a frame with gaps.
        frame.filled = std::min(payloadSize_, frame.capacity);
    }
    describe(frame);
}

FrameReader::Geometry FrameReader::geometryOf(ArvBuffer& source) {
    Geometry geometry;
    const bool hasChunks = hasChunksIn(source);
    const bool hasImage = startsWithImage(source);
    if (hasChunks) {
        geometry.kind = hasImage ? PayloadKind::ImageWithChunks : PayloadKind::ChunksOnly;
    }
    if (!hasImage) {
        return geometry;
    }
    gint x = 0;
    gint y = 0;
    gint width = 0;
    gint height = 0;
    gint paddingX = 0;
    gint paddingY = 0;
    arv_buffer_get_image_region(&source, &x, &y, &width, &height);
    arv_buffer_get_image_padding(&source, &paddingX, &paddingY);
    geometry.pixelType = static_cast<EPixelType>(arv_buffer_get_image_pixel_format(&source));
    geometry.width = static_cast<std::uint32_t>(width);
    geometry.height = static_cast<std::uint32_t>(height);
    geometry.offsetX = static_cast<std::uint32_t>(x);
    geometry.offsetY = static_cast<std::uint32_t>(y);
    geometry.paddingX = static_cast<std::size_t>(std::max(paddingX, 0));
    return geometry;
}

void FrameReader::describe(StreamBuffer& frame) const {
    frame.kind = geometry_.kind;
    frame.pixelType = geometry_.pixelType;
    frame.width = geometry_.width;
    frame.height = geometry_.height;
    frame.offsetX = geometry_.offsetX;
    frame.offsetY = geometry_.offsetY;
    frame.paddingX = geometry_.paddingX;
}

}  // namespace Orlix::Aravis
