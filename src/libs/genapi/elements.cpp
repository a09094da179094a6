#include "genapi/elements.h"

#include <algorithm>
#include <array>
#include <span>

namespace GenApi::Detail {

namespace {

constexpr std::array<std::string_view, elementCount> elementNames = {
#define GENAPI_ELEMENT(name) #name,
    GENAPI_ELEMENTS(GENAPI_ELEMENT)
#undef GENAPI_ELEMENT
};

// Finds a word among some dozens. The table is made at compile time.
template <std::size_t count>
class WordIndex {
public:
    template <typename NameOf>
    explicit constexpr WordIndex(NameOf nameOf) {
        for (std::size_t i = 0; i < count; ++i) {
            names_[i] = nameOf(i);
            std::size_t slot = slotOf(names_[i]);
            while (slots_[slot] != 0) {
                slot = (slot + 1) % slotCount;
            }
            slots_[slot] = static_cast<std::uint8_t>(i + 1);
        }
    }

    // The word's number; `count` for an unknown one.
    [[nodiscard]] constexpr std::size_t find(std::string_view name) const {
        for (std::size_t slot = slotOf(name); slots_[slot] != 0; slot = (slot + 1) % slotCount) {
            if (names_[slots_[slot] - 1U] == name) {
                return slots_[slot] - 1U;
            }
        }
        return count;
    }

private:
    static constexpr std::size_t slotCount = 512;
    static constexpr std::size_t slotOf(std::string_view name) {
        std::uint32_t hash = static_cast<std::uint32_t>(name.size());
        for (const char c : name) {
            hash = hash * 31 + static_cast<unsigned char>(c);
        }
        return (hash ^ hash >> 9) % slotCount;
    }

