#include "orlixdataprocessingcore/utils/typeinfodata.h"

#include <algorithm>

namespace Orlix::DataProcessing::Utils {

TypeInfoData::TypeInfoData(const gcstring& identifier, std::uint64_t size,
                           TypeInfo::Factory factory, const std::uint8_t* uuid)
    : identifier_(identifier), size_(size), factory_(factory) {
    if (uuid != nullptr) {
        Uuid::Bytes bytes{};
        std::copy_n(uuid, bytes.size(), bytes.begin());
        uuid_.emplace(bytes);
    }
}

void TypeInfoData::addBase(bool isPrimary, const ITypeInfoData* baseData,
                           TypeInfo::CastFunction castFunction) {
    // The core makes all records, so this is the class of each.
    bases_.push_back({isPrimary, static_cast<const TypeInfoData*>(baseData), castFunction});
}

void TypeInfoData::addProperty(const PropertyInfo& property) {
    for (const auto& present : properties_) {
        if (present->getName() == property.getName()) {
            return;
        }
    }
    auto owned = std::make_unique<PropertyInfo>(property);
    owned->setOwner(TypeInfo(this));
    properties_.push_back(std::move(owned));
}

const void* TypeInfoData::castTo(const TypeInfoData& target, const void* object) const {
    if (this == &target) {
        return object;
    }
    for (const Base& base : bases_) {
        // Cast functions only add an offset.
        const void* part = base.isPrimary ? object : base.cast(const_cast<void*>(object));
        if (const void* found = base.data->castTo(target, part)) {
            return found;
        }
    }
    return nullptr;
}

bool TypeInfoData::isOrDerivesFrom(const TypeInfoData& target) const {
    const auto leadsThere = [&](const Base& base) { return base.data->isOrDerivesFrom(target); };
    return this == &target || std::any_of(bases_.begin(), bases_.end(), leadsThere);
}

const PropertyInfo* TypeInfoData::findProperty(const gcstring& name) const {
    for (const auto& property : properties_) {
        if (property->getName() == name) {
            return property.get();
        }
    }
    for (const Base& base : bases_) {
        if (const PropertyInfo* found = base.data->findProperty(name)) {
            return found;
        }
    }
    return nullptr;
}

void TypeInfoData::collectPropertyNames(std::vector<gcstring>& names) const {
    for (const auto& property : properties_) {
        if (std::find(names.begin(), names.end(), property->getName()) == names.end()) {
            names.push_back(property->getName());
        }
    }
    for (const Base& base : bases_) {
        base.data->collectPropertyNames(names);
    }
}

}  // namespace Orlix::DataProcessing::Utils
