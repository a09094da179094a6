#include "host/parameterprinter.h"

#include <array>
#include <charconv>
#include <ostream>
#include <type_traits>

#include "host/message.h"

namespace Orlix::Host {
namespace {

bool isSet(const ParameterValue& value) {
    return !std::holds_alternative<std::monostate>(value);
}

std::string floatText(double value) {
    std::array<char, 32> text{};
    const auto end = std::to_chars(text.data(), text.data() + text.size(), value).ptr;
    return {text.data(), end};
}

// "[1 .. 500, inc 1]"
std::string rangeText(const Parameter& parameter) {
    if (!isSet(parameter.min) && !isSet(parameter.max)) {
        return {};
    }
    std::string text = "  [" + parameterText(parameter.min) + " .. " + parameterText(parameter.max);
    if (isSet(parameter.inc)) {
        text += ", inc " + parameterText(parameter.inc);
    }
    return text + "]";
}

std::string entriesText(const Parameter& parameter) {
    std::string text;
    for (const std::string& entry : parameter.entries) {
        text += (text.empty() ? "  {" : ", ") + entry;
    }
    return text.empty() ? text : text + "}";
}

std::string valueText(const Parameter& parameter) {
    std::string text;
    if (isSet(parameter.value)) {
        text = " = ";
        if (parameter.kind == "String") {
            text += inQuotes(parameter.text);
        } else {
            // The map prints a float with the digits that it asks for; here it reads back equal.
            const bool isExact = parameter.kind == "Boolean" || parameter.kind == "Float";
            text += isExact ? parameterText(parameter.value) : parameter.text;
        }
    }
    if (!parameter.unit.empty()) {
        text += " " + parameter.unit;
    }
    return text;
}

void printParameter(std::ostream& out, const Parameter& parameter) {
    out << "  " << parameter.name << oneLine(valueText(parameter)) << "  (" << parameter.kind
        << ", " << parameter.access << ", " << parameter.visibility << ")" << rangeText(parameter)
        << entriesText(parameter) << '\n';
    if (!parameter.error.empty()) {
        out << "      error: " << parameter.error << '\n';
    }
    if (!parameter.toolTip.empty()) {
        out << "      " << oneLine(parameter.toolTip) << '\n';
    }
}

Json toJson(const Parameter& parameter) {
    Json object = Json::object();
    object["category"] = parameter.category;
    object["name"] = parameter.name;
    object["displayName"] = parameter.displayName;
    object["kind"] = parameter.kind;
    object["access"] = parameter.access;
    object["value"] = parameterJson(parameter.value);
    if (!parameter.error.empty()) {
        object["error"] = parameter.error;
    }
    object["min"] = parameterJson(parameter.min);
    object["max"] = parameterJson(parameter.max);
    object["inc"] = parameterJson(parameter.inc);
    object["entries"] = parameter.entries;
    object["unit"] = parameter.unit;
    object["visibility"] = parameter.visibility;
    object["toolTip"] = parameter.toolTip;
    object["description"] = parameter.description;
    return object;
}

}  // namespace

std::string parameterText(const ParameterValue& value) {
    return std::visit(
        [](const auto& content) -> std::string {
            using Content = std::decay_t<decltype(content)>;
            if constexpr (std::is_same_v<Content, std::monostate>) {
                return "?";
            } else if constexpr (std::is_same_v<Content, bool>) {
                return content ? "true" : "false";
            } else if constexpr (std::is_same_v<Content, std::int64_t>) {
                return std::to_string(content);
            } else if constexpr (std::is_same_v<Content, double>) {
                return floatText(content);
            } else {
                return content;
            }
        },
        value);
}

Json parameterJson(const ParameterValue& value) {
    return std::visit(
        [](const auto& content) -> Json {
            if constexpr (std::is_same_v<std::decay_t<decltype(content)>, std::monostate>) {
                return nullptr;
            } else {
                return content;
            }
        },
        value);
}

void printParameters(std::ostream& out, const std::vector<Parameter>& parameters) {
    const std::string* category = nullptr;
    for (const Parameter& parameter : parameters) {
        if (category == nullptr || *category != parameter.category) {
            out << parameter.category << '\n';
            category = &parameter.category;
        }
        printParameter(out, parameter);
    }
}

void printParametersAsJson(std::ostream& out, const std::vector<Parameter>& parameters) {
    out << "[";
    const char* separator = "\n";
    for (const Parameter& parameter : parameters) {
        out << separator << printJsonLine(toJson(parameter));
        separator = ",\n";
    }
    out << "\n]\n";
}

}  // namespace Orlix::Host
