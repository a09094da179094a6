#include "orlixdataprocessingcore/core/string.h"

#include <utility>

#include "orlixdataprocessingcore/core/valueproperty.h"

namespace Orlix::DataProcessing::Core {

String::~String() = default;

bool String::hasError(bool) const {
    return error_.isSet();
}

std::shared_ptr<IError> String::getError(bool) const {
    return error_.get();
}

void String::setError(const std::shared_ptr<IError>& error) {
    error_.set(error);
    value_.clear();
}

const gcstring& String::get() const {
    error_.check("String");
    return value_;
}

void String::set(gcstring value) {
    error_.clear();
    value_ = std::move(value);
}

void String::registerProperties(Utils::ITypeInfoData& data) {
    registerValueProperty<String>(data);
}

}  // namespace Orlix::DataProcessing::Core
