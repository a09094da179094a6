// Recipes and pictures for tests of the real program.
#pragma once

#include <string>
#include <vector>

#include "host/support/program.h"
#include "host/support/temporaryfolder.h"

namespace Orlix::Host::Testing {

// Gray pictures a01.png, a02.png, ... of 8 x 6 pixels in a folder below; the pixels of picture n
// have the value 10 n.
void writePictures(const TemporaryFolder& folder, const std::string& below, int count);

// r.json in the folder: Loader (ImageLoading) connected to Converter (ImageFormatConverter), which
// gives Mono8. The settings of the loader are JSON members.
std::string writeReplayRecipe(const TemporaryFolder& folder, const std::string& loaderSettings);

// r.json with one node S of a test package's type and its settings.
std::string writeTestRecipe(const TemporaryFolder& folder, const std::string& type,
                            const std::string& settings = "{}");

// As runOrlix, with the package of test nodes.
[[nodiscard]] ProgramResult runWithTestNodes(std::vector<std::string> arguments);
[[nodiscard]] std::string testPackage(const std::string& name);

// The program must have failed as it always does: exit code 1, nothing on standard output and
// exactly this one line on standard error, behind "orlix: ".
void expectFailure(const ProgramResult& result, const std::string& message);

// The lines of a text without their ends.
[[nodiscard]] std::vector<std::string> linesOf(const std::string& text);

}  // namespace Orlix::Host::Testing
