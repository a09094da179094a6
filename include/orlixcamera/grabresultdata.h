// One frame as an instant camera hands it over: the buffer, what is known of its content, and its
// chunks. Held through CGrabResultPtr.
#pragma once

#include <cstddef>
#include <cstdint>

#include "gcbase/gcstring.h"
#include "orlixcamera/api.h"
#include "orlixcamera/pixeltype.h"

namespace GenApi {
class INodeMap;
}

namespace Orlix {

using GenICam::gcstring;
namespace Detail {
class FrameSlot;
}

// The buffer is not filled again while a result refers to it; it outlives grabbing, the device and
// the camera. Any thread may call; the content of the buffer is for its holders to guard.
class ORLIXCAMERA_API CGrabResultData {
public:
    CGrabResultData(const CGrabResultData&) = delete;
    CGrabResultData& operator=(const CGrabResultData&) = delete;

    // False for a frame that did not arrive as it should. Its buffer may hold a part of it, and
    // what it says of the content may be wrong.
    [[nodiscard]] bool GrabSucceeded() const noexcept;
    // Why it failed, where the transport tells; empty if it succeeded.
    [[nodiscard]] gcstring GetErrorDescription() const;

    // PixelType_Undefined, which is -1, and sizes of 0 where the frame has no image.
    [[nodiscard]] EPixelType GetPixelType() const noexcept;
    [[nodiscard]] std::uint32_t GetWidth() const noexcept;
    [[nodiscard]] std::uint32_t GetHeight() const noexcept;
    [[nodiscard]] std::uint32_t GetOffsetX() const noexcept;
    [[nodiscard]] std::uint32_t GetOffsetY() const noexcept;
    // Bytes behind the pixels of each row.
    [[nodiscard]] std::size_t GetPaddingX() const noexcept;
    [[nodiscard]] void* GetBuffer() const noexcept;
    // The bytes that may be touched at GetBuffer().
    [[nodiscard]] std::size_t GetBufferSize() const noexcept;
    // The bytes that the camera sent, with chunks.
    [[nodiscard]] std::size_t GetPayloadSize() const noexcept;
    // The bytes of the image alone; 0 without one.
    [[nodiscard]] std::size_t GetImageSize() const;

    // Counts the camera's frames from 1 with each start; gaps are frames that were lost.
    [[nodiscard]] std::uint64_t GetFrameId() const noexcept;
    // Ticks of the camera's clock.
    [[nodiscard]] std::uint64_t GetTimeStamp() const noexcept;
    // Of the run that it was taken in, see CInstantCamera::GetRunNumber. A handler may be called so
    // late that the camera is in another one.
    [[nodiscard]] std::uint64_t GetRunNumber() const noexcept;
    // Counts what this camera object hands over, from 1 with each StartGrabbing.
    [[nodiscard]] std::uint64_t GetImageNumber() const noexcept;
    // Frames left out right before this one, as the strategy asks.
    [[nodiscard]] std::size_t GetNumberOfSkippedImages() const noexcept;

    // Whether the frame succeeded and has chunks that can be taken apart.
    [[nodiscard]] bool IsChunkDataAvailable() const noexcept;
    // The features of the chunks with their values of this frame; a chunk that the frame lacks, or
    // all of them, are not available. For as long as a pointer holds this result.
    [[nodiscard]] GenApi::INodeMap& GetChunkDataNodeMap() const;

private:
    friend class Detail::FrameSlot;
    explicit CGrabResultData(Detail::FrameSlot& slot) noexcept : slot_(slot) {}
    ~CGrabResultData() = default;

    Detail::FrameSlot& slot_;
};

}  // namespace Orlix
