#include "orlixdataprocessingcore/core/float.h"

#include "orlixdataprocessingcore/core/valueproperty.h"

namespace Orlix::DataProcessing::Core {

Float::~Float() = default;

bool Float::hasError(bool) const {
    return error_.isSet();
}

std::shared_ptr<IError> Float::getError(bool) const {
    return error_.get();
}

void Float::setError(const std::shared_ptr<IError>& error) {
    error_.set(error);
}

double Float::get() const {
    error_.check("Float");
    return value_;
}

void Float::set(double value) {
    error_.clear();
    value_ = value;
}

void Float::registerProperties(Utils::ITypeInfoData& data) {
    registerValueProperty<Float>(data);
}

}  // namespace Orlix::DataProcessing::Core
