#include "host/valuereader.h"

#include "orlixdataprocessingcore/core/array.h"
#include "orlixdataprocessingcore/core/boolean.h"
#include "orlixdataprocessingcore/core/float.h"
#include "orlixdataprocessingcore/core/image.h"
#include "orlixdataprocessingcore/core/integer.h"
#include "orlixdataprocessingcore/core/string.h"

namespace Orlix::Host {
namespace {

using namespace DataProcessing::Core;
using DataProcessing::Utils::Variant;

Json integerAsJson(const Integer& integer) {
    return integer.isAboveSigned() ? Json(integer.getUnsigned()) : Json(integer.get());
}

Json arrayAsJson(const IArray& array) {
    Json elements = Json::array();
    for (std::size_t i = 0; i < array.getSize(); ++i) {
        elements.push_back(valueAsJson(array.getElement(i)));
    }
    return elements;
}

}  // namespace

std::shared_ptr<IError> errorOf(const Variant& value) {
    const auto* content = value.get<IValue>(false);
    return content != nullptr ? content->getError(true) : nullptr;
}

const Image* imageOf(const Variant& value) {
    return value.get<Image>(false);
}

Json valueAsJson(const Variant& value) {
    if (const auto* integer = value.get<Integer>(false)) {
        return integerAsJson(*integer);
    }
    if (const auto* text = value.get<String>(false)) {
        return text->get().str();
    }
    if (const auto* boolean = value.get<Boolean>(false)) {
        return boolean->get();
    }
    if (const auto* number = value.get<Float>(false)) {
        return number->get();
    }
    if (const auto* array = value.get<IArray>(false)) {
        return arrayAsJson(*array);
    }
    return nullptr;
}

}  // namespace Orlix::Host
