// Names of files that a process has open: /dev/stdout, /dev/fd/3, /proc/self/fd/3, and links to
// such names. To the system they look like links to the file that is open, and yet they mean that
// file as it is open: at its place in it, and in no case to be replaced.
#pragma once

#include <optional>
#include <string>

namespace Orlix::Host {

struct DescriptorName {
    int number = -1;
    // Whether this process has it open.
    bool isOwn = false;
};

// Empty for every other name.
[[nodiscard]] std::optional<DescriptorName> parseDescriptorName(const std::string& path);

}  // namespace Orlix::Host
