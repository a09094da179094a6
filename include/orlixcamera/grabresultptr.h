// A counted handle of a grab result. The last one that lets go gives the buffer back to the stream,
// on whatever thread, or frees it where the stream is gone.
#pragma once

#include <memory>
#include <utility>

#include "orlixcamera/api.h"
#include "orlixcamera/grabresultdata.h"

namespace Orlix {

// Copies are independent: each may be used by another thread. Nothing is allocated by any of them.
class ORLIXCAMERA_API CGrabResultPtr {
public:
    CGrabResultPtr() noexcept = default;
    explicit CGrabResultPtr(std::shared_ptr<CGrabResultData> data) noexcept
        : data_(std::move(data)) {}

    [[nodiscard]] bool IsValid() const noexcept { return data_ != nullptr; }
    [[nodiscard]] explicit operator bool() const noexcept { return IsValid(); }
    // LogicalErrorException without a result.
    CGrabResultData* operator->() const { return &Checked(); }
    CGrabResultData& operator*() const { return Checked(); }

    void Release() noexcept { data_.reset(); }
    // True if no other handle, and no image, refers to the result.
    [[nodiscard]] bool IsUnique() const noexcept { return data_.use_count() == 1; }
    // For an image that refers to the buffer.
    [[nodiscard]] const std::shared_ptr<CGrabResultData>& GetOwner() const noexcept {
        return data_;
    }

private:
    [[nodiscard]] CGrabResultData& Checked() const;

    std::shared_ptr<CGrabResultData> data_;
};

}  // namespace Orlix
