// Two maps of one description, one of which caches: as long as only the map writes to the device,
// nobody can tell them apart. The descriptions and what is done with them are made up at random,
// with seeds, so that each run is the same.
#include <gtest/gtest.h>

#include <functional>

#include "genapi/testmap.h"

using namespace GenApiTest;

namespace {

class Dice {
public:
    explicit Dice(std::uint32_t seed) : state_(seed * 2654435761U + 1) {}
    int operator()(int below) {
        state_ = state_ * 1664525 + 1013904223;
        return static_cast<int>((state_ >> 8) % static_cast<std::uint32_t>(below));
    }
    const char* oneOf(std::initializer_list<const char*> words) {
        return *(words.begin() + (*this)(static_cast<int>(words.size())));
    }

private:
    std::uint32_t state_;
};

std::string number(int value) {
    return std::to_string(value);
}

std::string element(const std::string& name, const std::string& text) {
    return "<" + name + ">" + text + "</" + name + ">";
}

// A register somewhere in 48 bytes, so that many lie on each other.
std::string randomRegister(Dice& dice, int index) {
    const bool isMasked = dice(3) == 0;
    const int length = 1 + dice(8);
    std::string inner;
    switch (dice(4)) {
        case 0:
            inner = element("Address", number(dice(24))) + "<pIndex Offset=\"" + number(dice(9)) +
                    "\">Sel</pIndex>";
            break;
        case 1:
            inner = element("Address", number(dice(24))) + element("pAddress", "Base");
            break;
        default:
            inner = element("Address", number(dice(40)));
    }
    inner += element("Length", number(length)) + element("AccessMode", "RW") +
             element("pPort", "P") +
             element("Cachable", dice.oneOf({"NoCache", "WriteThrough", "WriteAround"})) +
             element("Endianess", dice.oneOf({"BigEndian", "LittleEndian"})) +
             element("Sign", dice.oneOf({"Signed", "Unsigned"}));
    if (isMasked) {
        inner +=
            element("LSB", number(dice(8 * length))) + element("MSB", number(dice(8 * length)));
    }
    const std::string tag = isMasked ? "MaskedIntReg" : "IntReg";
    return "<" + tag + " Name=\"R" + number(index) + "\">" + inner + "</" + tag + ">";
}

// A node that takes its value from nodes before it.
std::string randomFeature(Dice& dice, int index, const std::function<std::string()>& before) {
    const std::string name = " Name=\"F" + number(index) + "\">";
    const std::string conditions = (dice(4) == 0 ? element("pIsAvailable", before()) : "") +
                                   (dice(4) == 0 ? element("pIsLocked", before()) : "");
    switch (dice(6)) {
        case 0:
            return "<Integer" + name + conditions + element("pValue", before()) +
                   element("pMax", before()) + "</Integer>";
        case 1:
            return "<IntSwissKnife" + name + "<pVariable Name=\"A\">" + before() +
                   "</pVariable><pVariable Name=\"B\">" + before() + "</pVariable>" + conditions +
                   element("Formula", dice.oneOf({"A + B", "A &gt; B ? A : B / A", "A &amp; ~B",
                                                  "A % (B - 3)"})) +
                   "</IntSwissKnife>";
        case 2:
            return "<Converter" + name + "<pVariable Name=\"A\">" + before() + "</pVariable>" +
                   element("FormulaTo", "FROM - A") + element("FormulaFrom", "TO + A") +
                   element("pValue", before()) + conditions + "</Converter>";
        case 3:
            return "<Boolean" + name + conditions + element("pValue", before()) + "</Boolean>";
        case 4:
            return "<Enumeration" + name + conditions +
                   "<EnumEntry Name=\"A\"><Value>0</Value></EnumEntry><EnumEntry Name=\"B\">"
                   "<Value>1</Value>" +
                   element("pIsAvailable", before()) + "</EnumEntry>" +
                   element("pValue", before()) + "</Enumeration>";
        default:
            return "<Integer" + name + conditions + element("pValueCopy", before()) +
                   element("pValue", before()) + "</Integer>";
    }
}

constexpr int registers = 14;
constexpr int features = 20;

std::string randomNodes(Dice& dice) {
    std::string nodes =
        "<Integer Name=\"Sel\"><Value>0</Value><Min>0</Min><Max>3</Max></Integer>"
        "<Integer Name=\"Base\"><pValue>R0</pValue><Min>0</Min><Max>8</Max></Integer>"
        "<IntReg Name=\"R0\"><Address>60</Address><Length>2</Length><AccessMode>RW</AccessMode>"
        "<pPort>P</pPort></IntReg>"
        "<StringReg Name=\"Text\"><Address>4</Address><Length>20</Length><AccessMode>RW"
        "</AccessMode><pPort>P</pPort></StringReg>";
    for (int i = 1; i < registers; ++i) {
        nodes += randomRegister(dice, i);
    }
    for (int i = 0; i < features; ++i) {
        nodes += randomFeature(dice, i, [&] {
            return i > 0 && dice(2) == 0 ? "F" + number(dice(i)) : "R" + number(dice(registers));
        });
    }
    return nodes;
}

void replaceAll(std::string& text, const std::string& before, const std::string& after) {
    for (std::size_t at = text.find(before); at != std::string::npos;
         at = text.find(before, at + after.size())) {
        text.replace(at, before.size(), after);
    }
}

std::string uncached(std::string nodes) {
    replaceAll(nodes, "WriteThrough", "NoCache");
    replaceAll(nodes, "WriteAround", "NoCache");
    // Where nothing is said, something is kept.
    replaceAll(nodes, "<pPort>P</pPort></", "<pPort>P</pPort><Cachable>NoCache</Cachable></");
    return nodes;
}

template <typename Call>
std::string outcomeOf(Call call) {
    try {
        return call();
    } catch (const GenICam::GenericException& error) {
        return error.GetDescription();
    }
}

std::string describe(const CNodeMapRef& map) {
    NodeList_t nodes;
    map->GetNodes(nodes);
    std::string result;
    for (INode* node : nodes) {
        result += (node->GetName() + " ").c_str() +
                  outcomeOf([&] { return number(node->GetAccessMode()); });
        if (const CValuePtr value(node); value.IsValid()) {
            result += " " + outcomeOf([&] { return value->ToString().str(); });
        }
        if (const CIntegerPtr integer(node); integer.IsValid()) {
            result += " " + outcomeOf([&] { return std::to_string(integer->GetMax()); });
        }
        result += "\n";
    }
    return result;
}

// The same for both maps.
std::function<std::string(const CNodeMapRef&)> randomStep(Dice& dice) {
    const std::string name = dice(5) == 0   ? dice.oneOf({"Sel", "Base", "Text", "R0"})
                             : dice(2) == 0 ? "F" + number(dice(features))
                                            : "R" + number(1 + dice(registers - 1));
    const std::string text = number(dice(3) == 0 ? dice(100000) - 50000 : dice(5));
    const bool verify = dice(2) == 0;
    const bool invalidate = dice(8) == 0;
    return [=](const CNodeMapRef& map) {
        INode* node = map->GetNode(name.c_str());
        if (invalidate) {
            node->InvalidateNode();
            return std::string();
        }
        return outcomeOf([&] {
            CValuePtr(node)->FromString(text.c_str(), verify);
            return std::string("ok");
        });
    };
}

}  // namespace

TEST(Agreement, Rule66To69AMapThatCachesAnswersAsOneThatDoesNot) {
    for (std::uint32_t seed = 1; seed <= 16; ++seed) {
        Dice dice(seed);
        const std::string nodes = randomNodes(dice);
        TestMap cached(nodes);
        TestMap plain(uncached(nodes));
        for (int step = 0; step < 12; ++step) {
            const auto act = randomStep(dice);
            ASSERT_EQ(act(cached.map), act(plain.map)) << "seed " << seed << ", step " << step;
            ASSERT_EQ(describe(cached.map), describe(plain.map))
                << "seed " << seed << ", step " << step << "\n"
                << nodes;
        }
    }
}
