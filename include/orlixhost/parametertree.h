// The parameters of a node map as a list: what a user sees of a node or of a camera description,
// and how one of them is set from text.
//
// Free functions without state; the map's own lock guards each access.
#pragma once

#include <cstdint>
#include <iosfwd>
#include <string>
#include <variant>
#include <vector>

#include "orlixhost/api.h"

namespace GenApi {
class INodeMap;
}

namespace Orlix::Host {

// Empty where the parameter has no such thing, or where it can not be read now.
using ParameterValue = std::variant<std::monostate, bool, std::int64_t, double, std::string>;

struct Parameter {
    std::string category;  // from the outside in, as "Root/Device Control"
    std::string name;
    std::string displayName;
    std::string kind;    // "Integer", "Float", "Boolean", "Enumeration", "String", "Command", ...
    std::string access;  // "NI", "NA", "WO", "RO", "RW"
    ParameterValue value;
    std::string text;   // the value as the map prints it
    std::string error;  // why the value, or a limit of it, could not be read
    ParameterValue min;
    ParameterValue max;
    ParameterValue inc;
    std::vector<std::string> entries;
    std::string unit;
    std::string visibility;
    std::string toolTip;
    std::string description;
};

// All features below the category "Root" in the order of the description; nothing if there is no
// such category. A feature that can not be read is in the list with its error.
[[nodiscard]] ORLIXHOST_API std::vector<Parameter> readParameters(GenApi::INodeMap& map);

// For people: a line for each parameter under a line for each category.
ORLIXHOST_API void printParameters(std::ostream& out, const std::vector<Parameter>& parameters);
// One JSON array, a line for each parameter.
ORLIXHOST_API void printParametersAsJson(std::ostream& out,
                                         const std::vector<Parameter>& parameters);

// Sets a feature from its text form; a command is executed by "1". Throws RuntimeException that
// names parameter, value and what would be allowed. False for a text whose owner has kept the one
// that it had instead, which it may do without an exception.
ORLIXHOST_API bool setParameter(GenApi::INodeMap& map, const std::string& name,
                                const std::string& value);

}  // namespace Orlix::Host
