// Whole text files. Failures are RuntimeException that names the file and the system's reason.
#pragma once

#include <sys/types.h>

#include <string>

#include "orlixhost/filedescriptor.h"

namespace Orlix::Host {

[[nodiscard]] std::string readTextFile(const std::string& path);

// After a power cut or a full disk the file holds either the old or the new text. Permissions of a
// file that is there stay; a symbolic link stays and its target is replaced. A device or a pipe
// stays too and is written to, and so is a file that is open and meant by such a name as
// /dev/stdout.
void replaceTextFile(const std::string& path, const std::string& text);

// A file that grows line by line; each line is with the system when append returns. For one thread.
class AppendFile {
public:
    // Empties a file that is there.
    explicit AppendFile(std::string path);

    void append(const std::string& text);

private:
    std::string path_;
    FileDescriptor file_;
    off_t size_ = 0;  // of the whole lines
};

}  // namespace Orlix::Host
