// CNodeMapFactory, which turns a description's text into node maps. All maps of one factory share
// the parsed description; their values, caches and connections are their own.
#pragma once

#include <memory>

#include "genapi/nodemapref.h"

namespace GenApi {

// One object may be used by one thread at a time. The text is copied at construction and parsed by
// the first CreateNodeMap.
class GENAPI_API CNodeMapFactory {
public:
    // Length in bytes, of the text or of a zip container with one XML file, stored or deflated; a
    // container that is broken or too large is a RuntimeException of the first CreateNodeMap.
    // CacheUsage has no effect. SuppressStringsOnLoad leaves tool tips and
    // descriptions out of the maps.
    CNodeMapFactory(EContentType_t ContentType, const void* pData, std::size_t DataLength,
                    ECacheUsage_t CacheUsage = CacheUsage_Automatic,
                    bool SuppressStringsOnLoad = false);
    ~CNodeMapFactory();
    // Adds the nodes of another description, before the first map is made; LogicalErrorException
    // afterwards. Categories of one name share their features. Of other nodes of one name the one
    // with the higher MergePriority (1, 0 or -1) counts, which the load report tells; two of one
    // priority are a RuntimeException of the first CreateNodeMap. The root's attributes are those
    // of the first description.
    void InjectDescription(EContentType_t ContentType, const void* pData, std::size_t DataLength);
    CNodeMapFactory(CNodeMapFactory&&) noexcept;
    CNodeMapFactory& operator=(CNodeMapFactory&&) noexcept;

    // A text that is not well-formed, is no description or is of a newer schema raises
    // RuntimeException with line and column. Single broken nodes are left out and stand in the
    // map's load report. ReleaseTextIfLast lets the factory's copy of the text go; further maps
    // still work, since the parsed form stays.
    [[nodiscard]] CNodeMapRef CreateNodeMap(const gcstring& DeviceName = "Device",
                                            bool ReleaseTextIfLast = true);
    // The map uses the caller's lock, which must outlive it.
    [[nodiscard]] CNodeMapRef CreateNodeMap(CLock& Lock, const gcstring& DeviceName = "Device",
                                            bool ReleaseTextIfLast = true);

    // A valid map without nodes.
    [[nodiscard]] static CNodeMapRef CreateEmptyNodeMap(const gcstring& DeviceName = "Device");

private:
    struct Impl;
    std::unique_ptr<Impl> impl_;
};

}  // namespace GenApi
