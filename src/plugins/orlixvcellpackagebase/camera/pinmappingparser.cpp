#include "camera/pinmappingparser.h"

#include <algorithm>
#include <limits>
#include <locale>
#include <optional>
#include <stdexcept>
#include <string_view>

#include "gcbase/gcexception.h"

namespace Plugin::OrlixVCellPackageBase {

using GenICam::gcstring;

namespace {

// Pins are named the same way whatever the locale of the host's process.
bool isSpace(char character) {
    return std::isspace(character, std::locale::classic());
}

bool isLetter(char character) {
    return std::isalpha(character, std::locale::classic());
}

bool isDigit(char character) {
    return std::isdigit(character, std::locale::classic());
}

bool isNameCharacter(char character) {
    return isLetter(character) || isDigit(character) || character == '_';
}

bool isPayloadCharacter(char character) {
    return isLetter(character) || isDigit(character) || character == '"';
}

[[noreturn]] void fail(const std::string& message) {
    throw GenICam::RuntimeException(message.c_str(), __FILE__, __LINE__);
}

// Whatever a name is for, the messages call it a pin name.
void checkName(const std::string& name) {
    if (name.empty()) {
        fail("An empty pin name is not allowed.");
    }
    if (name.front() == '_') {
        fail("A pin name must not start with an underscore.");
    }
    if (isDigit(name.front())) {
        fail("A pin name must not start with a digit.");
    }
    if (!std::all_of(name.begin(), name.end(), isNameCharacter)) {
        fail("A pin name '" + name + "' contains invalid characters.");
    }
}

template <typename Enumeration>
std::optional<Enumeration> findNamed(Enumeration first, Enumeration last, const std::string& text) {
    for (auto value = static_cast<std::int32_t>(first); value <= static_cast<std::int32_t>(last);
         ++value) {
        if (toText(static_cast<Enumeration>(value)) == text) {
            return static_cast<Enumeration>(value);
        }
    }
    return std::nullopt;
}

PinType parsePinType(const std::string& text) {
    const auto type = findNamed(PinType::Boolean, PinType::String, text);
    if (!type) {
        fail("Pin type '" + text + "' is not valid");
    }
    return *type;
}

// What is known of a property: where it may stand, how often, and whether its value is a name.
struct PropertyRule {
    PinProperty property;
    bool forChunkData;
    bool forEvent;
    std::size_t most;
    bool isName;
};

constexpr std::size_t unlimited = std::numeric_limits<std::size_t>::max();

constexpr PropertyRule propertyRules[] = {
    // property                   chunk  event  most       name
    {PinProperty::SelectorName, true, false, 1, true},
    {PinProperty::SelectorValue, true, false, 1, false},
    {PinProperty::EventName, false, true, 1, true},
    {PinProperty::ValueName, true, true, unlimited, true},
};

const PropertyRule& findRule(PinProperty property) {
    return *std::find_if(std::begin(propertyRules), std::end(propertyRules),
                         [&](const PropertyRule& rule) { return rule.property == property; });
}

bool isAllowed(const PropertyRule& rule, PinMappingType type) {
    return (type == PinMappingType::ChunkData && rule.forChunkData) ||
           (type == PinMappingType::Event && rule.forEvent);
}

void declarePin(PinMappingMap& result, PinMappingType mappingType, const std::string& pinName,
                const std::string& payload) {
    PinMapping mapping;
    mapping.mappingType = mappingType;
    mapping.pinType = parsePinType(payload);
    mapping.pinName = gcstring(pinName);
    mapping.properties[PinProperty::Type].emplace_back(payload);
    if (!result.emplace(mapping.pinName, mapping).second) {
        fail("Pin type of '" + pinName + "' has been declared twice.");
    }
}

void addProperty(PinMapping& pin, PinProperty property, const std::string& payload) {
    const std::string name = toText(property);
    const PropertyRule& rule = findRule(property);
    if (!isAllowed(rule, pin.mappingType)) {
        fail("Pin property '" + name + "' cannot be combined with pin mapping type '" +
             toText(pin.mappingType) + "'.");
    }
    std::vector<gcstring>& values = pin.properties[property];
    if (values.size() >= rule.most) {
        fail("Pin property '" + name + "' found too many times.");
    }
    if (rule.isName) {
        checkName(payload);
    }
    if (std::find(values.begin(), values.end(), payload.c_str()) != values.end()) {
        // Callers that log and go on after a bad line let this one pass to the user.
        throw std::runtime_error("Value '" + payload + "' cannot be applied multiple times.");
    }
    values.emplace_back(payload);
}

}  // namespace

// A place in one line.
class PinMappingParser::Cursor {
public:
    explicit Cursor(std::string_view text) : rest_(text) {}

