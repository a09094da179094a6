// What an access through a node map costs, and what making one costs. The description is of the
// kind that is generated at run time: value, range and state registers, nothing cached.
#include <benchmark/benchmark.h>

#include <cstring>
#include <string>

#include "genapi/genapi.h"

namespace {

using namespace GenApi;

// Answers from 64 bytes at once, so that the engine is what is measured.
class InstantPort : public CPortImpl {
public:
    void Read(void* pBuffer, std::int64_t Address, std::int64_t Length) override {
        std::memcpy(pBuffer, words_ + Address / 8 % 8, static_cast<std::size_t>(Length));
    }
    void Write(const void* pBuffer, std::int64_t Address, std::int64_t Length) override {
        std::memcpy(words_ + Address / 8 % 8, pBuffer, static_cast<std::size_t>(Length));
    }

private:
    // Value, maximum, minimum, increment, available, locked.
    std::int64_t words_[8] = {5, 100, 0, 1, 1, 0, 0, 0};
};

std::string registerText(const std::string& name, int address, const char* mode) {
    return "<IntReg Name=\"" + name + "\"><Visibility>Beginner</Visibility><Address>" +
           std::to_string(address) + "</Address><Length>8</Length><AccessMode>" + mode +
           "</AccessMode><pPort>" +
           "Port</pPort><Cachable>NoCache</Cachable><Sign>Unsigned</Sign>"
           "<Endianess>LittleEndian</Endianess></IntReg>\n";
}

// Seven nodes.
std::string parameterText(const std::string& name) {
    return "<Integer Name=\"" + name +
           "\"><ToolTip>A parameter of the benchmark.</ToolTip>"
           "<Description>A parameter of the "
           "benchmark.</Description><Visibility>Beginner</Visibility>"
           "<pIsAvailable>" +
           name + "IsAvailable</pIsAvailable><pIsLocked>" + name +
           "IsLocked</pIsLocked><Streamable>Yes</Streamable><pValue>" + name +
           "Value</pValue><pMin>" + name + "Min</pMin><pMax>" + name + "Max</pMax><pInc>" + name +
           "Inc</pInc><Representation>PureNumber</Representation></Integer>\n" +
           registerText(name + "Value", 0, "RW") + registerText(name + "Max", 8, "RO") +
           registerText(name + "Min", 16, "RO") + registerText(name + "Inc", 24, "RO") +
           registerText(name + "IsAvailable", 32, "RO") + registerText(name + "IsLocked", 40, "RO");
}

std::string description(int parameters) {
    std::string text =
        "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<RegisterDescription "
        "xmlns=\"http://www.genicam.org/GenApi/Version_1_1\" ModelName=\"Params\">\n";
    for (int i = 0; i < parameters; ++i) {
        text += parameterText("Parameter" + std::to_string(i));
    }
    return text + "<Port Name=\"Port\"/>\n</RegisterDescription>\n";
}

CNodeMapRef makeMap(const std::string& text) {
    return CNodeMapFactory(ContentType_Xml, text.data(), text.size(), CacheUsage_Ignore, false)
        .CreateNodeMap("Device", true);
}

struct Fixture {
    Fixture() : map(makeMap(description(8))) { map->Connect(&port, "Port"); }
    InstantPort port;
    CNodeMapRef map;
    CIntegerPtr integer = map->GetNode("Parameter3");
};

// The mode, with both state registers, and the value: what a host does to show a parameter.
void ReadIntegerWithItsMode(benchmark::State& state) {
    Fixture fixture;
    for (auto _ : state) {
        benchmark::DoNotOptimize(fixture.integer->GetAccessMode());
        benchmark::DoNotOptimize(fixture.integer->GetValue());
    }
}
BENCHMARK(ReadIntegerWithItsMode);

void ReadInteger(benchmark::State& state) {
    Fixture fixture;
    for (auto _ : state) {
        benchmark::DoNotOptimize(fixture.integer->GetValue());
    }
}
BENCHMARK(ReadInteger);

// Both state registers, the three of the range, the value.
void WriteInteger(benchmark::State& state) {
    Fixture fixture;
    std::int64_t value = 0;
    for (auto _ : state) {
        fixture.integer->SetValue(value++ % 100);
    }
}
BENCHMARK(WriteInteger);

void FindNode(benchmark::State& state) {
    Fixture fixture;
    const gcstring name = "Parameter5Value";
    for (auto _ : state) {
        benchmark::DoNotOptimize(fixture.map->GetNode(name));
    }
}
BENCHMARK(FindNode);

// The lock alone, to be taken off the others.
void LockAndUnlock(benchmark::State& state) {
    CLock lock;
    for (auto _ : state) {
        const AutoLock hold(lock);
    }
}
BENCHMARK(LockAndUnlock);

// From text to a connected map; the argument is the number of nodes.
void BuildMap(benchmark::State& state) {
    const std::string text = description(static_cast<int>(state.range(0)) / 7);
    InstantPort port;
    for (auto _ : state) {
        const CNodeMapRef map = makeMap(text);
        map->Connect(&port, "Port");
        benchmark::DoNotOptimize(map->GetNumNodes());
    }
    state.SetBytesProcessed(static_cast<std::int64_t>(text.size()) * state.iterations());
}
BENCHMARK(BuildMap)->Arg(60)->Arg(600)->Arg(6000)->Unit(benchmark::kMicrosecond);

}  // namespace
