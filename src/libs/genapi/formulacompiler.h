// From the text of a formula to its compiled form. Used at load, by one thread.
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "genapi/formula.h"

namespace GenApi::Detail {

struct NamedText {
    std::string name;
    std::string text;
};

// The names that a formula may use beside functions, E and PI.
struct FormulaScope {
    // The index of a variable, or nothing. Names are matched as they were declared.
    std::function<std::optional<std::uint32_t>(std::string_view)> variable;
    std::string_view argument;  // FROM, TO, or empty
    const std::vector<NamedText>* constants = nullptr;
    const std::vector<NamedText>* expressions = nullptr;
};

struct CompiledFormula {
    Program program;
    std::string error;  // empty if it is good
};

[[nodiscard]] CompiledFormula compileFormula(std::string_view text, Arithmetic arithmetic,
                                             const FormulaScope& scope);

}  // namespace GenApi::Detail
