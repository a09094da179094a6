// How ImageFormatConverter lives in a recipe: the pixel format as a number, the other enumerations
// as words.
#include <string>
#include <utility>

#include "anythingtonodemapadapter/enumparameterport.h"
#include "gcbase/gcexception.h"
#include "imageformatconverter/imageformatconverterimpl.h"
#include "imageformatconverter/names.h"
#include "imageformatconverter/words.h"
#include "orlixdataprocessingcore/core/settings.h"

namespace Plugin::OrlixVCellPackageBase {

using namespace ImageFormatConverterNames;
using Orlix::DataProcessing::Core::ISettings;
using Orlix::DataProcessing::Core::NodeState;
using Orlix::DataProcessing::Core::SettingsPath;

namespace {

// A greater number must not turn into another type by losing its upper bits.
std::int64_t readPixelType(ISettings& store, const SettingsPath& path) {
    const std::uint64_t number = store.getUnsigned(path);
    if (!std::in_range<std::uint32_t>(number)) {
        AnythingToNodeMapAdapter::throwNotOf32Bits(outputPixelFormat,
                                                   std::to_string(number).c_str());
    }
    return static_cast<std::int64_t>(number);
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
                           toOrientationWord(getOutputOrientationEnums()));
    ptrSettings->setString(SettingsPath(outputBitAlignment),
                           toBitAlignmentWord(getOutputBitAlignment()));
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
        impl_->outputPixelFormatPort->setValue(readPixelType(store, path), false);
    }
    if (const SettingsPath path(outputOrientation); store.contains(path)) {
        impl_->outputOrientationPort->setValue(toOrientation(store.getString(path)), false);
    }
    if (const SettingsPath path(outputBitAlignment); store.contains(path)) {
        impl_->outputBitAlignmentPort->setValue(toBitAlignment(store.getString(path)), false);
    }
    if (const SettingsPath path(outputPaddingX); store.contains(path)) {
        impl_->outputPaddingXPort->setValue(store.getInteger(path), false);
    }
    if (const SettingsPath path(maxNumThreads); store.contains(path)) {
        impl_->maxNumThreadsPort->setValue(store.getInteger(path), false);
    }
}

}  // namespace Plugin::OrlixVCellPackageBase
