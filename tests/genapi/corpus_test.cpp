// The oddities of real descriptions, each in a small one of our own; and whole files, where the
// environment variable ORLIX_GENICAM_FILES names a folder of them.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <limits>
#include <sstream>

#include "genapi/testmap.h"

using namespace GenApiTest;

namespace {

constexpr const char* rootBegin =
    "<RegisterDescription xmlns=\"http://www.genicam.org/GenApi/Version_1_1\" ModelName=\"M\">";

std::int64_t valueIn(const std::string& text, const char* name) {
    const CNodeMapRef map = load(text);
    EXPECT_TRUE(map->GetLoadReport().remarks.empty());
    return CIntegerPtr(map->GetNode(name))->GetValue();
}

std::string wholeFile(const std::filesystem::path& path) {
    std::ifstream file(path, std::ios::binary);
    std::ostringstream text;
    text << file.rdbuf();
    return text.str();
}

// Answers with bytes that look like nothing.
class NoisePort : public CMemoryPort {
public:
    void Read(void* pBuffer, std::int64_t Address, std::int64_t Length) override {
        CMemoryPort::Read(pBuffer, Address, Length);
        auto* bytes = static_cast<std::uint8_t*>(pBuffer);
        for (std::int64_t i = 0; i < Length; ++i) {
            const auto place = static_cast<std::uint64_t>(Address) + static_cast<std::uint64_t>(i);
            bytes[i] = static_cast<std::uint8_t>((place * 0x9E3779B97F4A7C15U) >> 53);
        }
    }
};

void connectAll(const CNodeMapRef& map, IPort* port) {
    NodeList_t nodes;
    map->GetNodes(nodes);
    for (INode* node : nodes) {
        if (node->GetPrincipalInterfaceType() == intfIPort) {
            map->Connect(port, node->GetName());
        }
    }
}

// Everything is read or tells a reason.
void readAll(const CNodeMapRef& map) {
    NodeList_t nodes;
    map->GetNodes(nodes);
    for (INode* node : nodes) {
        (void)node->GetAccessMode();
        const CValuePtr value(node);
        if (!value.IsValid()) {
            continue;
        }
        try {
            (void)value->ToString();
        } catch (const GenICam::GenericException& error) {
            EXPECT_GT(std::string(error.GetDescription()).size(), 20U) << node->GetName().c_str();
        }
    }
}

}  // namespace

TEST(Corpus, ByteOrderMarkWithoutADeclaration) {
    EXPECT_EQ(valueIn("\xEF\xBB\xBF" + std::string(rootBegin) +
                          "<Integer Name=\"A\"><Value>5</Value></Integer></RegisterDescription>",
                      "A"),
              5);
}

TEST(Corpus, LinesThatEndInCarriageReturns) {
    EXPECT_EQ(valueIn(std::string(rootBegin) +
                          "\r\n<Integer Name=\"A\">\r<Value>\r\n5\r</Value>\r\n</Integer>\r"
                          "</RegisterDescription>\r\n",
                      "A"),
              5);
}

TEST(Corpus, CharacterDataReferencesAndCommentsInsideOfTexts) {
    const std::string text = document(
        "<IntSwissKnife Name=\"A\"><Formula><![CDATA[1 < 2 && ]]>3<!-- no -->&#x2A;2 = "
        "&#54;</Formula></IntSwissKnife>");
    EXPECT_EQ(valueIn(text, "A"), 1);
}

TEST(Corpus, BlanksAroundLinksNumbersWordsAndFormulas) {
    TestMap t(
        "<Integer Name=\"A\"><pValue>\n R \n</pValue><Min> -1 </Min><pMax>\n K\n</pMax>"
        "<Visibility> Guru </Visibility></Integer><IntSwissKnife Name=\"K\"><pVariable Name=\"V\">"
        " R </pVariable><Formula>\n V + 9 \n</Formula></IntSwissKnife>" +
        std::string(Reg{"R", 0, " RW ", "<Cachable> NoCache </Cachable>"}));
    EXPECT_TRUE(t.remarks().empty());
    EXPECT_EQ(t.integer("A")->GetMin(), -1);
    EXPECT_EQ(t.integer("A")->GetMax(), 9);
    EXPECT_EQ(t.node("A")->GetVisibility(), Guru);
}

TEST(Corpus, EntryNamesThatBeginWithADigitOrASign) {
    TestMap t(
        "<Enumeration Name=\"E\"><EnumEntry Name=\"2x\"><Value>2</Value></EnumEntry>"
        "<EnumEntry Name=\"-3\"><Value>3</Value></EnumEntry><Value>2</Value></Enumeration>");
    EXPECT_TRUE(t.remarks().empty());
    EXPECT_EQ(t.enumeration("E")->ToString(), "2x");
    t.enumeration("E")->FromString("-3");
    EXPECT_EQ(t.enumeration("E")->GetIntValue(), 3);
    EXPECT_THROW((void)load(document("<Enumeration Name=\"E\"><EnumEntry Name=\"a b\"/>"
                                     "<Value>2</Value></Enumeration>")),
                 GenICam::RuntimeException);
}

