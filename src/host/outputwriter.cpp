#include "host/outputwriter.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <filesystem>
#include <stdexcept>
#include <thread>

#include "host/jsontext.h"
#include "host/message.h"
#include "host/valuereader.h"
#include "orlixcamera/imagefile.h"
#include "orlixcamera/orliximage.h"
#include "orlixcamera/pixeltypemapper.h"
#include "orlixdataprocessingcore/core/error.h"
#include "orlixdataprocessingcore/core/image.h"

namespace Orlix::Host {
namespace {

namespace fs = std::filesystem;

// Images are large: only as many as keep the threads busy.
constexpr std::size_t imageCapacity = 16;
constexpr std::size_t lineCapacity = 4096;

// Innermost first, and none that is there; what can't be asked for is told of by the making.
std::vector<fs::path> missingFolders(const fs::path& folder) {
    std::vector<fs::path> missing;
    std::error_code ignored;
    for (fs::path path = folder; !path.empty() && !fs::exists(path, ignored);
         path = path.parent_path()) {
        missing.push_back(path);
    }
    return missing;
}

// Where each error comes from, the nearest first: a node further on only tells that its input was
// bad.
void addCauses(const DataProcessing::Core::IError& error, Json& line) {
    for (const auto& parent : error.getParentErrors()) {
        if (parent != nullptr) {
            line["causes"].push_back(parent->getDescription().str());
            addCauses(*parent, line);
        }
    }
}

// Encoding is the work here; half of the processors are left to the graph.
std::size_t imageThreads() {
    return std::clamp<std::size_t>(std::thread::hardware_concurrency() / 2, 1, 8);
}

bool hasPixels(const DataProcessing::Utils::Variant& value) {
    const auto* image = imageOf(value);
    return image != nullptr && !image->hasError(true) && image->isValid();
}

// A pin's value is rows in the order of its buffer, and that is how the next node reads it. What a
// converter notes of the order in its result is no part of the value: a file that followed it would
// show a picture that no node has seen, and turn a picture that was turned back.
COrlixImage asNodesSeeIt(COrlixImage image) {
    image.AttachUserBuffer(image.GetBuffer(), image.GetAllocatedBufferSize(), image.GetPixelType(),
                           image.GetWidth(), image.GetHeight(), image.GetPaddingX());
    return image;
}

std::string fileNameOf(const OpenOutput& output) {
    std::string name = output.node + "." + output.pin;
    std::replace_if(
        name.begin(), name.end(),
        [](unsigned char character) { return character == '/' || character < 0x20; }, '_');
    return name;
}

}  // namespace

MadeFolders::MadeFolders(const fs::path& folder) : paths_(missingFolders(folder)) {
    std::error_code failure;
    fs::create_directories(folder, failure);
    if (failure) {
        remove();
        fail(folder.string() + ": can not make the folder: " + failure.message());
    }
}

MadeFolders::~MadeFolders() {
    remove();
}

void MadeFolders::noteFile(const std::string& path) {
    const std::lock_guard lock(mutex_);
    if (!paths_.empty()) {
        paths_.insert(paths_.begin(), path);
    }
}

void MadeFolders::keep() noexcept {
    const std::lock_guard lock(mutex_);
    paths_.clear();
}

void MadeFolders::remove() noexcept {
    const std::lock_guard lock(mutex_);
    for (const fs::path& path : paths_) {
        std::error_code ignored;
        fs::remove(path, ignored);
    }
    paths_.clear();
}

OutputWriter::OutputWriter(std::string folder, std::vector<OpenOutput> outputs,
                           std::shared_ptr<RunState> state, const std::function<void()>& onSpace)
    : folder_(std::move(folder)),
      madeFolders_(folder_),
      outputs_(std::move(outputs)),
      state_(std::move(state)),
      lineQueue_(
          lineCapacity, 1, [this](const OutputValue& value) { writeLine(value); }, onSpace),
      imageQueue_(
          imageCapacity, imageThreads(), [this](const OutputValue& value) { writeImage(value); },
          onSpace) {}

OutputWriter::~OutputWriter() = default;

void OutputWriter::begin() {
    lineQueue_.begin();
    imageQueue_.begin();
    madeFolders_.keep();
}

void OutputWriter::add(OutputValue value) {
    WriteQueue& queue = hasPixels(value.value) ? imageQueue_ : lineQueue_;
    queue.add(std::move(value));
}

bool OutputWriter::hasSpace() const {
    return lineQueue_.hasSpace() && imageQueue_.hasSpace();
}

std::size_t OutputWriter::waiting() const {
    return lineQueue_.size() + imageQueue_.size();
}

std::size_t OutputWriter::capacity() const {
    return lineCapacity + imageCapacity;
}

void OutputWriter::finish() {
    lineQueue_.finish();
    imageQueue_.finish();
    if (state_->failure().empty()) {
        try {
            openLines();
        } catch (...) {
            state_->fail(currentMessage());
        }
    }
}

void OutputWriter::discard() {
    lineQueue_.discard();
    imageQueue_.discard();
    lines_.reset();
    madeFolders_.remove();
}

void OutputWriter::openLines() {
    if (lines_ == nullptr) {
        const std::string path = (fs::path(folder_) / "values.jsonl").string();
        madeFolders_.noteFile(path);
        lines_ = std::make_unique<AppendFile>(path);
    }
}

std::string OutputWriter::imagePath(const OutputValue& value) const {
    const EPixelType type = imageOf(value.value)->getPixelType();
    const bool isPng = CImagePersistence::CanSave(ImageFileFormat_Png, type);
    if (!isPng && !CImagePersistence::CanSave(ImageFileFormat_Tiff, type)) {
        const OpenOutput& output = outputs_[value.output];
        throw std::runtime_error(output.node + "." + output.pin +
                                 ": neither PNG nor TIFF can hold the pixel format " +
                                 CPixelTypeMapper::GetNameByPixelType(type) +
                                 "; put an ImageFormatConverter behind this pin");
    }
    std::array<char, 32> number{};
    std::snprintf(number.data(), number.size(), ".%06llu",
                  static_cast<unsigned long long>(value.number));
    const std::string name =
        fileNameOf(outputs_[value.output]) + number.data() + (isPng ? ".png" : ".tif");
    return (fs::path(folder_) / name).string();
}

void OutputWriter::writeImage(const OutputValue& value) {
    if (!state_->failure().empty()) {
        return;
    }
    try {
        const std::string path = imagePath(value);
        madeFolders_.noteFile(path);
        saveImage(GenICam::gcstring(path), asNodesSeeIt(imageOf(value.value)->getOrlixImage()));
    } catch (...) {
        state_->fail(currentMessage());
    }
}

void OutputWriter::writeLine(const OutputValue& value) {
    if (!state_->failure().empty()) {
        return;
    }
    const OpenOutput& output = outputs_[value.output];
    try {
        Json line = {{"node", output.node}, {"pin", output.pin}, {"update", value.update}};
        if (const auto error = errorOf(value.value)) {
            line["error"] = error->getDescription().str();
            addCauses(*error, line);
        } else {
            line["value"] = valueAsJson(value.value);
        }
        openLines();
        lines_->append(printJsonLine(line) + "\n");
    } catch (...) {
        state_->fail(currentMessage());
    }
}

}  // namespace Orlix::Host
