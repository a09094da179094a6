#include "orlixdataprocessingcore/core/coretypes.h"

#include <vector>

#include "orlixdataprocessingcore/core/array.h"
#include "orlixdataprocessingcore/core/boolean.h"
#include "orlixdataprocessingcore/core/errors.h"
#include "orlixdataprocessingcore/core/float.h"
#include "orlixdataprocessingcore/core/image.h"
#include "orlixdataprocessingcore/core/integer.h"
#include "orlixdataprocessingcore/core/string.h"
#include "orlixdataprocessingcore/core/value.h"
#include "orlixdataprocessingcore/utils/cowptr.h"
#include "orlixdataprocessingcore/utils/failure.h"
#include "orlixdataprocessingcore/utils/variant.h"

namespace Orlix::DataProcessing::Utils {

using namespace Core;

template <typename T, typename... Bases>
void CoreTypes::add(TypeInfo::Factory factory) noexcept {
    static const char place = 0;
    try {
        TypeInfo::tryRegisterType<T, Bases...>(factory, nullptr);
    } catch (...) {
        TypeInfo::logRegistrationFailure(&place, getCaughtText());
    }
}

template <typename T>
void CoreTypes::addScalar() noexcept {
    add<T, IValue>(&Variant::createDefault<T>);
    add<COWPtr<T>, COWPtrBase>();
}

void CoreTypes::addErrors() noexcept {
    add<IError, IObject>();
    add<IExceptionError, IError>();
    add<ErrorBase, IError>();
    add<ExceptionErrorBase, IExceptionError>();
    add<InvalidValueError, ErrorBase>();
    add<DeviceError, ErrorBase>();
    add<GenICamExceptionError, ExceptionErrorBase>();
    add<StdExceptionError, ExceptionErrorBase>();
    add<UnknownExceptionError, ExceptionErrorBase>();
}

namespace {

template <typename T, typename Add>
void addArray(Add add) noexcept {
    add.template operator()<std::vector<T>>(nullptr);
    add.template operator()<COWPtr<std::vector<T>>, COWPtrBase>(nullptr);
    add.template operator()<Array<T>, IArray>(&Variant::createDefault<Array<T>>);
    add.template operator()<COWPtr<Array<T>>, COWPtrBase>(nullptr);
}

}  // namespace

void CoreTypes::addArrays() noexcept {
    add<IArray, IValue>();
    const auto adder = []<typename T, typename... Bases>(TypeInfo::Factory factory) {
        add<T, Bases...>(factory);
    };
    addArray<Boolean>(adder);
    addArray<Integer>(adder);
    addArray<Float>(adder);
    addArray<String>(adder);
}

bool CoreTypes::registerAll() noexcept {
    add<IObject>();
    add<COWPtrBase, IObject>();
    add<IValue, IObject>();
    addErrors();
    addScalar<Boolean>();
    addScalar<Integer>();
    addScalar<Float>();
    addScalar<String>();
    addScalar<Image>();
    addArrays();
    return true;
}

namespace {

// For a program without types of its own.
[[maybe_unused]] const bool isRegisteredAtLoad = (CoreTypes::ensureRegistered(), true);

}  // namespace

}  // namespace Orlix::DataProcessing::Utils
