// The layer of a handle that shows a register's bytes, on top of what it shows of its value.
#pragma once

#include "genapi/engineerror.h"
#include "genapi/iregister.h"
#include "genapi/nodehandle.h"

namespace GenApi::Detail {

inline CacheUse useUnless(bool ignore) {
    return ignore ? CacheUse::ignored : CacheUse::allowed;
}

template <typename Base>
class RegisterLayer : public Base, public IRegister {
public:
    using Base::Base;
    void Set(const std::uint8_t* pBuffer, std::int64_t Length, bool) override {
        const NodeMap::Call call(this->map());
        checkBuffer(pBuffer, Length);
        this->engine().setBytes(this->id(), {pBuffer, static_cast<std::size_t>(Length)});
    }
    void Get(std::uint8_t* pBuffer, std::int64_t Length, bool, bool IgnoreCache) override {
        const NodeMap::Call call(this->map());
        checkBuffer(pBuffer, Length);
        this->engine().requireReadable(this->id());
        const std::int64_t expected = this->engine().length(this->id());
        if (Length != expected) {
            GENAPI_THROW(
                OutOfRangeException,
                this->engine().says(this->id(), "has " + std::to_string(expected) + " bytes, not " +
                                                    std::to_string(Length) + "."));
        }
        this->engine().readBytes(this->id(), {pBuffer, static_cast<std::size_t>(Length)},
                                 useUnless(IgnoreCache));
    }
    [[nodiscard]] std::int64_t GetLength() override {
        const NodeMap::Call call(this->map());
        return this->engine().length(this->id());
    }
    [[nodiscard]] std::int64_t GetAddress() override {
        const NodeMap::Call call(this->map());
        return this->engine().address(this->id());
    }

private:
    void checkBuffer(const std::uint8_t* buffer, std::int64_t length) {
        if (buffer == nullptr || length < 0) {
            GENAPI_THROW(InvalidArgumentException,
                         this->engine().says(this->id(), "is given no buffer."));
        }
    }
};

}  // namespace GenApi::Detail
