// What all node-map ports over a parameter port share: they hold the parameter, observe it for as
// long as they live, and pass its changes on to the node map.
#pragma once

#include <cstdint>
#include <cstring>
#include <memory>
#include <utility>

#include "anythingtonodemapadapter/basicnodemapport.h"
#include "anythingtonodemapadapter/parameterports.h"

namespace AnythingToNodeMapAdapter::Detail {

// Every register but a text is one 64-bit word, little endian like the platform.
constexpr std::int64_t wordSize = 8;

inline void storeWord(void* buffer, std::int64_t word) {
    std::memcpy(buffer, &word, static_cast<std::size_t>(wordSize));
}

inline void storeFlag(void* buffer, bool flag) {
    storeWord(buffer, flag ? 1 : 0);
}

[[nodiscard]] inline std::int64_t loadWord(const void* buffer) {
    std::int64_t word = 0;
    std::memcpy(&word, buffer, static_cast<std::size_t>(wordSize));
    return word;
}

inline void storeZeros(void* buffer, std::int64_t length) {
    if (length > 0) {
        std::memset(buffer, 0, static_cast<std::size_t>(length));
    }
}

// The block of a parameter whose value is a single word.
namespace WordBlock {
constexpr std::int64_t valueOffset = 0;
constexpr std::int64_t availabilityOffset = 8;
constexpr std::int64_t lockOffset = 16;
constexpr std::int64_t size = 24;
}  // namespace WordBlock

// A read of such a block. `value` gives the word of the value, and is called for that register
// only.
template <typename Value>
void readWordBlock(const IBasicDataParameterPort* port, void* buffer, std::int64_t address,
                   std::int64_t length, const Value& value) {
    if (port == nullptr || length != wordSize) {
        storeZeros(buffer, length);
        return;
    }
    switch (address) {
        case WordBlock::valueOffset:
            return storeWord(buffer, value());
        case WordBlock::availabilityOffset:
            return storeFlag(buffer, port->isAvailable());
        case WordBlock::lockOffset:
            return storeFlag(buffer, !port->isWritable());
        default:
            return;
    }
}

// Whether a write reaches the value of a block that begins with one word; all others are ignored.
[[nodiscard]] inline bool isWordWrite(const IBasicDataParameterPort* port, std::int64_t address,
                                      std::int64_t length) {
    return port != nullptr && length == wordSize && address == WordBlock::valueOffset;
}

// `Interface` is the parameter port's. A null parameter port is allowed: such a port reads zeros,
// ignores writes and describes nothing.
template <typename Interface>
class ANYTHINGTONODEMAPADAPTER_API ParameterNodeMapPort : public CBasicNodeMapPort,
                                                          public IParameterPortObserver {
public:
    ~ParameterNodeMapPort() override {
        if (port_) {
            port_->setObserver(nullptr);
        }
    }

    [[nodiscard]] const char* getName() const override { return port_ ? port_->getName() : ""; }

    void onParameterChanged(IBasicParameterPort& /*port*/) override { invalidate(); }

    // Takes the parameter's changes, whoever took them before.
    void observe() {
        if (port_) {
            port_->setObserver(this);
        }
    }

protected:
    ParameterNodeMapPort(std::shared_ptr<Interface> port, std::int32_t mergePriority)
        : CBasicNodeMapPort(mergePriority), port_(std::move(port)) {
        observe();
    }

    [[nodiscard]] const std::shared_ptr<Interface>& port() const { return port_; }

private:
    std::shared_ptr<Interface> port_;
};

}  // namespace AnythingToNodeMapAdapter::Detail
