#include "orlixhost/descriptionsteps.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <ostream>
#include <string_view>
#include <vector>

#include "genapi/genapi.h"
#include "host/message.h"
#include "host/parameterprinter.h"
#include "host/textfile.h"
#include "orlixhost/descriptionfile.h"

namespace Orlix::Host {
namespace {

// More is a slip of the pen.
constexpr std::uint64_t maxBytes = std::uint64_t{16} * 1024 * 1024;

// One step, taken apart. The value may hold tabs.
struct Step {
    std::string verb;
    std::string subject;  // a node, or an address
    std::string value;
    bool hasSubject = false;
    bool hasValue = false;
};

Step parseStep(const std::string& line) {
    Step step;
    const std::size_t first = line.find('\t');
    step.verb = line.substr(0, first);
    if (first == std::string::npos) {
        return step;
    }
    const std::size_t second = line.find('\t', first + 1);
    step.hasSubject = true;
    step.subject = line.substr(first + 1, second - first - 1);
    if (second != std::string::npos) {
        step.hasValue = true;
        step.value = line.substr(second + 1);
    }
    return step;
}

std::uint64_t number(std::string_view text, int base, const char* what) {
    const std::string whole(text);
    if (text.substr(0, 2) == "0x" || text.substr(0, 2) == "0X") {
        text.remove_prefix(2);
        base = 16;
    }
    std::uint64_t value = 0;
    const char* last = text.data() + text.size();
    const auto [end, error] = std::from_chars(text.data(), last, value, base);
    if (error != std::errc{} || end != last) {
        fail(inQuotes(whole) + " is no " + what);
    }
    return value;
}

// Decimal or with 0x, of the whole 64 bits; a minus counts down from the end of them.
std::int64_t addressOf(const Step& step) {
    const bool isNegative = step.subject.compare(0, 1, "-") == 0;
    const std::uint64_t value =
        number(std::string_view(step.subject).substr(isNegative ? 1 : 0), 10, "address");
    return static_cast<std::int64_t>(isNegative ? 0 - value : value);
}

std::vector<std::uint8_t> bytesOf(const std::string& text) {
    std::vector<std::uint8_t> bytes;
    const std::size_t begin = text.compare(0, 2, "0x") == 0 ? 2 : 0;
    if (text.size() % 2 != 0) {
        fail(inQuotes(text) + " is no sequence of bytes in hexadecimal: a digit is missing");
    }
    for (std::size_t i = begin; i < text.size(); i += 2) {
        std::uint8_t byte = 0;
        const char* last = text.data() + i + 2;
        const auto [end, error] = std::from_chars(text.data() + i, last, byte, 16);
        if (error != std::errc{} || end != last) {
            fail(inQuotes(text) + " is no sequence of bytes in hexadecimal");
        }
        bytes.push_back(byte);
    }
    return bytes;
}

std::string hexText(const std::vector<std::uint8_t>& bytes) {
    constexpr char digits[] = "0123456789abcdef";
    std::string text;
    for (const std::uint8_t byte : bytes) {
        text += digits[byte >> 4];
        text += digits[byte & 15];
    }
    return text;
}

// What would break the line is written as an escape.
std::string resultLine(const std::string& text) {
    constexpr char digits[] = "0123456789abcdef";
    std::string line;
    for (const char c : text) {
        const auto code = static_cast<unsigned char>(c);
        if (code >= 0x20 && code != 0x7f) {
            line += c;
        } else if (c == '\n' || c == '\t' || c == '\r') {
            line += std::string("\\") + (c == '\n' ? 'n' : c == '\t' ? 't' : 'r');
        } else {
            line += std::string("\\x") + digits[code >> 4] + digits[code & 15];
        }
    }
    return line;
}

std::string joined(const std::vector<std::string>& texts) {
    std::string result;
    for (const std::string& text : texts) {
        result += (result.empty() ? "" : ",") + text;
    }
    return result;
}

const char* nameOf(GenApi::EAccessMode mode) {
    constexpr std::array<const char*, 5> names = {"NI", "NA", "WO", "RO", "RW"};
    return names[static_cast<std::size_t>(mode)];
}

// The node as an interface, or a failure that says what it lacks.
template <typename Interface>
Interface& as(GenApi::INode& node, const char* what) {
    auto* view = dynamic_cast<Interface*>(&node);
    if (view == nullptr) {
        fail("Node '" + node.GetName().str() + "' " + what);
    }
    return *view;
}

// ---- The verbs. Those about a node get it, the others the description.

using GenApi::INode;

std::string get(INode& node, const Step&) {
    auto& value = as<GenApi::IValue>(node, "has no value.");
    if (auto* real = dynamic_cast<GenApi::IFloat*>(&node)) {
        // The text view has the digits that the node asks for, which may be too few.
        return parameterText(real->GetValue());
    }
    return value.ToString().str();
}

std::string getInteger(INode& node, const Step&) {
    if (auto* integer = dynamic_cast<GenApi::IInteger*>(&node)) {
        return std::to_string(integer->GetValue());
    }
    if (auto* enumeration = dynamic_cast<GenApi::IEnumeration*>(&node)) {
        return std::to_string(enumeration->GetIntValue());
    }
    if (auto* boolean = dynamic_cast<GenApi::IBoolean*>(&node)) {
        return boolean->GetValue() ? "1" : "0";
    }
    return std::to_string(as<GenApi::IEnumEntry>(node, "has no integer.").GetValue());
}

std::string set(INode& node, const Step& step) {
    as<GenApi::IValue>(node, "has no value.").FromString(GenApi::gcstring(step.value));
    return "ok";
}

// Min, max and inc of an Integer or a Float.
template <auto ofInteger, auto ofFloat>
std::string limit(INode& node, const Step&) {
    if (auto* integer = dynamic_cast<GenApi::IInteger*>(&node)) {
        return std::to_string((integer->*ofInteger)());
    }
    auto& real = as<GenApi::IFloat>(node, "has no range: it is no number.");
    return parameterText((real.*ofFloat)());
}

std::string accessMode(INode& node, const Step&) {
    return nameOf(node.GetAccessMode());
}

std::string entries(INode& node, const Step& step) {
    GenApi::NodeList_t list;
    as<GenApi::IEnumeration>(node, "has no entries.").GetEntries(list);
    std::vector<std::string> names;
    for (INode* entry : list) {
        if (step.verb == "entries" || GenApi::IsAvailable(entry)) {
            names.push_back(GenApi::CEnumEntryPtr(entry)->GetSymbolic().str());
        }
    }
    return joined(names);
}

void checkCount(std::uint64_t count) {
    if (count > maxBytes) {
        fail(std::to_string(count) + " bytes are too many");
    }
}

std::string registerBytes(INode& node, const Step&) {
    auto& reg = as<GenApi::IRegister>(node, "is no register.");
    const std::int64_t length = reg.GetLength();
    checkCount(static_cast<std::uint64_t>(length));
    std::vector<std::uint8_t> bytes(static_cast<std::size_t>(length));
    reg.Get(bytes.data(), length);
    return hexText(bytes);
}

std::string maximumLength(INode& node, const Step&) {
    if (auto* text = dynamic_cast<GenApi::IString*>(&node)) {
        return std::to_string(text->GetMaxLength());
    }
    return std::to_string(as<GenApi::IRegister>(node, "has no length.").GetLength());
}

std::string toolTip(INode& node, const Step&) {
    return node.GetToolTip().str();
}

std::string execute(INode& node, const Step&) {
    as<GenApi::ICommand>(node, "is no command.").Execute();
    return "ok";
}

std::string isDone(INode& node, const Step&) {
    return as<GenApi::ICommand>(node, "is no command.").IsDone() ? "1" : "0";
}

// As the device changes its own memory: no cache of the map hears of it.
std::string poke(DescriptionFile& description, const Step& step) {
    const auto bytes = bytesOf(step.value);
    description.port().Write(bytes.data(), addressOf(step),
                             static_cast<std::int64_t>(bytes.size()));
    return "ok";
}

std::string showMemory(DescriptionFile& description, const Step& step) {
    const std::uint64_t count = number(step.value, 16, "number of bytes");
    checkCount(count);
    std::vector<std::uint8_t> bytes(count);
    description.port().Read(bytes.data(), addressOf(step), static_cast<std::int64_t>(count));
    return hexText(bytes);
}

std::string attachChunk(DescriptionFile& description, const Step& step) {
    description.attachChunk(step.subject, bytesOf(step.value));
    return "ok";
}

std::string deliverEvent(DescriptionFile& description, const Step& step) {
    description.deliverEvent(step.subject, bytesOf(step.value));
    return "ok";
}

enum class Needs { node, nodeAndValue, addressAndValue, portAndValue };

struct Verb {
    std::string_view name;
    Needs needs;
    std::string (*ofNode)(INode&, const Step&);
    std::string (*ofDescription)(DescriptionFile&, const Step&);
};

constexpr Verb verbs[] = {
    {"poke", Needs::addressAndValue, nullptr, poke},
    {"mem", Needs::addressAndValue, nullptr, showMemory},
    {"get", Needs::node, get, nullptr},
    {"int", Needs::node, getInteger, nullptr},
    {"set", Needs::nodeAndValue, set, nullptr},
    {"min", Needs::node, limit<&GenApi::IInteger::GetMin, &GenApi::IFloat::GetMin>, nullptr},
    {"max", Needs::node, limit<&GenApi::IInteger::GetMax, &GenApi::IFloat::GetMax>, nullptr},
    {"inc", Needs::node, limit<&GenApi::IInteger::GetInc, &GenApi::IFloat::GetInc>, nullptr},
    {"access", Needs::node, accessMode, nullptr},
    {"entries", Needs::node, entries, nullptr},
    {"availableentries", Needs::node, entries, nullptr},
    {"hex", Needs::node, registerBytes, nullptr},
    {"maxlength", Needs::node, maximumLength, nullptr},
    {"tooltip", Needs::node, toolTip, nullptr},
    {"execute", Needs::node, execute, nullptr},
    {"done", Needs::node, isDone, nullptr},
    {"attachchunk", Needs::portAndValue, nullptr, attachChunk},
    {"event", Needs::portAndValue, nullptr, deliverEvent},
};

const Verb& verbOf(const Step& step) {
    const auto* found = std::find_if(std::begin(verbs), std::end(verbs),
                                     [&](const Verb& verb) { return verb.name == step.verb; });
    if (found == std::end(verbs)) {
        std::vector<std::string> known;
        for (const Verb& verb : verbs) {
            known.emplace_back(verb.name);
        }
        fail("there is no verb " + inQuotes(step.verb) + "; there are " + joined(known));
    }
    return *found;
}

std::string run(DescriptionFile& description, const Step& step) {
    const Verb& verb = verbOf(step);
    if (!step.hasSubject || (verb.needs != Needs::node && !step.hasValue)) {
        constexpr std::array<const char*, 4> needs = {"NODE", "NODE<TAB>VALUE", "ADDRESS<TAB>HEX",
                                                      "PORT<TAB>HEX"};
        fail("the step is " + step.verb + "<TAB>" + needs[static_cast<std::size_t>(verb.needs)]);
    }
    if (verb.ofDescription != nullptr) {
        return verb.ofDescription(description, step);
    }
    INode* node = description.nodeMap().GetNode(GenApi::gcstring(step.subject));
    if (node == nullptr) {
        fail("there is no node " + inQuotes(step.subject));
    }
    return verb.ofNode(*node, step);
}

}  // namespace

std::string readStepFile(const std::string& file) {
    return readTextFile(file);
}

void runSteps(std::ostream& out, DescriptionFile& description, const std::string& steps) {
    for (std::size_t begin = 0; begin < steps.size();) {
        const std::size_t end = std::min(steps.find('\n', begin), steps.size());
        std::string line = steps.substr(begin, end - begin);
        begin = end + 1;
        if (!line.empty() && line.back() == '\r') {
            line.pop_back();
        }
        if (line.empty() || line[0] == '#') {
            continue;
        }
        const Step step = parseStep(line);
        std::string result;
        try {
            result = run(description, step);
        } catch (...) {
            result = "!" + currentMessage();
        }
        out << step.verb << '\t' << step.subject << '\t' << resultLine(result) << '\n';
    }
}

}  // namespace Orlix::Host
