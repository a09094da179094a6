#include "orlixvcellpackagebase/entrypoints.h"

#include <cstdlib>
#include <cstring>
#include <new>

#include "catalog/catalogtext.h"
#include "imageformatconverter/imageformatconverter.h"
#include "orlixvcellpackagebase/camera.h"
#include "orlixvcellpackagebase/imageloading.h"

using namespace Plugin::OrlixVCellPackageBase;

unsigned int get_InterfaceVersion() {
    return interfaceVersion;
}

char* create_StaticInfo() {
    // The host gives the block to destroy_Info of this library, so the C heap is as good as any.
    auto* info = static_cast<char*>(std::malloc(catalogSize + 1));
    if (info != nullptr) {
        std::memcpy(info, catalogText, catalogSize + 1);
    }
    return info;
}

char* create_DynamicInfo() {
    return nullptr;
}

void destroy_Info(char** info) {
    std::free(*info);
    *info = nullptr;
}

// Without memory for the object a creator answers null; its constructor may throw.

Node* create_Camera(const std::shared_ptr<ResourcePool>& pool) {
    return new (std::nothrow) Camera(pool);
}

Node* create_ImageFormatConverter(const std::shared_ptr<ResourcePool>& pool) {
    return new (std::nothrow) ImageFormatConverter(pool);
}

Node* create_ImageLoading(const std::shared_ptr<ResourcePool>& pool) {
    return new (std::nothrow) ImageLoading(pool);
}

void destroy_Camera(Node* node) {
    delete node;
}

void destroy_ImageFormatConverter(Node* node) {
    delete node;
}

void destroy_ImageLoading(Node* node) {
    delete node;
}
