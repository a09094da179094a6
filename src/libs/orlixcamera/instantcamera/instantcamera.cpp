#include "orlixcamera/instantcamera.h"

#include <utility>

#include "gcbase/gcexception.h"
#include "orlixcamera/instantcamera/instantcamera_impl.h"

namespace Orlix {

CInstantCamera::CInstantCamera()
    : impl_(std::make_unique<Impl>(*this)),
      GrabCameraEvents(impl_->GetCameraMap(), "GrabCameraEvents"),
      MaxNumBuffer(impl_->GetCameraMap(), "MaxNumBuffer"),
      OutputQueueSize(impl_->GetCameraMap(), "OutputQueueSize") {}

CInstantCamera::CInstantCamera(ICameraDevice* device, ECleanup cleanup) : CInstantCamera() {
    Attach(device, cleanup);
}

CInstantCamera::~CInstantCamera() {
    impl_->End();
}

void CInstantCamera::Attach(ICameraDevice* device, ECleanup cleanup) {
    impl_->Attach(device, cleanup);
}

bool CInstantCamera::IsDeviceAttached() const noexcept {
    return impl_->IsDeviceAttached();
}

ICameraDevice* CInstantCamera::DetachDevice() {
    return impl_->DetachDevice();
}

CDeviceInfo CInstantCamera::GetDeviceInfo() const {
    return impl_->GetDeviceInfo();
}

bool CInstantCamera::IsCameraDeviceRemoved() const noexcept {
    return impl_->GetSettings().isRemoved;
}

void CInstantCamera::Open() {
    impl_->Open();
}

bool CInstantCamera::IsOpen() const noexcept {
    return impl_->GetSettings().isOpen;
}

void CInstantCamera::Close() {
    impl_->Close();
}

GenApi::INodeMap& CInstantCamera::GetInstantCameraNodeMap() const {
    return impl_->GetCameraMap();
}

// The maps are kept by the camera, not by the pointer that ends here.
GenApi::INodeMap& CInstantCamera::GetNodeMap() const {
    return impl_->GetMaps()->GetDevice();
}

GenApi::INodeMap& CInstantCamera::GetTLNodeMap() const {
    return impl_->GetMaps()->GetLayer();
}

GenApi::INodeMap& CInstantCamera::GetStreamGrabberNodeMap() const {
    return impl_->GetMaps()->GetStream();
}

void CInstantCamera::RegisterImageEventHandler(CImageEventHandler* handler, ERegistrationMode mode,
                                               ECleanup cleanup) {
    impl_->RegisterImageEventHandler(handler, mode, cleanup);
}

bool CInstantCamera::DeregisterImageEventHandler(CImageEventHandler* handler) {
    return impl_->DeregisterImageEventHandler(handler);
}

void CInstantCamera::RegisterConfiguration(CConfigurationEventHandler* handler,
                                           ERegistrationMode mode, ECleanup cleanup) {
    impl_->RegisterConfiguration(handler, mode, cleanup);
}

bool CInstantCamera::DeregisterConfiguration(CConfigurationEventHandler* handler) {
    return impl_->DeregisterConfiguration(handler);
}

void CInstantCamera::RegisterCameraEventHandler(CCameraEventHandler* handler,
                                                const gcstring& nodeName,
                                                std::intptr_t userProvidedId,
                                                ECameraEventRegistrationMode mode, ECleanup cleanup,
                                                ECameraEventAvailability availability) {
    impl_->RegisterCameraEventHandler(handler, nodeName, userProvidedId, mode, cleanup,
                                      availability);
}

bool CInstantCamera::DeregisterCameraEventHandler(CCameraEventHandler* handler,
                                                  const gcstring& nodeName) {
    return impl_->DeregisterCameraEventHandler(handler, nodeName);
}

void CInstantCamera::DeregisterCameraEventHandlers() {
    impl_->DeregisterCameraEventHandlers();
}

std::uint64_t CInstantCamera::GetLastEventNumber() const noexcept {
    return impl_->GetEvents().GetLastNumber();
}

std::uint64_t CInstantCamera::GetEventNumber() const noexcept {
    return impl_->GetEvents().GetHandledNumber();
}

void CInstantCamera::StartGrabbing(EGrabStrategy strategy, EGrabLoop grabLoop) {
    Detail::GrabPlan plan;
    plan.strategy = strategy;
    plan.loop = grabLoop;
    impl_->StartGrabbing(plan);
}

void CInstantCamera::StartGrabbing(std::size_t maxImages, EGrabStrategy strategy,
                                   EGrabLoop grabLoop) {
    if (maxImages == 0) {
        throw GenICam::InvalidArgumentException("At least one image must be grabbed.", __FILE__,
                                                __LINE__);
    }
    Detail::GrabPlan plan;
    plan.strategy = strategy;
    plan.loop = grabLoop;
    plan.maxImages = maxImages;
    impl_->StartGrabbing(plan);
}

bool CInstantCamera::IsGrabbing() const noexcept {
    return impl_->GetSettings().isGrabbing;
}

std::uint64_t CInstantCamera::GetRunNumber() const noexcept {
    return impl_->GetRunNumber();
}

void CInstantCamera::StopGrabbing() {
    impl_->StopGrabbing();
}

bool CInstantCamera::RetrieveResult(unsigned int timeoutMilliseconds, CGrabResultPtr& result,
                                    ETimeoutHandling timeoutHandling) {
    return impl_->RetrieveResult(timeoutMilliseconds, result, timeoutHandling);
}

}  // namespace Orlix