TEST(Corpus, UndeclaredNameInAFormulaCostsThatNodeOnly) {
    TestMap t(
        "<IntSwissKnife Name=\"Bad\"><Formula>1 + NOWHERE</Formula></IntSwissKnife>"
        "<IntSwissKnife Name=\"Good\"><Formula>1 + 1</Formula></IntSwissKnife>");
    EXPECT_EQ(t.integer("Good")->GetValue(), 2);
    EXPECT_EQ(t.mode("Bad"), NA);
    EXPECT_NE(t.reasons("Bad").find("the name 'NOWHERE' is not declared"), std::string::npos);
}

TEST(Corpus, ReferenceToNothingMakesItsOwnerUnavailable) {
    TestMap t(
        "<Category Name=\"Root\"><pFeature>A</pFeature><pFeature>Gone</pFeature></Category>"
        "<Integer Name=\"A\"><Value>1</Value><pIsAvailable>Gone</pIsAvailable></Integer>");
    EXPECT_EQ(t.mode("A"), NA);
    EXPECT_NE(t.reasons("A").find("names 'Gone', which is not in the description"),
              std::string::npos);
    FeatureList_t features;
    CCategoryPtr(t.node("Root"))->GetFeatures(features);
    EXPECT_EQ(features.size(), 1U);
}

TEST(Corpus, NegativeAddressGoesToThePortAsItIs) {
    TestMap t(Reg{"R", -4, "RW", "", "IntReg", 4});
    t.integer("R")->SetValue(7);
    EXPECT_EQ(t.port.accesses.back(), (Access{'W', -4, 4}));
}

TEST(Corpus, Rule59FloatRegistersOfBothSizesAndOrders) {
    TestMap t(std::string(Reg{"L4", 0, "RW", "", "FloatReg", 4}) +
              std::string(Reg{"L8", 8, "RW", "", "FloatReg", 8}) +
              std::string(Reg{"B4", 16, "RW", "<Endianess>BigEndian</Endianess>", "FloatReg", 4}) +
              std::string(Reg{"B8", 24, "RW", "<Endianess>BigEndian</Endianess>", "FloatReg", 8}));
    for (const char* name : {"L4", "L8", "B4", "B8"}) {
        t.real(name)->SetValue(-1.5);
        t.map->InvalidateNodes();
        EXPECT_EQ(t.real(name)->GetValue(), -1.5) << name;
    }
    EXPECT_EQ(t.port.peek(0, 4), 0xBFC00000);
    EXPECT_EQ(t.port.peek(16, 4), 0x0000C0BF);
    EXPECT_EQ(t.port.peek(24, 4), 0x0000F8BF);
}

TEST(Corpus, Rule59NumbersThatAreNotFiniteAreReadButNotWritten) {
    TestMap t(std::string(Reg{"R", 0, "RW", "<Cachable>NoCache</Cachable>", "FloatReg", 4}));
    t.port.poke(0, 0x7F800000, 4);
    EXPECT_TRUE(std::isinf(t.real("R")->GetValue()));
    t.port.poke(0, 0x7FC00000, 4);
    EXPECT_TRUE(std::isnan(t.real("R")->GetValue()));
    const double infinity = std::numeric_limits<double>::infinity();
    EXPECT_THROW(t.real("R")->SetValue(infinity), GenICam::OutOfRangeException);
    EXPECT_THROW(t.real("R")->SetValue(infinity, false), GenICam::OutOfRangeException);
    // Too large for four bytes, with and without verification.
    EXPECT_THROW(t.real("R")->SetValue(1e39, false), GenICam::OutOfRangeException);
    EXPECT_EQ(t.port.count('W'), 0U);
}

TEST(Corpus, Rule70OneWriteReachesAThousandNodesEachOnce) {
    std::string nodes = Reg{"R", 0, "RW", ""};
    for (int i = 0; i < 1400; ++i) {
        const std::string before = i % 10 == 0 ? "R" : "N" + std::to_string(i - 1);
        nodes += "<Integer Name=\"N" + std::to_string(i) + "\"><pValue>" + before +
                 "</pValue></Integer>";
    }
    TestMap t(nodes);
    NodeList_t reached;
    t.node("R")->GetChildren(reached, ctAllDependingNodes);
    EXPECT_EQ(reached.size(), 1400U);
    int calls = 0;
    for (INode* node : reached) {
        Register(node, [&](INode*) { ++calls; });
    }
    t.integer("R")->SetValue(3);
    EXPECT_EQ(calls, 1400);
    EXPECT_EQ(t.integer("N1399")->GetValue(), 3);
}

