#include "orlixdataprocessingcore/core/integer.h"

#include <limits>
#include <string>

#include "gcbase/gcexception.h"
#include "orlixdataprocessingcore/core/valueproperty.h"

namespace Orlix::DataProcessing::Core {

namespace {

[[noreturn]] void throwOutOfRange(const std::string& value, const char* range) {
    const std::string message = "Integer " + value + " does not fit into a " + range + ".";
    throw GenICam::OutOfRangeException(message.c_str(), __FILE__, __LINE__);
}

}  // namespace

Integer::~Integer() = default;

bool Integer::hasError(bool) const {
    return error_.isSet();
}

std::shared_ptr<IError> Integer::getError(bool) const {
    return error_.get();
}

void Integer::setError(const std::shared_ptr<IError>& error) {
    error_.set(error);
}

bool Integer::isNegative() const {
    return !isUnsigned_ && static_cast<std::int64_t>(bits_) < 0;
}

bool Integer::isAboveSigned() const {
    return isUnsigned_ && bits_ > std::uint64_t{std::numeric_limits<std::int64_t>::max()};
}

std::int64_t Integer::get() const {
    error_.check("Integer");
    if (isAboveSigned()) {
        throwOutOfRange(std::to_string(bits_), "signed 64-bit integer");
    }
    return static_cast<std::int64_t>(bits_);
}

std::uint64_t Integer::getUnsigned() const {
    error_.check("Integer");
    if (isNegative()) {
        throwOutOfRange(std::to_string(static_cast<std::int64_t>(bits_)),
                        "unsigned 64-bit integer");
    }
    return bits_;
}

void Integer::set(std::int64_t value) {
    error_.clear();
    bits_ = static_cast<std::uint64_t>(value);
    isUnsigned_ = false;
}

void Integer::set(std::uint64_t value) {
    error_.clear();
    bits_ = value;
    isUnsigned_ = true;
}

void Integer::registerProperties(Utils::ITypeInfoData& data) {
    registerValueProperty<Integer>(data);
}

}  // namespace Orlix::DataProcessing::Core
