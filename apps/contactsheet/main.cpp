// The program contactsheet: shows on one picture what went into a run and what came out of it.
// It reads the folder that `orlix run --out` has written: the file names from values.jsonl, the
// pictures from beside it.
#include <CLI/CLI.hpp>
#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <nlohmann/json.hpp>

#include "gcbase/gcexception.h"
#include "orlixcamera/imagefile.h"
#include "sheet.h"

namespace Orlix::App {
namespace {

namespace fs = std::filesystem;

constexpr std::uint32_t pairsInARow = 3;

[[noreturn]] void fail(const std::string& message) {
    throw GenICam::RuntimeException(message.c_str(), __FILE__, __LINE__);
}

// The files that were loaded, in the order of the run.
std::vector<std::string> inputsOf(const fs::path& results) {
    std::ifstream file(results / "values.jsonl");
    if (!file) {
        fail((results / "values.jsonl").string() + ": can not read");
    }
    std::vector<std::string> inputs;
    for (std::string line; std::getline(file, line);) {
        const auto value = nlohmann::json::parse(line);
        if (value.at("pin") == "ImagePath" && value.contains("value")) {
            inputs.push_back(value.at("value").get<std::string>());
        }
    }
    return inputs;
}

// The picture of that number, whatever the name of its node; empty if it has none.
fs::path outputOf(const fs::path& results, std::size_t number) {
    char part[32];
    std::snprintf(part, sizeof part, ".Image.%06zu.", number);
    for (const auto& entry : fs::directory_iterator(results)) {
        if (entry.path().filename().string().find(part) != std::string::npos) {
            return entry.path();
        }
    }
    return {};
}

void addFile(Sheet& sheet, const fs::path& file) {
    COrlixImage image;
    try {
        image.Load(GenICam::gcstring(file.string()));
        sheet.add(image);
    } catch (const GenICam::GenericException&) {
        // A broken picture is part of what the sheet shows.
        sheet.addMissing();
    }
}

void makeSheet(const fs::path& results, const std::string& target, std::size_t maxPairs) {
    const std::vector<std::string> inputs = inputsOf(results);
    const std::size_t pairs = std::min(inputs.size(), maxPairs);
    if (pairs == 0) {
        fail(results.string() + ": values.jsonl has no \"ImagePath\"");
    }
    const auto rows = static_cast<std::uint32_t>((pairs + pairsInARow - 1) / pairsInARow);
    Sheet sheet(2 * pairsInARow, rows);
    for (std::size_t i = 0; i < pairs; ++i) {
        addFile(sheet, inputs[i]);
        addFile(sheet, outputOf(results, i + 1));
    }
    saveImage(GenICam::gcstring(target), sheet.image());
    std::cout << pairs << " pairs of input and output on " << target << "\n";
}

int run(int argc, char** argv) {
    CLI::App app("Shows inputs beside outputs of a run on one picture", "contactsheet");
    std::string results;
    std::string target;
    std::size_t maxPairs = 12;
    app.add_option("RESULTS", results, "Folder that orlix run --out has written")->required();
    app.add_option("-o,--output", target, "Picture to write")->type_name("FILE")->required();
    app.add_option("--pairs", maxPairs, "At most so many pairs")->capture_default_str();
    try {
        app.parse(argc, argv);
        makeSheet(results, target, maxPairs);
        return 0;
    } catch (const CLI::Success& success) {
        return app.exit(success);
    } catch (const GenICam::GenericException& error) {
        std::cerr << "contactsheet: " << error.GetDescription() << "\n";
    } catch (const std::exception& error) {
        std::cerr << "contactsheet: " << error.what() << "\n";
    }
    return 1;
}

}  // namespace
}  // namespace Orlix::App

int main(int argc, char** argv) {
    return Orlix::App::run(argc, argv);
}