    std::array<std::string_view, count> names_{};
    std::array<std::uint8_t, slotCount> slots_{};
};

constexpr WordIndex<elementCount> elementIndex([](std::size_t i) { return elementNames[i]; });
constexpr WordIndex<kindTable.size()> kindIndex([](std::size_t i) { return kindTable[i].element; });

constexpr std::array<Element, 24> repeatables = {
    Element::Address,      Element::Constant,     Element::EnumEntry,      Element::Expression,
    Element::Extension,    Element::Input,        Element::IntKey,         Element::IntSwissKnife,
    Element::NumericValue, Element::Output,       Element::StructEntry,    Element::TextDesc,
    Element::ValueIndexed, Element::pAddress,     Element::pFeature,       Element::pIndex,
    Element::pInvalidator, Element::pIsAvailable, Element::pIsImplemented, Element::pIsLocked,
    Element::pSelected,    Element::pValueCopy,   Element::pValueIndexed,  Element::pVariable,
};

template <typename Value>
struct Word {
    std::string_view text;
    Value value;
};

// R, W and WR occur in real files.
constexpr std::array<Word<EAccessMode>, 6> accessWords = {
    {{"RO", RO}, {"RW", RW}, {"WO", WO}, {"R", RO}, {"W", WO}, {"WR", RW}}};

constexpr std::array<Word<EVisibility>, 4> visibilityWords = {
    {{"Beginner", Beginner}, {"Expert", Expert}, {"Guru", Guru}, {"Invisible", Invisible}}};

constexpr std::array<Word<ERepresentation>, 7> representationWords = {{
    {"Linear", Linear},
    {"Logarithmic", Logarithmic},
    {"Boolean", ERepresentation::Boolean},
    {"PureNumber", PureNumber},
    {"HexNumber", HexNumber},
    {"IPV4Address", IPV4Address},
    {"MACAddress", MACAddress},
}};

constexpr std::array<Word<EDisplayNotation>, 3> notationWords = {
    {{"Automatic", fnAutomatic}, {"Fixed", fnFixed}, {"Scientific", fnScientific}}};

constexpr std::array<Word<ECachingMode>, 3> cachingWords = {
    {{"NoCache", NoCache}, {"WriteThrough", WriteThrough}, {"WriteAround", WriteAround}}};

constexpr std::array<Word<bool>, 2> yesNoWords = {{{"Yes", true}, {"No", false}}};

constexpr std::array<Word<ENameSpace>, 2> nameSpaceWords = {
    {{"Standard", Standard}, {"Custom", Custom}}};

constexpr std::array<Word<ESign>, 2> signWords = {{{"Signed", Signed}, {"Unsigned", Unsigned}}};

constexpr std::array<Word<EEndianess>, 2> endianessWords = {
    {{"LittleEndian", LittleEndian}, {"BigEndian", BigEndian}}};

constexpr std::array<Word<Slope>, 4> slopeWords = {{{"Increasing", Slope::increasing},
                                                    {"Decreasing", Slope::decreasing},
                                                    {"Varying", Slope::varying},
                                                    {"Automatic", Slope::automatic}}};

// By the type of the value.
std::span<const Word<EAccessMode>> wordsOf(EAccessMode) {
    return accessWords;
}
std::span<const Word<EVisibility>> wordsOf(EVisibility) {
    return visibilityWords;
}
std::span<const Word<ERepresentation>> wordsOf(ERepresentation) {
    return representationWords;
}
std::span<const Word<EDisplayNotation>> wordsOf(EDisplayNotation) {
    return notationWords;
}
std::span<const Word<ECachingMode>> wordsOf(ECachingMode) {
    return cachingWords;
}
std::span<const Word<bool>> wordsOf(bool) {
    return yesNoWords;
}
std::span<const Word<ESign>> wordsOf(ESign) {
    return signWords;
}
std::span<const Word<EEndianess>> wordsOf(EEndianess) {
    return endianessWords;
}
std::span<const Word<Slope>> wordsOf(Slope) {
    return slopeWords;
}
std::span<const Word<ENameSpace>> wordsOf(ENameSpace) {
    return nameSpaceWords;
}

}  // namespace

std::optional<Element> elementOf(std::string_view name) {
    const std::size_t place = elementIndex.find(name);
    return place == elementCount ? std::nullopt : std::optional(static_cast<Element>(place));
}

const char* nameOf(Element element) {
    // Literals, so each ends with a zero.
    return elementNames[static_cast<std::size_t>(element)].data();
}

bool isRepeatable(Element element) {
    return std::find(repeatables.begin(), repeatables.end(), element) != repeatables.end();
}

std::optional<Kind> kindOf(std::string_view elementName) {
    const std::size_t place = kindIndex.find(elementName);
    // Entries are no nodes of their own at the top.
    return place == kindTable.size() || static_cast<Kind>(place) == Kind::enumEntry
               ? std::nullopt
               : std::optional(static_cast<Kind>(place));
}

template <typename Value>
std::optional<Value> valueOfWord(std::string_view text) {
    for (const Word<Value>& word : wordsOf(Value{})) {
        if (word.text == text) {
            return word.value;
        }
    }
    return std::nullopt;
}

template <typename Value>
std::string_view wordOf(Value value) {
    for (const Word<Value>& word : wordsOf(Value{})) {
        if (word.value == value) {
            return word.text;
        }
    }
    return {};
}

#define GENAPI_WORDS(Value)                                             \
    template std::optional<Value> valueOfWord<Value>(std::string_view); \
    template std::string_view wordOf<Value>(Value);
GENAPI_WORDS(EAccessMode)
GENAPI_WORDS(EVisibility)
GENAPI_WORDS(ERepresentation)
GENAPI_WORDS(EDisplayNotation)
GENAPI_WORDS(ECachingMode)
GENAPI_WORDS(ENameSpace)
GENAPI_WORDS(ESign)
GENAPI_WORDS(EEndianess)
GENAPI_WORDS(Slope)
GENAPI_WORDS(bool)
#undef GENAPI_WORDS

}  // namespace GenApi::Detail
