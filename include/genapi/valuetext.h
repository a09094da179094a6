// What a text stands for as the value of a feature: the same as FromString takes it for, without a
// feature being written. Nothing for a text that FromString refuses. Pure functions.
#pragma once

#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

#include "genapi/api.h"
#include "genapi/types.h"

namespace GenApi {

[[nodiscard]] GENAPI_API std::optional<bool> BooleanOfText(std::string_view text);
// The spelling of an address counts only with the representation of one.
[[nodiscard]] GENAPI_API std::optional<std::int64_t> IntegerOfText(std::string_view text,
                                                                   ERepresentation representation);
// Finite numbers only.
[[nodiscard]] GENAPI_API std::optional<double> FloatOfText(std::string_view text);
// Without the white space at both ends.
[[nodiscard]] GENAPI_API std::string_view EntryOfText(std::string_view text);
// Of a register.
[[nodiscard]] GENAPI_API std::optional<std::vector<std::uint8_t>> BytesOfText(
    std::string_view text);

}  // namespace GenApi
