// The registry of all types of the process: one slot for each identifier. Any thread may use it;
// slots stay valid and their data never changes once set.
#pragma once

#include <atomic>
#include <memory>
#include <mutex>
#include <unordered_map>

#include "orlixdataprocessingcore/utils/typeinfo.h"

namespace Orlix::DataProcessing::Utils {

class TypeRegistration final : public ITypeRegistration {
public:
    // Never destroyed, since modules ask for types until the process ends.
    [[nodiscard]] static TypeRegistration& getInstance();

    ITypeRegistrationSlot* getSlot(const gcstring& identifier) override;
    // Null if no slot of that identifier has data.
    [[nodiscard]] const ITypeInfoData* find(const gcstring& identifier);

private:
    class Slot final : public ITypeRegistrationSlot {
    public:
        void setData(ITypeInfoData* data) override;
        const ITypeInfoData* getData() const noexcept override {
            return data_.load(std::memory_order_acquire);
        }

    private:
        std::atomic<const ITypeInfoData*> data_{nullptr};
    };

    std::mutex mutex_;
    std::unordered_map<gcstring, std::unique_ptr<Slot>> slots_;
};

}  // namespace Orlix::DataProcessing::Utils
