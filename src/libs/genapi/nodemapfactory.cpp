#include "genapi/nodemapfactory.h"

#include "gcbase/gcexception.h"
#include "genapi/loader.h"
#include "genapi/nodemap.h"
#include "genapi/ziptext.h"

namespace GenApi {

struct CNodeMapFactory::Impl {
    EContentType_t contentType;
    Detail::StringPolicy strings;
    std::string text;
    std::shared_ptr<const Detail::Description> description;

    const std::shared_ptr<const Detail::Description>& load(bool releaseText) {
        if (description == nullptr) {
            // Some deliver one form under the other's name.
            if (contentType == ContentType_ZippedXml || Detail::isZip(text)) {
                text = Detail::unzipDescription(text);
                contentType = ContentType_Xml;
            }
            description = Detail::loadDescription(text, strings);
        }
        if (releaseText) {
            text = {};
        }
        return description;
    }

    CNodeMapRef create(CLock* lock, const gcstring& deviceName, bool releaseText) {
        return CNodeMapRef(new Detail::NodeMap(load(releaseText), deviceName, lock), deviceName);
    }
};

CNodeMapFactory::CNodeMapFactory(EContentType_t ContentType, const void* pData,
                                 std::size_t DataLength, ECacheUsage_t, bool SuppressStringsOnLoad)
    : impl_(std::make_unique<Impl>()) {
    if (pData == nullptr && DataLength != 0) {
        throw GenICam::InvalidArgumentException("Node map description: no text passed.", __FILE__,
                                                __LINE__);
    }
    impl_->contentType = ContentType;
    impl_->strings =
        SuppressStringsOnLoad ? Detail::StringPolicy::dropLongTexts : Detail::StringPolicy::keepAll;
    if (DataLength != 0) {
        impl_->text.assign(static_cast<const char*>(pData), DataLength);
    }
}

CNodeMapFactory::~CNodeMapFactory() = default;
CNodeMapFactory::CNodeMapFactory(CNodeMapFactory&&) noexcept = default;
CNodeMapFactory& CNodeMapFactory::operator=(CNodeMapFactory&&) noexcept = default;

CNodeMapRef CNodeMapFactory::CreateNodeMap(const gcstring& DeviceName, bool ReleaseTextIfLast) {
    return impl_->create(nullptr, DeviceName, ReleaseTextIfLast);
}

CNodeMapRef CNodeMapFactory::CreateNodeMap(CLock& Lock, const gcstring& DeviceName,
                                           bool ReleaseTextIfLast) {
    return impl_->create(&Lock, DeviceName, ReleaseTextIfLast);
}

CNodeMapRef CNodeMapFactory::CreateEmptyNodeMap(const gcstring& DeviceName) {
    static const std::shared_ptr<const Detail::Description> empty =
        std::make_shared<const Detail::Description>();
    return CNodeMapRef(new Detail::NodeMap(empty, DeviceName, nullptr), DeviceName);
}

}  // namespace GenApi
