#include "orlixdataprocessingcore/core/errorvalue.h"

#include "orlixdataprocessingcore/core/nodelog.h"
#include "orlixdataprocessingcore/core/value.h"

namespace Orlix::DataProcessing::Core {

Utils::Variant makeErrorValue(const Utils::TypeInfo& type, const std::shared_ptr<IError>& error) {
    Utils::Variant value;
    guarded(error.get(), "making a value that carries an error", [&] {
        if (type.isValid()) {
            value = type.createDefault();
        }
        if (auto* const carrier = value.get<IValue>(false)) {
            carrier->setError(error);
        } else {
            value.reset();
        }
    });
    return value;
}

}  // namespace Orlix::DataProcessing::Core