    void skipSpace() { static_cast<void>(takeRun(isSpace)); }
    [[nodiscard]] bool atEnd() const noexcept { return rest_.empty(); }
    [[nodiscard]] bool isAt(char character) const noexcept {
        return !atEnd() && rest_.front() == character;
    }

    template <typename Predicate>
    [[nodiscard]] std::string takeRun(Predicate predicate) {
        const auto end = std::find_if_not(rest_.begin(), rest_.end(), predicate);
        std::string run(rest_.begin(), end);
        rest_.remove_prefix(run.size());
        return run;
    }

    // Blanks, and then the sign; `name` is what the messages call it.
    void take(char sign, const char* name) {
        skipSpace();
        if (atEnd()) {
            fail(std::string("Unexpected end of line. Expected ") + name + ".");
        }
        if (!isAt(sign)) {
            fail(std::string("Unexpected content. Expected ") + name + ".");
        }
        rest_.remove_prefix(1);
    }

private:
    std::string_view rest_;
};

void PinMappingParser::parse(PinMappingType mappingType, const std::vector<gcstring>& lines,
                             PinMappingMap& result) {
    result.clear();
    forEachEntry(lines, [&](const Entry& entry) {
        if (entry.property == PinProperty::Type) {
            declarePin(result, mappingType, entry.pinName, entry.payload);
        }
    });
    forEachEntry(lines, [&](const Entry& entry) {
        const auto pin = result.find(gcstring(entry.pinName));
        if (entry.property != PinProperty::Type && pin != result.end()) {
            addProperty(pin->second, entry.property, entry.payload);
        }
    });
}

template <typename Handle>
void PinMappingParser::forEachEntry(const std::vector<gcstring>& lines, const Handle& handle) {
    currentPinName_.clear();
    line_ = 0;
    for (const gcstring& line : lines) {
        column_ = 0;
        Cursor cursor{std::string_view(line.c_str())};
        for (cursor.skipSpace(); !cursor.atEnd(); cursor.skipSpace()) {
            handle(readEntry(cursor));
        }
        ++line_;
    }
}

PinMappingParser::Entry PinMappingParser::readEntry(Cursor& cursor) {
    if (cursor.atEnd()) {
        fail("Unexpected end of line.");
    }
    Entry entry;
    entry.pinName = readPinName(cursor);
    cursor.take('.', "dot");
    cursor.skipSpace();
    const std::string name = cursor.takeRun(isLetter);
    if (name.empty()) {
        fail("Expected valid property pin name not found.");
    }
    const auto property = findNamed(PinProperty::SelectorName, PinProperty::ValueName, name);
    if (!property) {
        fail("Unknown pin property name '" + name + "' found.");
    }
    entry.property = *property;
    cursor.take('=', "=");
    entry.payload = cursor.takeRun(isPayloadCharacter);
    if (entry.payload.empty()) {
        fail("Expected valid pin property payload not found.");
    }
    return entry;
}

std::string PinMappingParser::readPinName(Cursor& cursor) {
    if (!cursor.isAt('.')) {
        std::string name = cursor.takeRun(isNameCharacter);
        if (name.empty()) {
            fail("Expected valid name not found.");
        }
        checkName(name);
        currentPinName_ = std::move(name);
    } else if (currentPinName_.empty()) {
        fail("Pin name cannot be determined.");
    }
    return currentPinName_;
}

}  // namespace Plugin::OrlixVCellPackageBase
