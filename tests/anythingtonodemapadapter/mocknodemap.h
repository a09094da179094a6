// A node map that only remembers what a real port asks of it.
#pragma once

#include <gmock/gmock.h>

#include "genapi/inodemap.h"
#include "genapi/iport.h"
#include "genapi/loadreport.h"

namespace AnythingToNodeMapAdapter::Test {

class MockNodeMap : public GenApi::INodeMap {
public:
    using gcstring = GenICam::gcstring;

    MOCK_METHOD(void, GetNodes, (GenApi::NodeList_t&), (const, override));
    MOCK_METHOD(GenApi::INode*, GetNode, (const gcstring&), (const, override));
    MOCK_METHOD(std::uint64_t, GetNumNodes, (), (const, override));
    MOCK_METHOD(void, InvalidateNodes, (), (const, override));
    MOCK_METHOD(bool, Connect, (GenApi::IPort*, const gcstring&), (const, override));
    MOCK_METHOD(bool, Connect, (GenApi::IPort*), (const, override));
    MOCK_METHOD(gcstring, GetDeviceName, (), (const, override));
    MOCK_METHOD(void, Poll, (std::int64_t), (override));
    MOCK_METHOD(GenApi::CLock&, GetLock, (), (const, override));
    MOCK_METHOD(const GenApi::LoadReport&, GetLoadReport, (), (const, override));
    MOCK_METHOD(gcstring, GetModelName, (), (const, override));
    MOCK_METHOD(gcstring, GetVendorName, (), (const, override));
    MOCK_METHOD(gcstring, GetToolTip, (), (const, override));
    MOCK_METHOD(gcstring, GetStandardNameSpace, (), (const, override));
    MOCK_METHOD(gcstring, GetProductGuid, (), (const, override));
    MOCK_METHOD(gcstring, GetVersionGuid, (), (const, override));
    MOCK_METHOD(GenApi::Version_t, GetSchemaVersion, (), (const, override));
    MOCK_METHOD(GenApi::Version_t, GetDeviceVersion, (), (const, override));
    void AddReference() const noexcept override {}
    void RemoveReference() const noexcept override {}
};

}  // namespace AnythingToNodeMapAdapter::Test
