// The vocabulary of descriptions: the names of elements and of the words in enumerated elements, as
// tables. Pure data and functions.
#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

#include "genapi/description.h"

namespace GenApi::Detail {

// Children of node elements. Names as the schema spells them.
enum class Element : std::uint8_t {
    AccessMode,
    Address,
    Bit,
    Cachable,
    CacheChunkData,
    ChunkID,
    CommandValue,
    Constant,
    Description,
    DisplayName,
    DisplayNotation,
    DisplayPrecision,
    DocuURL,
    Endianess,
    EnumEntry,
    EventID,
    Expression,
    Extension,
    Formula,
    FormulaFrom,
    FormulaTo,
    ImposedAccessMode,
    ImposedVisibility,
    Inc,
    Input,
    IntSwissKnife,
    IsDeprecated,
    IsLinear,
    IsSelfClearing,
    LSB,
    Length,
    MSB,
    Max,
    Min,
    NumericValue,
    OffValue,
    OnValue,
    Output,
    PollingTime,
    Representation,
    Sign,
    Slope,
    Streamable,
    StructEntry,
    SwapEndianess,
    Symbolic,
    ToolTip,
    Unit,
    ValidValueSet,
    Value,
    ValueDefault,
    ValueIndexed,
    Visibility,
    pAddress,
    pAlias,
    pBlockPolling,
    pCastAlias,
    pChunkID,
    pCommandValue,
    pError,
    pFeature,
    pInc,
    pIndex,
    pInvalidator,
    pIsAvailable,
    pIsImplemented,
    pIsLocked,
    pLength,
    pMax,
    pMin,
    pPort,
    pSelected,
    pValue,
    pValueCopy,
    pValueDefault,
    pValueIndexed,
    pVariable
};

[[nodiscard]] std::optional<Element> elementOf(std::string_view name);

// The kind of a node element, by its name. EnumEntry and StructReg are not among them, since they
// are no nodes of their own at the top.
[[nodiscard]] std::optional<Kind> kindOf(std::string_view elementName);

// The words of enumerated elements; nothing for an unknown word.
[[nodiscard]] std::optional<EAccessMode> accessModeOf(std::string_view word);
[[nodiscard]] std::optional<EVisibility> visibilityOf(std::string_view word);
[[nodiscard]] std::optional<ERepresentation> representationOf(std::string_view word);
[[nodiscard]] std::optional<EDisplayNotation> notationOf(std::string_view word);
[[nodiscard]] std::optional<ECachingMode> cachingOf(std::string_view word);
[[nodiscard]] std::optional<bool> yesNoOf(std::string_view word);
[[nodiscard]] std::optional<ESign> signOf(std::string_view word);
[[nodiscard]] std::optional<EEndianess> endianessOf(std::string_view word);
[[nodiscard]] std::optional<Slope> slopeOf(std::string_view word);

}  // namespace GenApi::Detail
