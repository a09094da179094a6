// How ImageFormatConverter lives in a recipe: the pixel format as a number, the other enumerations
// as words.
#include <algorithm>
#include <iterator>
#include <limits>

#include "gcbase/gcexception.h"
#include "imageformatconverter/imageformatconverterimpl.h"
#include "imageformatconverter/names.h"
#include "orlixdataprocessingcore/core/settings.h"

namespace Plugin::OrlixVCellPackageBase {

using namespace ImageFormatConverterNames;
using Orlix::DataProcessing::Core::ISettings;
using Orlix::DataProcessing::Core::NodeState;
using Orlix::DataProcessing::Core::SettingsPath;

namespace {

struct Word {
    std::int64_t value;
    const char* name;
};

constexpr Word orientationWords[] = {
    {Orlix::OutputOrientation_BottomUp, "BottomUp"},
    {Orlix::OutputOrientation_TopDown, "TopDown"},
    {Orlix::OutputOrientation_Unchanged, "Unchanged"},
};

constexpr Word alignmentWords[] = {
    {Orlix::OutputBitAlignment_LsbAligned, "LsbAligned"},
    {Orlix::OutputBitAlignment_MsbAligned, "MsbAligned"},
};

template <std::size_t size>
const char* toName(const Word (&words)[size], std::int64_t value, const char* failure) {
    const auto* word = std::find_if(std::begin(words), std::end(words),
                                    [&](const Word& w) { return w.value == value; });
    if (word == std::end(words)) {
        throw GenICam::InvalidArgumentException(failure, __FILE__, __LINE__);
    }
    return word->name;
}

template <std::size_t size>
std::int64_t toValue(const Word (&words)[size], const gcstring& name, const char* failure) {
    const auto* word = std::find_if(std::begin(words), std::end(words),
                                    [&](const Word& w) { return name == w.name; });
    if (word == std::end(words)) {
        throw GenICam::InvalidArgumentException(failure, __FILE__, __LINE__);
    }
    return word->value;
}

// Pixel types have 32 bits. A greater number must not turn into another type by losing its upper
// bits; all ones is none that the library knows.
std::int64_t toPixelType(std::uint64_t number) {
    return std::int64_t{static_cast<std::uint32_t>(
        std::min<std::uint64_t>(number, std::numeric_limits<std::uint32_t>::max()))};
}

void checkStore(const std::shared_ptr<ISettings>& store) {
    if (store == nullptr) {
        throw GenICam::InvalidArgumentException("ptrSettings is a nullptr", __FILE__, __LINE__);
    }
}

}  // namespace

void ImageFormatConverter::saveSettings(const std::shared_ptr<ISettings>& ptrSettings) {
    NodeLock lock(*impl_->lock);
    checkStore(ptrSettings);
    if (getState() != NodeState::Stopped) {
        throw GenICam::RuntimeException("Node must be in stopped state to serialize.", __FILE__,
                                        __LINE__);
    }
    ptrSettings->setUnsigned(SettingsPath(outputPixelFormat), getOutputPixelFormat());
    ptrSettings->setString(SettingsPath(outputOrientation),
                           toName(orientationWords, getOutputOrientationEnums(),
                                  "Unknown output orientation value found."));
    ptrSettings->setString(SettingsPath(outputBitAlignment),
                           toName(alignmentWords, getOutputBitAlignment(),
                                  "Unknown output bit alignment value found."));
    ptrSettings->setInteger(SettingsPath(outputPaddingX), getOutputPaddingX());
    ptrSettings->setInteger(SettingsPath(maxNumThreads), getMaxNumThreads());
}

void ImageFormatConverter::loadSettings(const std::shared_ptr<ISettings>& ptrSettings) {
    NodeLock lock(*impl_->lock);
    checkStore(ptrSettings);
    if (getState() != NodeState::Stopped) {
        throw GenICam::RuntimeException("Node must be in stopped state to deserialize.", __FILE__,
                                        __LINE__);
    }
    loadKeys(*ptrSettings);
    lock.unlock();
    notifySettingsChanged();
}

// A recipe with fewer keys keeps the present values. The ports tell the node map of each change.
void ImageFormatConverter::loadKeys(ISettings& store) {
    if (const SettingsPath path(outputPixelFormat); store.contains(path)) {
        impl_->outputPixelFormatPort->setValue(toPixelType(store.getUnsigned(path)), false);
    }
    if (const SettingsPath path(outputOrientation); store.contains(path)) {
        impl_->outputOrientationPort->setValue(
            toValue(orientationWords, store.getString(path),
                    "Unknown symbolic name of output orientation found."),
            false);
    }
    if (const SettingsPath path(outputBitAlignment); store.contains(path)) {
        impl_->outputBitAlignmentPort->setValue(
            toValue(alignmentWords, store.getString(path),
                    "Unknown symbolic name of output bit alignment found."),
            false);
    }
    if (const SettingsPath path(outputPaddingX); store.contains(path)) {
        impl_->outputPaddingXPort->setValue(store.getInteger(path), false);
    }
    if (const SettingsPath path(maxNumThreads); store.contains(path)) {
        impl_->maxNumThreadsPort->setValue(store.getInteger(path), false);
    }
}

}  // namespace Plugin::OrlixVCellPackageBase
