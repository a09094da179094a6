#include "orlixdataprocessingcore/utils/typeregistration.h"

namespace Orlix::DataProcessing::Utils {

TypeRegistration& TypeRegistration::getInstance() {
    static TypeRegistration& instance = *new TypeRegistration();
    return instance;
}

ITypeRegistrationSlot* TypeRegistration::getSlot(const gcstring& identifier) {
    const std::lock_guard<std::mutex> guard(mutex_);
    auto& slot = slots_[identifier];
    if (slot == nullptr) {
        slot = std::make_unique<Slot>();
    }
    return slot.get();
}

const ITypeInfoData* TypeRegistration::find(const gcstring& identifier) {
    const std::lock_guard<std::mutex> guard(mutex_);
    const auto found = slots_.find(identifier);
    return found != slots_.end() ? found->second->getData() : nullptr;
}

void TypeRegistration::Slot::setData(ITypeInfoData* data) {
    // Derived types and TypeInfo values point at the first record, so it stays.
    const ITypeInfoData* none = nullptr;
    if (!data_.compare_exchange_strong(none, data, std::memory_order_acq_rel)) {
        delete data;
    }
}

}  // namespace Orlix::DataProcessing::Utils
