// The sockets of the simulated camera, and what the system knows of their network. Owners of
// descriptors; one thread at a time.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <utility>

#include "protocol.h"

namespace Orlix::Camsim {

// A descriptor that is closed with its object.
class OwnedFile {
public:
    explicit OwnedFile(int file = -1) noexcept : file_(file) {}
    ~OwnedFile();
    OwnedFile(OwnedFile&& other) noexcept : file_(std::exchange(other.file_, -1)) {}
    OwnedFile& operator=(OwnedFile&& other) noexcept {
        std::swap(file_, other.file_);
        return *this;
    }
    [[nodiscard]] int Get() const noexcept { return file_; }

private:
    int file_;
};

enum class Sharing : std::uint8_t { Alone, WithOthers };

class Socket : public OwnedFile {
public:
    Socket() = default;
    // Throws RuntimeException that names the address.
    Socket(const Endpoint& endpoint, Sharing sharing);
    // Hears only what comes in on that interface; where the system doesn't allow it, everything.
    void BindToInterface(const std::string& name) const;
    void AllowBroadcast() const;
    [[nodiscard]] Endpoint GetEndpoint() const;
};

// Wakes a wait for sockets from another thread.
class EventFile : public OwnedFile {
public:
    EventFile();
    void Raise() const noexcept;
    void Take() const noexcept;
};

struct Interface {
    std::string name;
    std::uint32_t subnetMask = 0;
};

// The interface whose network has that address; nothing if there is none.
[[nodiscard]] std::optional<Interface> FindInterface(std::uint32_t address);
// Throws InvalidArgumentException unless the text is an address such as 127.0.0.1.
[[nodiscard]] std::uint32_t ParseAddress(const std::string& text);

}  // namespace Orlix::Camsim
