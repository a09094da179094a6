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

protected:
    ParameterNodeMapPort(std::shared_ptr<Interface> port, std::int32_t mergePriority)
        : CBasicNodeMapPort(mergePriority), port_(std::move(port)) {
        if (port_) {
            port_->setObserver(this);
        }
    }

    [[nodiscard]] const std::shared_ptr<Interface>& port() const { return port_; }

private:
    std::shared_ptr<Interface> port_;
};

}  // namespace AnythingToNodeMapAdapter::Detail
