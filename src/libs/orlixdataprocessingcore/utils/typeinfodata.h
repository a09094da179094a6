// The core's record of one type. Written while the type is registered, immutable afterwards.
#pragma once

#include <memory>
#include <optional>
#include <vector>

#include "orlixdataprocessingcore/utils/propertyinfo.h"
#include "orlixdataprocessingcore/utils/typeinfo.h"

namespace Orlix::DataProcessing::Utils {

class TypeInfoData final : public ITypeInfoData {
public:
    struct Base {
        bool isPrimary = false;
        const TypeInfoData* data = nullptr;
        TypeInfo::CastFunction cast = nullptr;
    };

    TypeInfoData(const gcstring& identifier, std::uint64_t size, TypeInfo::Factory factory,
                 const std::uint8_t* uuid);

    void addBase(bool isPrimary, const ITypeInfoData* baseData,
                 TypeInfo::CastFunction castFunction) override;
    void addProperty(const PropertyInfo& property) override;

    // The address of the part of the given type in an object of this type, or null.
    [[nodiscard]] const void* castTo(const TypeInfoData& target, const void* object) const;
    [[nodiscard]] bool isOrDerivesFrom(const TypeInfoData& target) const;
    // Null if neither this type nor a base has it.
    [[nodiscard]] const PropertyInfo* findProperty(const gcstring& name) const;
    void collectPropertyNames(std::vector<gcstring>& names) const;

    [[nodiscard]] const gcstring& getIdentifier() const noexcept { return identifier_; }
    [[nodiscard]] std::uint64_t getSize() const noexcept { return size_; }
    [[nodiscard]] TypeInfo::Factory getFactory() const noexcept { return factory_; }
    [[nodiscard]] const std::optional<Uuid>& getUuid() const noexcept { return uuid_; }

private:
    gcstring identifier_;
    std::uint64_t size_;
    TypeInfo::Factory factory_;
    std::optional<Uuid> uuid_;
    std::vector<Base> bases_;
    // At stable addresses, which TypeInfo::getProperty gives out.
    std::vector<std::unique_ptr<const PropertyInfo>> properties_;
};

}  // namespace Orlix::DataProcessing::Utils
