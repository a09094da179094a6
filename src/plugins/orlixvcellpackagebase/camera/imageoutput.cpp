// From a grab result to a job of the graph, on the library's grab thread.
#include <algorithm>
#include <cstdint>
#include <utility>

#include "camera/cameraimpl.h"
#include "camera/log.h"
#include "camera/names.h"
#include "orlixcamera/grabresultptr.h"
#include "orlixcamera/nodeparameter.h"
#include "orlixcamera/orliximage.h"
#include "orlixcamera/pixeltypemapper.h"
#include "orlixdataprocessingcore/core/boolean.h"
#include "orlixdataprocessingcore/core/bufferprovider.h"
#include "orlixdataprocessingcore/core/graphupdate.h"
#include "orlixdataprocessingcore/core/image.h"

namespace Plugin::OrlixVCellPackageBase {

namespace Core = Orlix::DataProcessing::Core;
namespace Utils = Orlix::DataProcessing::Utils;
using Core::Image;
using Utils::COWPtr;
using Utils::DateTime;
using Utils::Variant;

namespace {

constexpr char corruptText[] = "The grabbed image is corrupt.";

// Why a frame failed, in the library's words if it has any.
gcstring describeFailure(const Orlix::CGrabResultPtr& result) {
    gcstring text = result->GetErrorDescription();
    return text.empty() ? gcstring(corruptText) : text;
}

Variant makeErrorImage(const std::shared_ptr<Core::IError>& error) {
    return COWPtr<Image>::make(error);
}

// What the header of a frame says, or should say.
struct Geometry {
    Orlix::EPixelType pixelType;
    std::uint32_t width;
    std::uint32_t height;
};

// 0, which fails in the copy, for a size that no picture has: cut, it would be that of another.
std::uint32_t readSize(GenApi::INodeMap& map, const char* name) {
    const std::int64_t size = Orlix::CIntegerParameter(map, name).GetValueOrDefault(0);
    return std::in_range<std::uint32_t>(size) ? static_cast<std::uint32_t>(size) : 0;
}

// The stream grabber's size wins over the device's, where it has one.
std::size_t readPayloadSize(const Orlix::CInstantCamera& camera) {
    constexpr char name[] = "PayloadSize";
    std::int64_t size = Orlix::CIntegerParameter(camera.GetNodeMap(), name).GetValueOrDefault(0);
    const Orlix::CIntegerParameter ofStream(camera.GetStreamGrabberNodeMap(), name);
    const std::int64_t streamSize = ofStream.GetValueOrDefault(0);
    if (ofStream.IsValid()) {
        size = streamSize;
    }
    return static_cast<std::size_t>(size);
}

// A geometry that is defined is replaced by what the camera is set to now; one that is not stays,
// and fails in the copy.
Geometry readGeometry(const Orlix::CInstantCamera& camera, const Orlix::CGrabResultPtr& result) {
    const Geometry sent{result->GetPixelType(), result->GetWidth(), result->GetHeight()};
    if (sent.pixelType == Orlix::PixelType_Undefined || sent.width == 0 || sent.height == 0) {
        return sent;
    }
    GenApi::INodeMap& map = camera.GetNodeMap();
    const gcstring format = Orlix::CEnumParameter(map, "PixelFormat").GetValueOrDefault("Mono8");
    return {Orlix::CPixelTypeMapper::GetOrlixPixelTypeByName(format.c_str()),
            readSize(map, "Width"), readSize(map, "Height")};
}

}  // namespace

// Nothing passes into the library: a frame that can't be handed on is lost, and the next one comes.
void Camera::OnImageGrabbed(Orlix::CInstantCamera& /*camera*/,
                            const Orlix::CGrabResultPtr& grabResult) {
    try {
        outputFrame(grabResult);
    } catch (...) {
        Utils::logCaught(CameraLog::getSubject(this), "grabbing an image");
    }
}

// The lock is free from the update on, so that a slow graph blocks no parameter.
void Camera::outputFrame(const Orlix::CGrabResultPtr& grabResult) {
    Core::PinValues outputs;
    Variant image;
    bool corrupt = false;
    fillImageOutput(grabResult, image, corrupt);
    readChunkValues(grabResult, outputs);
    const auto update = getUpdateFactory()->createUpdate(this, nullptr);
    if (update == nullptr) {
        return;
    }
    outputs[CameraNames::imagePin] = std::move(image);
    if (getFixCorruptImages() == FixCorruptImages::On) {
        outputs[CameraNames::imageCorruptPin] = COWPtr<Core::Boolean>::make(corrupt);
    }
    if (isOfThisRun(grabResult) && waitUntilSpaceAvailable()) {
        createJob(update, std::move(outputs), {});
    }
}

// The library's thread may have been held up before it came here: the frame of a run that was
// stopped is none of the next, for whose space it has waited. Asked behind the making of the
// update: one that was made before the next run began is left out by that.
bool Camera::isOfThisRun(const Orlix::CGrabResultPtr& grabResult) const {
    return !grabResult.IsValid() || grabResult->GetRunNumber() > impl_->lastRunOfFrames;
}

// There is a value for every frame: pixels that refer to the library's buffer, or an error.
void Camera::fillImageOutput(const Orlix::CGrabResultPtr& grabResult, Variant& image,
                             bool& corrupt) {
    image.reset();
    corrupt = false;
    const Guard guard = lockNode();
    try {
        if (grabResult->GrabSucceeded()) {
            Orlix::COrlixImage picture;
            picture.AttachGrabResultBuffer(grabResult);
            image = COWPtr<Image>::make(picture, getBufferProvider(), false);
            return;
        }
        corrupt = true;
        if (impl_->fixCorruptImages == FixCorruptImages::On) {
            image = fixCorruptedImage(grabResult);
        } else {
            image = makeErrorImage(std::make_shared<Core::InvalidValueError>(
                describeFailure(grabResult), DateTime::now()));
        }
    } catch (...) {
        corrupt = true;
        image =
            makeErrorImage(Utils::makeErrorOfCaught("An error occurred while grabbing an image."));
    }
}

// A failed frame often has a usable buffer with a damaged header: the picture is made of what the
// camera is set to.
Variant Camera::fixCorruptedImage(const Orlix::CGrabResultPtr& grabResult) {
    try {
        const Orlix::CInstantCamera& camera = impl_->instantCamera;
        // Never beyond the buffer, whatever the camera says now.
        const std::size_t payload = std::min(readPayloadSize(camera), grabResult->GetBufferSize());
        const Geometry geometry = readGeometry(camera, grabResult);
        Orlix::COrlixImage picture;
        picture.CopyImage(grabResult->GetBuffer(), payload, geometry.pixelType, geometry.width,
                          geometry.height, grabResult->GetPaddingX(),
                          Orlix::ImageOrientation_TopDown);
        return COWPtr<Image>::make(picture, getBufferProvider(), false);
    } catch (...) {
        return makeErrorImage(Utils::makeErrorOfCaught(describeFailure(grabResult).c_str()));
    }
}

}  // namespace Plugin::OrlixVCellPackageBase
