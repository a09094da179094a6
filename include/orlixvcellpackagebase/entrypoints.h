// The package as a host sees it: ten functions with plain names in a shared library that is loaded
// at run time, and the function types to call what dlsym returns.
//
// A node returned by a create_ function belongs to the caller until it is given to the matching
// destroy_ function; the package keeps no list of its nodes. All functions may be called from any
// thread. The library stays loaded for the life of the process: values, errors and jobs hold its
// code.
#pragma once

#include <memory>

#include "orlixvcellpackagebase/api.h"

namespace Orlix::DataProcessing::Core {
class INode;
class IResourcePool;
}  // namespace Orlix::DataProcessing::Core

namespace Plugin::OrlixVCellPackageBase {

using Node = Orlix::DataProcessing::Core::INode;
using ResourcePool = Orlix::DataProcessing::Core::IResourcePool;

// The version of this table of functions; a host that knows another one must not go on.
inline constexpr unsigned int interfaceVersion = 2;

// Types for dlsym: "get_InterfaceVersion", "create_StaticInfo" and so on. The names of the last two
// are made of the prefix and the "Name" of a catalog record.
using GetInterfaceVersion = unsigned int();
using CreateInfo = char*();
using DestroyInfo = void(char**);
using CreateNode = Node*(const std::shared_ptr<ResourcePool>&);
using DestroyNode = void(Node*);

}  // namespace Plugin::OrlixVCellPackageBase

extern "C" {

ORLIXVCELLPACKAGEBASE_API unsigned int get_InterfaceVersion();

// The catalog: one JSON document in UTF-8, NUL-terminated, to be given to destroy_Info. Null only
// if there is no memory.
ORLIXVCELLPACKAGEBASE_API char* create_StaticInfo();
// Always null, as no record of the catalog has dynamic parts. Nothing to be given back.
ORLIXVCELLPACKAGEBASE_API char* create_DynamicInfo();
// Frees the text and sets the caller's pointer to null.
ORLIXVCELLPACKAGEBASE_API void destroy_Info(char** info);

// Exceptions of the node's constructor reach the caller, with nothing left behind. A Camera needs
// a pool and throws GenICam::InvalidArgumentException without one.
ORLIXVCELLPACKAGEBASE_API Plugin::OrlixVCellPackageBase::Node* create_Camera(
    const std::shared_ptr<Plugin::OrlixVCellPackageBase::ResourcePool>& pool);
ORLIXVCELLPACKAGEBASE_API Plugin::OrlixVCellPackageBase::Node* create_ImageFormatConverter(
    const std::shared_ptr<Plugin::OrlixVCellPackageBase::ResourcePool>& pool);
ORLIXVCELLPACKAGEBASE_API Plugin::OrlixVCellPackageBase::Node* create_ImageLoading(
    const std::shared_ptr<Plugin::OrlixVCellPackageBase::ResourcePool>& pool);

// A null pointer is ignored. A node may be destroyed in any state.
ORLIXVCELLPACKAGEBASE_API void destroy_Camera(Plugin::OrlixVCellPackageBase::Node* node);
ORLIXVCELLPACKAGEBASE_API void destroy_ImageFormatConverter(
    Plugin::OrlixVCellPackageBase::Node* node);
ORLIXVCELLPACKAGEBASE_API void destroy_ImageLoading(Plugin::OrlixVCellPackageBase::Node* node);

}  // extern "C"
