// Build tool: catalogcompiler CATALOG LICENSE VERSION OUTPUT
//
// Checks the catalog's sources and writes the C++ file that embeds the document. Exits with 1 and
// one line on stderr when anything is wrong, which fails the build.
#include <cstdio>
#include <exception>
#include <fstream>
#include <stdexcept>
#include <string>

#include "catalogdocument.h"

namespace {

void compile(const Catalog::Sources& sources, const std::string& version,
             const std::string& output) {
    const auto document = Catalog::buildDocument(sources);
    if (document.at("Version") != version) {
        throw std::runtime_error(sources.catalog.string() +
                                 ": Version is not that of the project, " + version);
    }
    std::ofstream stream(output, std::ios::binary);
    stream << Catalog::toSourceFile(document.dump(4) + "\n");
    if (!stream.flush()) {
        throw std::runtime_error(output + ": can't be written");
    }
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 5) {
        std::fprintf(stderr, "usage: catalogcompiler CATALOG LICENSE VERSION OUTPUT\n");
        return 1;
    }
    try {
        compile({argv[1], argv[2]}, argv[3], argv[4]);
    } catch (const std::exception& error) {
        std::fprintf(stderr, "%s\n", error.what());
        return 1;
    }
    return 0;
}
