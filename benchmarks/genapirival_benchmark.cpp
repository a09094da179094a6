// The engine beside Aravis' node tree on a large description: genapi_benchmark [FILE] [options].
// Without a file, one of about 1 MB and 3,000 nodes is made; accesses are always measured on that.
#include <benchmark/benchmark.h>
#include <malloc.h>

#include <chrono>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "aravistree.h"
#include "genapi/genapi.h"

namespace {

using namespace GenApi;
using OrlixBenchmark::AravisTree;

// Always at hand, whatever the address.
class RamPort : public CPortImpl {
public:
    void Read(void* pBuffer, std::int64_t Address, std::int64_t Length) override {
        std::memcpy(pBuffer, place(Address), static_cast<std::size_t>(Length));
    }
    void Write(const void* pBuffer, std::int64_t Address, std::int64_t Length) override {
        std::memcpy(place(Address), pBuffer, static_cast<std::size_t>(Length));
    }

private:
    std::uint8_t* place(std::int64_t address) {
        return memory_ + static_cast<std::uint64_t>(address) % (sizeof memory_ - 64);
    }
    std::uint8_t memory_[65536] = {};
};

std::string replaced(std::string text, const std::string& number) {
    for (std::size_t at = text.find('#'); at != std::string::npos; at = text.find('#', at)) {
        text.replace(at, 1, number);
    }
    return text;
}

std::string registerText(const char* name, int address, const char* caching = "NoCache") {
    return std::string("<IntReg Name=\"") + name + "\"><Address>" + std::to_string(address) +
           "</Address><Length>4</Length><AccessMode>RW</AccessMode><pPort>Device</"
           "pPort><Cachable>" +
           caching +
           "</Cachable><Sign>Unsigned</Sign><Endianess>LittleEndian</Endianess></IntReg>\n";
}

// Twelve nodes, as a camera has them.
std::string groupText(int number) {
    static const std::string tips = "<ToolTip>" + std::string(300, 't') +
                                    "</ToolTip><Description>" + std::string(900, 'd') +
                                    "</Description><DisplayName>A feature of a camera</DisplayName>"
                                    "<Visibility>Expert</Visibility>";
    const int base = number * 16;
    const std::string text =
        "<Integer Name=\"Int#\">" + tips +
        "<pValue>IntReg#</pValue><Min>0</Min><Max>1000</Max>"
        "</Integer>\n" +
        registerText("IntReg#", base) +
        "<IntSwissKnife Name=\"Knife#\"><pVariable Name=\"A\">IntReg#</pVariable><pVariable "
        "Name=\"B\">RawReg#</pVariable><pVariable Name=\"C\">ModeReg#</pVariable>"
        "<Formula>(A + B * 4) &amp; 0xFFFF | (C &gt; 3 ? 16 : 32)</Formula></IntSwissKnife>\n"
        "<Float Name=\"Real#\">" +
        tips +
        "<pValue>Conv#</pValue><Unit>us</Unit></Float>\n"
        "<Converter Name=\"Conv#\"><FormulaTo>FROM * 1000 / 40</FormulaTo><FormulaFrom>TO * 40 / "
        "1000</FormulaFrom><pValue>RawReg#</pValue><Slope>Increasing</Slope></Converter>\n" +
        registerText("RawReg#", base + 4) + "<Enumeration Name=\"Mode#\">" + tips +
        "<EnumEntry Name=\"Off\"><Value>0</Value></EnumEntry><EnumEntry "
        "Name=\"On\"><Value>1</Value></EnumEntry><EnumEntry Name=\"Auto\"><Value>2</Value>"
        "</EnumEntry><pValue>ModeReg#</pValue></Enumeration>\n" +
        registerText("ModeReg#", base + 8) + registerText("CachedReg#", base + 12, "WriteThrough");
    return replaced(text, std::to_string(number));
}

std::string document(const std::string& nodes) {
    return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<RegisterDescription ModelName=\"Large\" "
           "VendorName=\"Orlix\" StandardNameSpace=\"None\" SchemaMajorVersion=\"1\" "
           "SchemaMinorVersion=\"1\" SchemaSubMinorVersion=\"0\" MajorVersion=\"1\" "
           "MinorVersion=\"0\" SubMinorVersion=\"0\" ProductGuid=\"1\" VersionGuid=\"1\" "
           "xmlns=\"http://www.genicam.org/GenApi/Version_1_1\">\n" +
           nodes + "<Port Name=\"Device\"/>\n</RegisterDescription>\n";
}

const std::string& largeText() {
    static const std::string text = [] {
        std::string nodes;
        for (int i = 0; i < 250; ++i) {
            nodes += groupText(i);
        }
        return document(nodes);
    }();
    return text;
}

// The file of the command line, or our own.
std::string& buildText() {
    static std::string text = largeText();
    return text;
}

CNodeMapFactory factoryOf(const std::string& text) {
    return CNodeMapFactory(ContentType_Xml, text.data(), text.size());
}

struct Engine {
    explicit Engine(const std::string& text = largeText()) : map(factoryOf(text).CreateNodeMap()) {
        map->Connect(&port, "Device");
    }
    RamPort port;
    CNodeMapRef map;
};

// Without Aravis the rows say so.
struct Rival {
    explicit Rival(benchmark::State& state) : tree(AravisTree::make(largeText())) {
        if (tree == nullptr) {
            state.SkipWithError("built without Aravis");
        }
    }
    std::unique_ptr<AravisTree> tree;
};

double usedBytes() {
    const auto info = ::mallinfo2();
    return static_cast<double>(info.uordblks + info.hblkhd);
}

template <typename Make>
void measureBuild(benchmark::State& state, Make make) {
    const double before = usedBytes();
    const auto kept = make();
    state.counters["MB"] = (usedBytes() - before) / 1e6;
    for (auto _ : state) {
        benchmark::DoNotOptimize(make());
    }
}

void BuildOrlix(benchmark::State& state) {
    measureBuild(state, [] { return factoryOf(buildText()).CreateNodeMap(); });
}
BENCHMARK(BuildOrlix)->Unit(benchmark::kMicrosecond);

void BuildAravis(benchmark::State& state) {
    if (!AravisTree::isBuiltIn()) {
        state.SkipWithError("built without Aravis");
        return;
    }
    measureBuild(state, [] { return AravisTree::make(buildText()); });
}
BENCHMARK(BuildAravis)->Unit(benchmark::kMicrosecond);

void BuildSecondMapOrlix(benchmark::State& state) {
    CNodeMapFactory factory = factoryOf(buildText());
    const CNodeMapRef first = factory.CreateNodeMap();
    measureBuild(state, [&] { return factory.CreateNodeMap(); });
}
BENCHMARK(BuildSecondMapOrlix)->Unit(benchmark::kMicrosecond);

// One access of a node again and again, in the engine or in the rival's tree.
template <typename Pointer, typename Access>
void measureOrlix(benchmark::State& state, const char* name, Access access) {
    Engine engine;
    const Pointer node = engine.map->GetNode(name);
    for (auto _ : state) {
        access(*node);
    }
}
template <typename Access>
void measureAravis(benchmark::State& state, const char* name, Access access) {
    Rival rival(state);
    void* node = rival.tree ? rival.tree->find(name) : nullptr;
    for (auto _ : state) {
        access(*rival.tree, node);
    }
}

void readOrlix(IInteger& node) {
    benchmark::DoNotOptimize(node.GetValue());
}
void readAravis(AravisTree& tree, void* node) {
    benchmark::DoNotOptimize(tree.integer(node));
}

void GetIntegerOrlix(benchmark::State& state) {
    measureOrlix<CIntegerPtr>(state, "Int100", readOrlix);
}
void GetIntegerAravis(benchmark::State& state) {
    measureAravis(state, "Int100", readAravis);
}
BENCHMARK(GetIntegerOrlix);
BENCHMARK(GetIntegerAravis);

void GetKnifeOrlix(benchmark::State& state) {
    measureOrlix<CIntegerPtr>(state, "Knife100", readOrlix);
}
void GetKnifeAravis(benchmark::State& state) {
    measureAravis(state, "Knife100", readAravis);
}
BENCHMARK(GetKnifeOrlix);
BENCHMARK(GetKnifeAravis);

void GetFloatThroughConverterOrlix(benchmark::State& state) {
    measureOrlix<CFloatPtr>(state, "Real100",
                            [](IFloat& node) { benchmark::DoNotOptimize(node.GetValue()); });
}
void GetFloatThroughConverterAravis(benchmark::State& state) {
    measureAravis(state, "Real100",
                  [](AravisTree& tree, void* node) { benchmark::DoNotOptimize(tree.real(node)); });
}
BENCHMARK(GetFloatThroughConverterOrlix);
BENCHMARK(GetFloatThroughConverterAravis);

void GetEnumerationTextOrlix(benchmark::State& state) {
    measureOrlix<CEnumerationPtr>(
        state, "Mode100", [](IEnumeration& node) { benchmark::DoNotOptimize(node.ToString()); });
}
void GetEnumerationTextAravis(benchmark::State& state) {
    measureAravis(state, "Mode100", [](AravisTree& tree, void* node) {
        benchmark::DoNotOptimize(tree.symbolic(node));
    });
}
BENCHMARK(GetEnumerationTextOrlix);
BENCHMARK(GetEnumerationTextAravis);

void SetIntegerOrlix(benchmark::State& state) {
    std::int64_t value = 0;
    measureOrlix<CIntegerPtr>(state, "Int100",
                              [&](IInteger& node) { node.SetValue(value++ % 1000); });
}
void SetIntegerAravis(benchmark::State& state) {
    std::int64_t value = 0;
    measureAravis(state, "Int100",
                  [&](AravisTree& tree, void* node) { tree.setInteger(node, value++ % 1000); });
}
BENCHMARK(SetIntegerOrlix);
BENCHMARK(SetIntegerAravis);

void GetCachedOrlix(benchmark::State& state) {
    measureOrlix<CIntegerPtr>(state, "CachedReg100", readOrlix);
}
BENCHMARK(GetCachedOrlix);

// One write that 1,400 cachable registers depend on. Each of them holds bytes before if `cached`;
// reading them for that is not counted.
void InvalidateOrlix(benchmark::State& state) {
    std::string nodes = registerText("Cause", 0);
    for (int i = 1; i <= 1400; ++i) {
        std::string reg = registerText(("N" + std::to_string(i)).c_str(), i * 4, "WriteThrough");
        reg.insert(reg.find("<Address>"), "<pInvalidator>Cause</pInvalidator>");
        nodes += reg;
    }
    Engine engine(document(nodes));
    const CIntegerPtr cause = engine.map->GetNode("Cause");
    std::vector<CIntegerPtr> dependants;
    for (int i = 1; i <= 1400 && state.range(0) != 0; ++i) {
        dependants.emplace_back(engine.map->GetNode(gcstring("N" + std::to_string(i))));
    }
    for (auto _ : state) {
        for (const CIntegerPtr& node : dependants) {
            benchmark::DoNotOptimize(node->GetValue());
        }
        const auto begin = std::chrono::steady_clock::now();
        cause->SetValue(1);
        state.SetIterationTime(
            std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count());
    }
}
BENCHMARK(InvalidateOrlix)->ArgName("cached")->Arg(0)->Arg(1)->UseManualTime();

}  // namespace

int main(int argc, char** argv) {
    if (argc > 1 && argv[1][0] != '-') {
        std::ifstream file(argv[1], std::ios::binary);
        std::ostringstream text;
        text << file.rdbuf();
        if (!file) {
            std::fprintf(stderr, "genapi_benchmark: can not read %s\n", argv[1]);
            return 1;
        }
        buildText() = text.str();
        argv[1] = argv[0];
        ++argv;
        --argc;
    }
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) {
        return 1;
    }
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
