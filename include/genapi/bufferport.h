// CBufferPort, the common part of ports whose registers lie in bytes that come and go: the chunks
// of a frame and the messages of a device.
#pragma once

#include <cstdint>
#include <vector>

#include "genapi/portimpl.h"

namespace GenApi {

// Serves one map. Changes of its bytes take the lock of that map, so any thread may make them; the
// nodes on it are invalidated, with one round of callbacks. Without bytes the port is not
// available, and so is all that lies on it. An access outside the bytes is an OutOfRangeException
// that names the port, the address and the lengths.
class GENAPI_API CBufferPort : public CPortImpl {
public:
    CBufferPort();
    ~CBufferPort() override;

    [[nodiscard]] EAccessMode GetAccessMode() const override;
    void Read(void* pBuffer, std::int64_t Address, std::int64_t Length) override;
    void Write(const void* pBuffer, std::int64_t Address, std::int64_t Length) override;
    // In bytes, 0 without any.
    [[nodiscard]] std::int64_t GetLength() const { return length_; }

protected:
    enum class Keep { reference, copy };

    // A reference must stay valid until the next change. Copies reuse their memory.
    void setBytes(std::uint8_t* bytes, std::int64_t length, Keep keep);
    void clearBytes();
    [[nodiscard]] bool hasBytes() const { return bytes_ != nullptr; }
    [[nodiscard]] bool isCopy() const { return hasBytes() && bytes_ == copy_.data(); }
    // Where an access begins in the bytes; OutOfRangeException unless it lies in them as a whole.
    [[nodiscard]] virtual std::int64_t locate(const char* what, std::int64_t address,
                                              std::int64_t length) const;
    [[noreturn]] void refuse(const char* what, std::int64_t address, std::int64_t length) const;

private:
    std::uint8_t* bytes_ = nullptr;
    std::int64_t length_ = 0;
    std::vector<std::uint8_t> copy_;
};

}  // namespace GenApi
