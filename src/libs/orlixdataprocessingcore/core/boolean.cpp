#include "orlixdataprocessingcore/core/boolean.h"

#include "orlixdataprocessingcore/core/valueproperty.h"

namespace Orlix::DataProcessing::Core {

Boolean::~Boolean() = default;

bool Boolean::hasError(bool) const {
    return error_.isSet();
}

std::shared_ptr<IError> Boolean::getError(bool) const {
    return error_.get();
}

void Boolean::setError(const std::shared_ptr<IError>& error) {
    error_.set(error);
}

bool Boolean::get() const {
    error_.check("Boolean");
    return value_;
}

void Boolean::set(bool value) {
    error_.clear();
    value_ = value;
}

void Boolean::registerProperties(Utils::ITypeInfoData& data) {
    registerValueProperty<Boolean>(data);
}

}  // namespace Orlix::DataProcessing::Core
