#include "genapi/nodemapfactory.h"

#include <string>
#include <vector>

#include "gcbase/gcexception.h"
#include "genapi/loader.h"
#include "genapi/nodemap.h"
#include "genapi/ziptext.h"

namespace GenApi {

namespace {

struct Source {
    EContentType_t contentType;
    std::string text;
};

Source sourceOf(EContentType_t contentType, const void* data, std::size_t length) {
    if (data == nullptr && length != 0) {
        throw GenICam::InvalidArgumentException("Node map description: no text passed.", __FILE__,
                                                __LINE__);
    }
    return {contentType,
            length == 0 ? std::string() : std::string(static_cast<const char*>(data), length)};
}

// Some deliver one form under the other's name.
std::string plainText(const Source& source) {
    const bool isZipped = source.contentType == ContentType_ZippedXml || Detail::isZip(source.text);
    return isZipped ? Detail::unzipDescription(source.text) : source.text;
}

}  // namespace

struct CNodeMapFactory::Impl {
    Detail::StringPolicy strings;
    std::vector<Source> sources;  // the description, then what is injected into it
    std::shared_ptr<const Detail::Description> description;

    const std::shared_ptr<const Detail::Description>& load(bool releaseText) {
        if (description == nullptr) {
            std::vector<std::string> texts;
            for (const Source& source : sources) {
                texts.push_back(plainText(source));
            }
            description = Detail::loadDescription(std::move(texts), strings);
        }
        if (releaseText) {
            sources.clear();
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
    impl_->strings =
        SuppressStringsOnLoad ? Detail::StringPolicy::dropLongTexts : Detail::StringPolicy::keepAll;
    impl_->sources.push_back(sourceOf(ContentType, pData, DataLength));
}

void CNodeMapFactory::InjectDescription(EContentType_t ContentType, const void* pData,
                                        std::size_t DataLength) {
    if (impl_->description != nullptr) {
        throw GenICam::LogicalErrorException(
            "Node map description: nothing can be injected after the first map was made.", __FILE__,
            __LINE__);
    }
    impl_->sources.push_back(sourceOf(ContentType, pData, DataLength));
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
