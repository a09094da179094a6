#include "failure.h"

#include <cstring>

namespace Plugin::OrlixVCellPackageBase {

using Orlix::DataProcessing::Utils::createLogEntry;
using Orlix::DataProcessing::Utils::Severitiy;

const char* getBaseName(const char* sourcePath) {
    const char* separator = std::strrchr(sourcePath, '\\');
    return separator != nullptr ? separator + 1 : sourcePath;
}

void logFailure(const FailingNode& node, const char* message, const CodePlace& place) {
    createLogEntry(Severitiy::Error, node.category, "%s %p: %s failed. Message: \"%s\" (%s:%i)",
                   node.className, node.address, place.function, message, getBaseName(place.file),
                   place.line);
}

}  // namespace Plugin::OrlixVCellPackageBase
