// What the tests of the emulated camera share: its features, by name, over any memory.
#pragma once

#include <string>

#include "genapi/genapi.h"

namespace EmulatedTest {

using namespace GenApi;

// `Memory` has the functions Read(address, buffer, length) and Write(address, buffer, length).
template <typename Memory>
class MemoryPort : public CPortImpl {
public:
    explicit MemoryPort(Memory& memory) : memory_(memory) {}
    void Read(void* pBuffer, std::int64_t Address, std::int64_t Length) override {
        memory_.Read(Address, pBuffer, static_cast<std::size_t>(Length));
    }
    void Write(const void* pBuffer, std::int64_t Address, std::int64_t Length) override {
        memory_.Write(Address, pBuffer, static_cast<std::size_t>(Length));
    }

private:
    Memory& memory_;
};

template <typename Memory>
class FeatureMap {
public:
    FeatureMap(const std::string& description, Memory& memory)
        : port_(memory),
          map_(CNodeMapFactory(ContentType_Xml, description.data(), description.size())
                   .CreateNodeMap()) {
        map_->Connect(&port_, "Device");
    }

    [[nodiscard]] INodeMap& map() const { return *map_; }
    [[nodiscard]] INode* node(const char* name) const { return map_->GetNode(name); }
    [[nodiscard]] CIntegerPtr integer(const char* name) const { return node(name); }
    [[nodiscard]] CFloatPtr real(const char* name) const { return node(name); }
    [[nodiscard]] CEnumerationPtr enumeration(const char* name) const { return node(name); }
    [[nodiscard]] EAccessMode mode(const char* name) const { return node(name)->GetAccessMode(); }
    [[nodiscard]] std::string get(const char* name) const {
        return CValuePtr(node(name))->ToString().c_str();
    }
    void set(const char* name, const char* text) const { CValuePtr(node(name))->FromString(text); }
    void execute(const char* name) const { CCommandPtr(node(name))->Execute(); }

private:
    MemoryPort<Memory> port_;
    CNodeMapRef map_;
};

}  // namespace EmulatedTest
