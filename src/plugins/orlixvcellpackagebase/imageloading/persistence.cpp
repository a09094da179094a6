// How ImageLoading lives in a recipe. A recipe that moves together with its image folder must go
// on working, so the source path is stored relative to the recipe's folder where possible.
#include <filesystem>
#include <string>
#include <system_error>
#include <utility>

#include "gcbase/gcexception.h"
#include "imageloading/imageloadingimpl.h"
#include "imageloading/log.h"
#include "imageloading/names.h"
#include "imageloading/paths.h"
#include "orlixdataprocessingcore/core/settings.h"

namespace Plugin::OrlixVCellPackageBase {

namespace fs = std::filesystem;
using namespace ImageLoadingLog;
using namespace ImageLoadingNames;
using Orlix::DataProcessing::Core::ISettings;
using Orlix::DataProcessing::Core::NodeState;
using Orlix::DataProcessing::Core::SettingsPath;

namespace {

fs::path toPath(const gcstring& text) {
    return fs::path(text.str());
}

bool existsChecked(const fs::path& path) {
    std::error_code error;
    const bool exists = fs::exists(path, error);
    if (error) {
        throw fs::filesystem_error("exists", path, error);
    }
    return exists;
}

// Relative paths of the whole process resolve against the recipe's folder from here on.
void enterFolder(const fs::path& path) {
    std::error_code error;
    fs::current_path(path, error);
    if (error) {
        throw fs::filesystem_error("current_path(const path&)", path, error);
    }
}

// Where a relative path of a recipe leads, free of links and dots if there is something.
gcstring resolve(const fs::path& base, const fs::path& relative) {
    const fs::path joined = base / relative;
    std::error_code error;
    const fs::path canonical = fs::canonical(joined, error);
    return error ? toPreferredText(joined) : gcstring(canonical.string());
}

gcstring makeRelative(const gcstring& path, const fs::path& base) {
    // A relative path whose first folder is absent would stay relative, and have no way from base.
    const fs::path source = fs::weakly_canonical(fs::absolute(toPath(path)));
    return gcstring(source.lexically_relative(fs::weakly_canonical(fs::absolute(base))).string());
}

void checkStore(const std::shared_ptr<ISettings>& store) {
    if (store == nullptr) {
        throw GenICam::InvalidArgumentException("ptrSettings is a null pointer (nullptr).",
                                                __FILE__, __LINE__);
    }
}

// Whatever does not fit would turn into another value on its way into the setting.
[[noreturn]] void refuse(const gcstring& key, std::int64_t value, const char* need) {
    const std::string message =
        "Can't load \"" + key.str() + "\": " + std::to_string(value) + " is no " + need + ".";
    throw GenICam::InvalidArgumentException(message.c_str(), __FILE__, __LINE__);
}

// The system would take a path as ending at its first null character.
gcstring readSourcePath(ISettings& store) {
    const gcstring path = store.getString(SettingsPath(sourcePathKey));
    if (path.find('\0') != gcstring::npos) {
        const std::string message =
            "Can't load \"" + sourcePathKey.str() + "\": the path contains a null character.";
        throw GenICam::InvalidArgumentException(message.c_str(), __FILE__, __LINE__);
    }
    return path;
}

// Numbers without an order of their own are kept, as they are by the setter.
SortBy readSortBy(ISettings& store) {
    const std::int64_t value = store.getInteger(SettingsPath(sortByKey));
    if (!std::in_range<std::int32_t>(value)) {
        refuse(sortByKey, value, "number of 32 bits");
    }
    return static_cast<SortBy>(value);
}

// Saved unsigned and read signed, as recipes have it.
std::uint64_t readFramesPerSecond(ISettings& store) {
    const std::int64_t value = store.getInteger(SettingsPath(framesPerSecondKey));
    if (value < 0) {
        refuse(framesPerSecondKey, value, "number of frames");
    }
    return static_cast<std::uint64_t>(value);
}

}  // namespace

void ImageLoading::saveSettings(const std::shared_ptr<ISettings>& ptrSettings) {
    NodeLock lock(*impl_->lock);
    checkStore(ptrSettings);
    if (getState() != NodeState::Stopped) {
        throw GenICam::RuntimeException("Node must be in stopped state to serialize.", __FILE__,
                                        __LINE__);
    }
    saveSourcePath(*ptrSettings);
    ptrSettings->setInteger(SettingsPath(sortByKey), getSortBy());
    ptrSettings->setUnsigned(SettingsPath(numberOfImagesKey), getNumberOfImages());
    ptrSettings->setUnsigned(SettingsPath(framesPerSecondKey), getFramesPerSecond());
    ptrSettings->setUnsigned(SettingsPath(numberOfRunsKey), getNumberOfRuns());
    ptrSettings->setBool(SettingsPath(runContinuouslyKey), getRunContinuously());
}

void ImageLoading::saveSourcePath(ISettings& store) const {
    fs::path base;
    bool relative = false;
    if (!impl_->storeAbsolutePath && store.hasBasePath()) {
        const gcstring text = store.getBasePath();
        createLogEntry(Severitiy::Debug, category(), "ImageLoading: Load settings from \"%s\"",
                       text.c_str());
        base = toPath(text).make_preferred();
        relative = existsChecked(base);
    }
    if (!impl_->sourcePath.empty()) {
        store.setString(SettingsPath(sourcePathKey),
                        relative ? makeRelative(impl_->sourcePath, base) : impl_->sourcePath);
    }
}

void ImageLoading::loadSettings(const std::shared_ptr<ISettings>& ptrSettings) {
    NodeLock lock(*impl_->lock);
    checkStore(ptrSettings);
    if (getState() != NodeState::Stopped) {
        throw GenICam::RuntimeException("Node must be in stopped state to deserialize.", __FILE__,
                                        __LINE__);
    }
    // The path of a former recipe must not survive a recipe without one.
    impl_->sourcePath.clear();
    createLogEntry(Severitiy::Debug, category(), "ImageLoading: Load settings...");
    loadSourcePath(*ptrSettings);
    loadNumbers(*ptrSettings);
}

void ImageLoading::loadSourcePath(ISettings& store) {
    fs::path base;
    bool baseExists = false;
    if (store.hasBasePath()) {
        base = toPath(store.getBasePath());
        baseExists = existsChecked(base);
        enterFolder(base);
        createLogEntry(Severitiy::Trace, category(), "ImageLoading: basePath : '%s'", base.c_str());
    }
    if (!store.contains(SettingsPath(sourcePathKey))) {
        return;
    }
    const fs::path stored = toPath(readSourcePath(store));
    if (baseExists && stored.is_relative()) {
        const gcstring resolved = resolve(base, stored);
        setSourcePath(resolved);
        setStoreAbsolutePath(false);
        createLogEntry(Severitiy::Trace, category(),
                       "ImageLoading: Using relative path result in source Path : '%s'",
                       resolved.c_str());
        return;
    }
    setSourcePath(toPreferredText(stored));
    setStoreAbsolutePath(true);
    createLogEntry(Severitiy::Trace, category(),
                   "ImageLoading: Using absolute path for source : '%s'", stored.c_str());
}

void ImageLoading::loadNumbers(ISettings& store) {
    if (store.contains(SettingsPath(sortByKey))) {
        setSortBy(readSortBy(store));
    }
    if (store.contains(SettingsPath(numberOfImagesKey))) {
        setNumberOfImages(store.getUnsigned(SettingsPath(numberOfImagesKey)));
    }
    if (store.contains(SettingsPath(framesPerSecondKey))) {
        setFramesPerSecond(readFramesPerSecond(store));
    }
    if (store.contains(SettingsPath(numberOfRunsKey))) {
        setNumberOfRuns(store.getUnsigned(SettingsPath(numberOfRunsKey)));
    }
    if (store.contains(SettingsPath(runContinuouslyKey))) {
        setRunContinuously(store.getBool(SettingsPath(runContinuouslyKey)));
    }
}

}  // namespace Plugin::OrlixVCellPackageBase
