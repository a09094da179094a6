// What the tests of the engine share: descriptions from a few lines, and a port of memory that
// records and can fail.
#pragma once

#include <cstring>
#include <functional>
#include <string>
#include <vector>

#include "gcbase/gcexception.h"
#include "genapi/genapi.h"

namespace GenApiTest {

using namespace GenApi;

inline std::string document(const std::string& nodes) {
    return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
           "<RegisterDescription xmlns=\"http://www.genicam.org/GenApi/Version_1_1\" "
           "ModelName=\"Params\" VendorName=\"Tarvek\" StandardNameSpace=\"None\">\n" +
           nodes + "\n</RegisterDescription>\n";
}

inline CNodeMapRef load(const std::string& text) {
    return CNodeMapFactory(ContentType_Xml, text.data(), text.size(), CacheUsage_Ignore, false)
        .CreateNodeMap("Device", true);
}

// A register element: IntReg by default, on the port "P".
struct Reg {
    std::string name;
    int address = 0;
    std::string access = "RW";
    std::string more = "<Cachable>NoCache</Cachable>";
    std::string element = "IntReg";
    int length = 8;

    operator std::string() const {
        return "<" + element + " Name=\"" + name + "\"><Address>" + std::to_string(address) +
               "</Address><Length>" + std::to_string(length) + "</Length><AccessMode>" + access +
               "</AccessMode><pPort>P</pPort>" + more + "</" + element + ">\n";
    }
};

struct Access {
    char what;  // 'R' or 'W'
    std::int64_t address;
    std::int64_t length;
    bool operator==(const Access&) const = default;
};

// Records every access; a hook may throw or call back.
class RecordingPort : public CPortImpl {
public:
    void Read(void* pBuffer, std::int64_t Address, std::int64_t Length) override {
        accesses.push_back({'R', Address, Length});
        if (onRead) {
            onRead(Address);
        }
        memory.Read(pBuffer, Address, Length);
    }
    void Write(const void* pBuffer, std::int64_t Address, std::int64_t Length) override {
        accesses.push_back({'W', Address, Length});
        if (onWrite) {
            onWrite(Address);
        }
        memory.Write(pBuffer, Address, Length);
    }
    // As the device would see them, little endian.
    void poke(std::int64_t address, std::int64_t value, std::int64_t length = 8) {
        memory.Write(&value, address, length);
    }
    [[nodiscard]] std::int64_t peek(std::int64_t address, std::int64_t length = 8) {
        std::int64_t value = 0;
        memory.Read(&value, address, length);
        return value;
    }
    [[nodiscard]] std::size_t count(char what) const {
        std::size_t result = 0;
        for (const Access& access : accesses) {
            result += access.what == what ? 1 : 0;
        }
        return result;
    }

    CMemoryPort memory;
    std::vector<Access> accesses;
    std::function<void(std::int64_t)> onRead;
    std::function<void(std::int64_t)> onWrite;
};

// A map of the given nodes and the port "P", connected.
struct TestMap {
    explicit TestMap(const std::string& nodes) : map(load(document(nodes + "<Port Name=\"P\"/>"))) {
        map->Connect(&port, "P");
    }

    [[nodiscard]] INode* node(const char* name) const { return map->GetNode(name); }
    [[nodiscard]] CIntegerPtr integer(const char* name) const { return node(name); }
    [[nodiscard]] CFloatPtr real(const char* name) const { return node(name); }
    [[nodiscard]] CBooleanPtr boolean(const char* name) const { return node(name); }
    [[nodiscard]] CEnumerationPtr enumeration(const char* name) const { return node(name); }
    [[nodiscard]] CCommandPtr command(const char* name) const { return node(name); }
    [[nodiscard]] CStringPtr string(const char* name) const { return node(name); }
    [[nodiscard]] EAccessMode mode(const char* name) const { return node(name)->GetAccessMode(); }
    [[nodiscard]] const std::vector<LoadRemark>& remarks() const {
        return map->GetLoadReport().remarks;
    }
    // The reasons of all remarks about a node, one a line.
    [[nodiscard]] std::string reasons(const std::string& name) const {
        std::string result;
        for (const LoadRemark& remark : remarks()) {
            if (remark.name == name) {
                result += remark.element + ": " + remark.reason + "\n";
            }
        }
        return result;
    }

    RecordingPort port;
    CNodeMapRef map;
};

// The description of the exception that a call ends with, or "no exception".
template <typename Exception, typename Call>
std::string errorOf(Call call) {
    try {
        call();
    } catch (const Exception& error) {
        return error.GetDescription();
    }
    return "no exception";
}

}  // namespace GenApiTest
