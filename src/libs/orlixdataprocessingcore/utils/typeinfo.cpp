#include "orlixdataprocessingcore/utils/typeinfo.h"

#include <memory>
#include <new>
#include <string>

#include "orlixdataprocessingcore/core/coretypes.h"
#include "orlixdataprocessingcore/utils/failure.h"
#include "orlixdataprocessingcore/utils/typeinfodata.h"
#include "orlixdataprocessingcore/utils/typeregistration.h"
#include "orlixdataprocessingcore/utils/variant.h"

namespace Orlix::DataProcessing::Utils {

ITypeInfoData::~ITypeInfoData() = default;
ITypeRegistrationSlot::~ITypeRegistrationSlot() = default;
ITypeRegistration::~ITypeRegistration() = default;

namespace {

CatId getCatIdTypeInfo() {
    static const CatId id = getCatId("orlix.dataprocessing.utils.TypeInfo");
    return id;
}

// The core makes all records, so this is the class of each.
const TypeInfoData& getData(const ITypeInfoData* data) {
    return *static_cast<const TypeInfoData*>(data);
}

[[noreturn]] void throwForType(const gcstring& identifier, const std::string& problem) {
    const std::string message = "Type \"" + identifier.str() + "\" " + problem;
    throw GenICam::RuntimeException(message.c_str(), __FILE__, __LINE__);
}

}  // namespace

gcstring TypeInfo::getIdentifier() const {
    return isValid() ? getData(data_).getIdentifier() : gcstring();
}

std::uint64_t TypeInfo::getSize() const {
    return isValid() ? getData(data_).getSize() : 0;
}

const Uuid* TypeInfo::getUuid() const {
    return isValid() && getData(data_).getUuid() ? &*getData(data_).getUuid() : nullptr;
}

bool TypeInfo::canConvert(const TypeInfo& target) const {
    return isValid() && target.isValid() && getData(data_).isOrDerivesFrom(getData(target.data_));
}

Variant TypeInfo::createDefault() const {
    if (!isValid() || getData(data_).getFactory() == nullptr) {
        throwForType(getIdentifier(), "has no default value.");
    }
    return getData(data_).getFactory()();
}

const PropertyInfo& TypeInfo::getProperty(const gcstring& name) const {
    const PropertyInfo* property = isValid() ? getData(data_).findProperty(name) : nullptr;
    if (property == nullptr) {
        throwForType(getIdentifier(), "has no property \"" + name.str() + "\".");
    }
    return *property;
}

std::vector<gcstring> TypeInfo::getPropertyNames() const {
    std::vector<gcstring> names;
    if (isValid()) {
        getData(data_).collectPropertyNames(names);
    }
    return names;
}

std::pair<gcstring, gcstring> TypeInfo::splitPath(const gcstring& path) {
    const std::size_t dot = path.find('.');
    const bool isLast = dot == gcstring::npos;
    std::pair<gcstring, gcstring> parts(path.substr(0, dot),
                                        isLast ? gcstring() : path.substr(dot + 1));
    if (parts.first.empty() || (!isLast && parts.second.empty())) {
        const std::string message = "Property path \"" + path.str() + "\" has an empty element.";
        throw GenICam::InvalidArgumentException(message.c_str(), __FILE__, __LINE__);
    }
    return parts;
}

TypeInfo TypeInfo::find(const gcstring& identifier) {
    return TypeInfo(TypeRegistration::getInstance().find(identifier));
}

void TypeInfo::registerCoreTypes() {
    static const bool isRegistered = CoreTypes::registerAll();
    static_cast<void>(isRegistered);
}

void TypeInfo::logRegistrationFailure(const void* object, const char* message) noexcept {
    logCaught({"TypeInfo", object, getCatIdTypeInfo()}, "registering a type", message);
}

ITypeRegistration& TypeInfo::getTypeRegistration() {
    return TypeRegistration::getInstance();
}

ITypeInfoData* TypeInfo::createTypeInfoData(const gcstring& identifier, std::uint64_t size,
                                            Factory factory, const std::uint8_t* uuid) {
    try {
        return new TypeInfoData(identifier, size, factory, uuid);
    } catch (const std::bad_alloc&) {
        return nullptr;
    }
}

void TypeInfo::destroyTypeInfoData(ITypeInfoData* data) noexcept {
    delete data;
}

const void* type_cast(const void* pointer, const TypeInfo& from, const TypeInfo& to) {
    if (pointer == nullptr || !from.isValid() || !to.isValid()) {
        return nullptr;
    }
    return from == to ? pointer : getData(from.data_).castTo(getData(to.data_), pointer);
}

void* type_cast(void* pointer, const TypeInfo& from, const TypeInfo& to) {
    return const_cast<void*>(type_cast(static_cast<const void*>(pointer), from, to));
}

}  // namespace Orlix::DataProcessing::Utils
