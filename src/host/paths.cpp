#include "orlixhost/paths.h"

#include <filesystem>
#include <system_error>

#include "host/message.h"

namespace Orlix::Host {

std::string absolutePath(const std::string& path) {
    std::error_code failure;
    const std::filesystem::path absolute = std::filesystem::absolute(path, failure);
    if (failure) {
        fail(path + ": is relative to a current folder that can not be told: " + failure.message());
    }
    return absolute.string();
}

}  // namespace Orlix::Host
