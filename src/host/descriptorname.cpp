#include "host/descriptorname.h"

#include <charconv>
#include <filesystem>
#include <system_error>
#include <vector>

namespace Orlix::Host {
namespace {

namespace fs = std::filesystem;

// As many as the system follows.
constexpr int maxLinks = 40;

std::optional<int> parseNumber(const std::string& text) {
    int number = -1;
    const auto [end, failure] = std::from_chars(text.data(), text.data() + text.size(), number);
    const bool isNumber = failure == std::errc() && end == text.data() + text.size();
    return isNumber && number >= 0 ? std::optional(number) : std::nullopt;
}

// The process of a folder /proc/PROCESS/fd or /proc/PROCESS/task/THREAD/fd, or empty.
std::string processOf(const fs::path& folder) {
    const std::vector<fs::path> parts(folder.begin(), folder.end());
    const bool isOfProcess = parts.size() == 4 || (parts.size() == 6 && parts[3] == "task");
    return isOfProcess && parts[0] == "/" && parts[1] == "proc" && parts.back() == "fd"
               ? parts[2].string()
               : std::string();
}

// Not getpid(): the folder may show another name space of processes.
bool isThisProcess(const std::string& process) {
    std::error_code ignored;
    return fs::read_symlink("/proc/self", ignored) == process;
}

}  // namespace

// Link after link, since the last one is followed by the system to the open file itself.
std::optional<DescriptorName> parseDescriptorName(const std::string& path) {
    std::error_code failure;
    fs::path name = fs::absolute(path, failure);
    for (int link = 0; link < maxLinks && !failure; ++link) {
        const fs::path folder = fs::weakly_canonical(name.parent_path(), failure);
        const std::string process = processOf(folder);
        if (!process.empty()) {
            const std::optional<int> number = parseNumber(name.filename().string());
            return number ? std::optional(DescriptorName{*number, isThisProcess(process)})
                          : std::nullopt;
        }
        name = folder / fs::read_symlink(folder / name.filename(), failure);
    }
    return std::nullopt;
}

}  // namespace Orlix::Host
