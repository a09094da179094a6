#include "genapi/elements.h"

#include <algorithm>
#include <array>

namespace GenApi::Detail {

namespace {

// In the order of Element, which is that of their characters.
constexpr std::array<std::string_view, 77> elementNames = {"AccessMode",
                                                           "Address",
                                                           "Bit",
                                                           "Cachable",
                                                           "CacheChunkData",
                                                           "ChunkID",
                                                           "CommandValue",
                                                           "Constant",
                                                           "Description",
                                                           "DisplayName",
                                                           "DisplayNotation",
                                                           "DisplayPrecision",
                                                           "DocuURL",
                                                           "Endianess",
                                                           "EnumEntry",
                                                           "EventID",
                                                           "Expression",
                                                           "Extension",
                                                           "Formula",
                                                           "FormulaFrom",
                                                           "FormulaTo",
                                                           "ImposedAccessMode",
                                                           "ImposedVisibility",
                                                           "Inc",
                                                           "Input",
                                                           "IntSwissKnife",
                                                           "IsDeprecated",
                                                           "IsLinear",
                                                           "IsSelfClearing",
                                                           "LSB",
                                                           "Length",
                                                           "MSB",
                                                           "Max",
                                                           "Min",
                                                           "NumericValue",
                                                           "OffValue",
                                                           "OnValue",
                                                           "Output",
                                                           "PollingTime",
                                                           "Representation",
                                                           "Sign",
                                                           "Slope",
                                                           "Streamable",
                                                           "StructEntry",
                                                           "SwapEndianess",
                                                           "Symbolic",
                                                           "ToolTip",
                                                           "Unit",
                                                           "ValidValueSet",
                                                           "Value",
                                                           "ValueDefault",
                                                           "ValueIndexed",
                                                           "Visibility",
                                                           "pAddress",
                                                           "pAlias",
                                                           "pBlockPolling",
                                                           "pCastAlias",
                                                           "pChunkID",
                                                           "pCommandValue",
                                                           "pError",
                                                           "pFeature",
                                                           "pInc",
                                                           "pIndex",
                                                           "pInvalidator",
                                                           "pIsAvailable",
                                                           "pIsImplemented",
                                                           "pIsLocked",
                                                           "pLength",
                                                           "pMax",
                                                           "pMin",
                                                           "pPort",
                                                           "pSelected",
                                                           "pValue",
                                                           "pValueCopy",
                                                           "pValueDefault",
                                                           "pValueIndexed",
                                                           "pVariable"};

static_assert(std::is_sorted(elementNames.begin(), elementNames.end()));

template <typename Value>
struct Word {
    std::string_view text;
    Value value;
};

template <typename Value, std::size_t count>
std::optional<Value> find(const std::array<Word<Value>, count>& words, std::string_view text) {
    for (const auto& word : words) {
        if (word.text == text) {
            return word.value;
        }
    }
    return std::nullopt;
}

constexpr std::array<Word<Kind>, 17> kindWords = {{
    {"IntReg", Kind::intReg},
    {"MaskedIntReg", Kind::maskedIntReg},
    {"Integer", Kind::integer},
    {"IntSwissKnife", Kind::intSwissKnife},
    {"Enumeration", Kind::enumeration},
    {"Boolean", Kind::boolean},
    {"Category", Kind::category},
    {"SwissKnife", Kind::swissKnife},
    {"Float", Kind::floating},
    {"Command", Kind::command},
    {"StringReg", Kind::stringReg},
    {"Converter", Kind::converter},
    {"FloatReg", Kind::floatReg},
    {"Port", Kind::port},
    {"IntConverter", Kind::intConverter},
    {"Register", Kind::byteRegister},
    {"String", Kind::string},
}};

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

constexpr std::array<Word<ESign>, 2> signWords = {{{"Signed", Signed}, {"Unsigned", Unsigned}}};

constexpr std::array<Word<EEndianess>, 2> endianessWords = {
    {{"LittleEndian", LittleEndian}, {"BigEndian", BigEndian}}};

constexpr std::array<Word<Slope>, 4> slopeWords = {{{"Increasing", Slope::increasing},
                                                    {"Decreasing", Slope::decreasing},
                                                    {"Varying", Slope::varying},
                                                    {"Automatic", Slope::automatic}}};

}  // namespace

std::optional<Element> elementOf(std::string_view name) {
    const auto place = std::lower_bound(elementNames.begin(), elementNames.end(), name);
    if (place == elementNames.end() || *place != name) {
        return std::nullopt;
    }
    return static_cast<Element>(place - elementNames.begin());
}

std::optional<Kind> kindOf(std::string_view elementName) {
    return find(kindWords, elementName);
}

std::optional<EAccessMode> accessModeOf(std::string_view word) {
    return find(accessWords, word);
}
std::optional<EVisibility> visibilityOf(std::string_view word) {
    return find(visibilityWords, word);
}
std::optional<ERepresentation> representationOf(std::string_view word) {
    return find(representationWords, word);
}
std::optional<EDisplayNotation> notationOf(std::string_view word) {
    return find(notationWords, word);
}
std::optional<ECachingMode> cachingOf(std::string_view word) {
    return find(cachingWords, word);
}
std::optional<bool> yesNoOf(std::string_view word) {
    return find(yesNoWords, word);
}
std::optional<ESign> signOf(std::string_view word) {
    return find(signWords, word);
}
std::optional<EEndianess> endianessOf(std::string_view word) {
    return find(endianessWords, word);
}

std::optional<Slope> slopeOf(std::string_view word) {
    return find(slopeWords, word);
}

}  // namespace GenApi::Detail