TEST(Corpus, Rule32LiteralsBeyondAnIntegerAreFloatsInFloatFormulas) {
    TestMap t(
        "<SwissKnife Name=\"A\"><Formula>9223372036854775808</Formula></SwissKnife>"
        "<SwissKnife Name=\"B\"><Formula>36893488147419103232</Formula></SwissKnife>"
        "<IntSwissKnife Name=\"C\"><Formula>-9223372036854775808.0</Formula></IntSwissKnife>"
        "<IntSwissKnife Name=\"D\"><Constant Name=\"K\">5e-1</Constant><Formula>K * "
        "4</Formula></IntSwissKnife>");
    EXPECT_EQ(t.real("A")->GetValue(), 0x1p63);
    EXPECT_EQ(t.real("B")->GetValue(), 0x1p65);
    EXPECT_EQ(t.integer("C")->GetValue(), INT64_MIN);
    EXPECT_EQ(t.integer("D")->GetValue(), 2);
}

TEST(Corpus, Rule44AnEndThatTheFormulaIsNotDefinedForIsNoEnd) {
    TestMap t(
        "<Converter Name=\"Rate\"><FormulaTo>1000000 / FROM</FormulaTo><FormulaFrom>1000000 / "
        "TO</FormulaFrom><pValue>Period</pValue></Converter><Integer Name=\"Period\"><Value>"
        "40000</Value><Min>0</Min><Max>1000000</Max></Integer>");
    EXPECT_EQ(t.real("Rate")->GetMin(), 1);
    EXPECT_EQ(t.real("Rate")->GetMax(), std::numeric_limits<double>::max());
    t.real("Rate")->SetValue(50);
    EXPECT_EQ(t.integer("Period")->GetValue(), 20000);
    t.integer("Period")->SetValue(0);
    EXPECT_THROW((void)t.real("Rate")->GetValue(), GenICam::RuntimeException);
}

namespace {

// The text of a node's element, without that of its entries.
std::string elementText(const std::string& file, const LoadRemark& remark) {
    std::size_t line = 0;
    for (std::uint32_t i = 1; i < remark.line; ++i) {
        line = file.find('\n', line) + 1;
    }
    const std::size_t begin = file.find("<" + remark.element, line);
    const std::size_t end = file.find("</" + remark.element + ">", begin);
    std::string text = file.substr(begin, end - begin);
    EXPECT_NE(text.find("Name=\"" + remark.name + "\""), std::string::npos);
    for (std::size_t at = text.find("<EnumEntry"); at != std::string::npos;
         at = text.find("<EnumEntry")) {
        text.erase(at, text.find("</EnumEntry>", at) + 12 - at);
    }
    return text;
}

bool hasAny(const std::string& text, std::initializer_list<const char*> elements) {
    return std::any_of(elements.begin(), elements.end(), [&](const char* element) {
        return text.find("<" + std::string(element) + ">") != std::string::npos;
    });
}

// What the file itself shows to be wrong: an element that the schema asks for is not there.
bool isFaultOfTheFile(const std::string& file, const LoadRemark& remark) {
    const auto says = [&](const char* what) {
        return remark.reason.find(what) != std::string::npos;
    };
    if (says("neither a value nor a link to one")) {
        return !hasAny(elementText(file, remark), {"Value", "pValue", "pIndex"});
    }
    if (says("neither CommandValue nor pCommandValue")) {
        return !hasAny(elementText(file, remark), {"CommandValue", "pCommandValue"});
    }
    if (says("it has no Formula.")) {
        return !hasAny(elementText(file, remark), {"Formula"});
    }
    if (says("There is no schema name space")) {
        return file.find("xmlns=") == std::string::npos;
    }
    const std::size_t named = remark.reason.find("names '");
    if (named != std::string::npos && says("which is not in the description")) {
        const std::size_t begin = named + 7;
        const std::string target =
            remark.reason.substr(begin, remark.reason.find('\'', begin) - begin);
        return file.find("Name=\"" + target + "\"") == std::string::npos;
    }
    return false;
}

}  // namespace

// Every file of the folder loads without a loss but for what is wrong in the file itself, and every
// node of it reads or tells why not, on zeros and on noise.
TEST(Corpus, FilesOfAFolder) {
    const char* folder = std::getenv("ORLIX_GENICAM_FILES");
    if (folder == nullptr) {
        GTEST_SKIP() << "ORLIX_GENICAM_FILES names no folder of descriptions.";
    }
    for (const auto& entry : std::filesystem::directory_iterator(folder)) {
        if (entry.path().extension() != ".xml") {
            continue;
        }
        SCOPED_TRACE(entry.path().filename().string());
        const std::string text = wholeFile(entry.path());
        CNodeMapFactory factory(ContentType_Xml, text.data(), text.size());
        for (const LoadRemark& remark : factory.CreateNodeMap()->GetLoadReport().remarks) {
            EXPECT_TRUE(isFaultOfTheFile(text, remark))
                << "line " << remark.line << ", " << remark.element << " " << remark.name << ": "
                << remark.reason;
        }
        CMemoryPort zeros;
        NoisePort noise;
        for (IPort* port : {static_cast<IPort*>(&zeros), static_cast<IPort*>(&noise)}) {
            const CNodeMapRef map = factory.CreateNodeMap();
            connectAll(map, port);
            EXPECT_GT(map->GetNumNodes(), 0U);
            readAll(map);
        }
    }
}
