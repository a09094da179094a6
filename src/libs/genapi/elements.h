// The vocabulary of descriptions: the names of elements and of the words in enumerated elements, as
// tables. Pure data and functions.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>

#include "genapi/description.h"

namespace GenApi::Detail {

// Children of node elements, as the schema spells them.
// clang-format off
#define GENAPI_ELEMENTS(X) \
    X(AccessMode) X(Address) X(Bit) X(Cachable) X(CacheChunkData) X(ChunkID) X(CommandValue) \
    X(Constant) X(Description) X(DisplayName) X(DisplayNotation) X(DisplayPrecision) \
    X(DocuURL) X(Endianess) X(EnumEntry) X(EventID) X(Expression) X(Extension) X(FeatureID) \
    X(Formula) X(FormulaFrom) X(FormulaTo) X(ImposedAccessMode) X(ImposedVisibility) X(Inc) \
    X(Input) X(IntKey) X(IntSwissKnife) X(IsDeprecated) X(IsLinear) X(IsSelfClearing) X(Key) \
    X(LSB) X(Length) X(MSB) X(Max) X(Min) X(NumericValue) X(OffValue) X(OnValue) X(Output) \
    X(PollingTime) X(Representation) X(Sign) X(Slope) X(Streamable) X(StructEntry) \
    X(SwapEndianess) X(Symbolic) X(TextDesc) X(Timeout) X(ToolTip) X(Unit) X(ValidValueSet) \
    X(Value) X(ValueDefault) X(ValueIndexed) X(Visibility) X(p1212Parser) X(pAddress) \
    X(pAlias) X(pBlockPolling) X(pCastAlias) X(pChunkID) X(pCommandValue) X(pError) \
    X(pFeature) X(pInc) X(pIndex) X(pInvalidator) X(pIsAvailable) X(pIsImplemented) \
    X(pIsLocked) X(pLength) X(pMax) X(pMin) X(pPort) X(pSelected) X(pValue) X(pValueCopy) \
    X(pValueDefault) X(pValueIndexed) X(pVariable)
// clang-format on

enum class Element : std::uint8_t {
#define GENAPI_ELEMENT(name) name,
    GENAPI_ELEMENTS(GENAPI_ELEMENT)
#undef GENAPI_ELEMENT
        count
};
inline constexpr std::size_t elementCount = static_cast<std::size_t>(Element::count);

[[nodiscard]] std::optional<Element> elementOf(std::string_view name);
[[nodiscard]] const char* nameOf(Element element);

// Whether a node may have several of them.
[[nodiscard]] bool isRepeatable(Element element);

// The kind of a node element, by its name. EnumEntry and StructReg are not among them, since they
// are no nodes of their own at the top.
[[nodiscard]] std::optional<Kind> kindOf(std::string_view elementName);

// The value of a word in an enumerated element; nothing for an unknown word. For EAccessMode,
// EVisibility, ERepresentation, EDisplayNotation, ECachingMode, ESign, EEndianess, Slope, and bool
// where it is Yes or No.
template <typename Value>
[[nodiscard]] std::optional<Value> valueOfWord(std::string_view word);
// The other way round, also for ENameSpace; empty for a value without a word.
template <typename Value>
[[nodiscard]] std::string_view wordOf(Value value);

}  // namespace GenApi::Detail
