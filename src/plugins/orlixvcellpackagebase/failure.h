// How a node fails: it logs one line and throws, in one step and with one text. Used by Camera and
// ImageLoading; ImageFormatConverter throws without a line.
#pragma once

#include "orlixdataprocessingcore/utils/log.h"

namespace Plugin::OrlixVCellPackageBase {

// The node that fails.
struct FailingNode {
    const char* className;
    const void* address;
    Orlix::DataProcessing::Utils::CatId category;
};

// Where it fails: the function with its namespaces and class, as the log shows it.
struct CodePlace {
    const char* function;
    const char* file;
    int line;
};

// The place of this line, in a member function such as "ImageLoading::setSortBy".
#define ORLIX_HERE(function)                                           \
    ::Plugin::OrlixVCellPackageBase::CodePlace {                       \
        "Plugin::OrlixVCellPackageBase::" function, __FILE__, __LINE__ \
    }

// What follows the last backslash of a source path; without one, the whole path.
[[nodiscard]] const char* getBaseName(const char* sourcePath);

// The line "<Class> <address>: <function> failed. Message: "<message>" (<file>:<line>)".
void logFailure(const FailingNode& node, const char* message, const CodePlace& place);

template <typename Exception>
[[noreturn]] void logAndThrow(const FailingNode& node, const char* message,
                              const CodePlace& place) {
    logFailure(node, message, place);
    throw Exception(message, getBaseName(place.file), static_cast<unsigned int>(place.line));
}

}  // namespace Plugin::OrlixVCellPackageBase
