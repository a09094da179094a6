#include "orlixhost/parametertree.h"

#include <functional>
#include <set>

#include "genapi/inodemap.h"
#include "genapi/pointer.h"
#include "host/message.h"
#include "host/parameterprinter.h"

namespace Orlix::Host {
namespace {

const char* nameOf(GenApi::EAccessMode mode) {
    switch (mode) {
        case GenApi::NI:
            return "NI";
        case GenApi::WO:
            return "WO";
        case GenApi::RO:
            return "RO";
        case GenApi::RW:
            return "RW";
        default:
            return "NA";
    }
}

const char* nameOf(GenApi::EVisibility visibility) {
    switch (visibility) {
        case GenApi::Beginner:
            return "Beginner";
        case GenApi::Expert:
            return "Expert";
        case GenApi::Guru:
            return "Guru";
        default:
            return "Invisible";
    }
}

const char* nameOf(GenApi::EInterfaceType kind) {
    switch (kind) {
        case GenApi::intfIInteger:
            return "Integer";
        case GenApi::intfIBoolean:
            return "Boolean";
        case GenApi::intfICommand:
            return "Command";
        case GenApi::intfIFloat:
            return "Float";
        case GenApi::intfIString:
            return "String";
        case GenApi::intfIRegister:
            return "Register";
        case GenApi::intfIEnumeration:
            return "Enumeration";
        case GenApi::intfICategory:
            return "Category";
        case GenApi::intfIPort:
            return "Port";
        default:
            return "Value";
    }
}

// Fills in one parameter. A read that fails leaves its place empty and notes why.
class ParameterReader {
public:
    explicit ParameterReader(GenApi::INode& node) : node_(node) {}

    Parameter read(const std::string& category) {
        result_.category = category;
        result_.name = node_.GetName().str();
        result_.displayName = node_.GetDisplayName().str();
        result_.visibility = nameOf(node_.GetVisibility());
        result_.toolTip = node_.GetToolTip().str();
        result_.description = node_.GetDescription().str();
        result_.kind = nameOf(node_.GetPrincipalInterfaceType());
        result_.access = nameOf(GenApi::NA);
        attempt([&] {
            mode_ = node_.GetAccessMode();
            result_.access = nameOf(mode_);
        });
        if (GenApi::IsAvailable(mode_)) {
            readDetails();
        }
        return std::move(result_);
    }

private:
    void attempt(const std::function<void()>& step) {
        try {
            step();
        } catch (...) {
            if (result_.error.empty()) {
                result_.error = currentMessage();
            }
        }
    }

    void readDetails() {
        switch (node_.GetPrincipalInterfaceType()) {
            case GenApi::intfIInteger:
                readInteger(*GenApi::CIntegerPtr(&node_));
                break;
            case GenApi::intfIFloat:
                readFloat(*GenApi::CFloatPtr(&node_));
                break;
            case GenApi::intfIBoolean:
                readValue([&] { return GenApi::CBooleanPtr(&node_)->GetValue(); });
                break;
            case GenApi::intfIEnumeration:
                readEntries(*GenApi::CEnumerationPtr(&node_));
                [[fallthrough]];
            case GenApi::intfIString:
            case GenApi::intfIRegister:
                readValue([&] { return GenApi::CValuePtr(&node_)->ToString().str(); });
                break;
            default:
                break;
        }
    }

    template <typename Function>
    void readValue(const Function& function) {
        if (!GenApi::IsReadable(mode_)) {
            return;
        }
        attempt([&] { result_.value = function(); });
        attempt([&] { result_.text = GenApi::CValuePtr(&node_)->ToString().str(); });
    }

    void readInteger(GenApi::IInteger& integer) {
        readValue([&] { return integer.GetValue(); });
        attempt([&] { result_.min = integer.GetMin(); });
        attempt([&] { result_.max = integer.GetMax(); });
        attempt([&] { result_.inc = integer.GetInc(); });
        attempt([&] { result_.unit = integer.GetUnit().str(); });
    }

    void readFloat(GenApi::IFloat& number) {
        readValue([&] { return number.GetValue(); });
        attempt([&] { result_.min = number.GetMin(); });
        attempt([&] { result_.max = number.GetMax(); });
        attempt([&] {
            if (number.HasInc()) {
                result_.inc = number.GetInc();
            }
        });
        attempt([&] { result_.unit = number.GetUnit().str(); });
    }

    void readEntries(GenApi::IEnumeration& enumeration) {
        attempt([&] {
            GenApi::NodeList_t entries;
            enumeration.GetEntries(entries);
            for (GenApi::INode* entry : entries) {
                if (GenApi::IsAvailable(entry)) {
                    result_.entries.push_back(GenApi::CEnumEntryPtr(entry)->GetSymbolic().str());
                }
            }
        });
    }

    GenApi::INode& node_;
    GenApi::EAccessMode mode_ = GenApi::NA;
    Parameter result_;
};

// Deeper than any camera's tree; a hostile one must not use up the stack.
constexpr std::size_t maxDepth = 100;

// Walks the categories from the outside in. Each is entered once, under the first one that has it,
// so that categories which contain each other come to an end.
class TreeWalk {
public:
    explicit TreeWalk(std::function<void(GenApi::INode&, const std::string&)> visitor)
        : visitor_(std::move(visitor)) {}

    void visit(GenApi::ICategory& category, const std::string& path, std::size_t depth = 0) {
        entered_.insert(&category);
        GenApi::FeatureList_t features;
        category.GetFeatures(features);
        for (GenApi::IValue* feature : features) {
            GenApi::INode* node = feature->GetNode();
            auto* inner = dynamic_cast<GenApi::ICategory*>(node);
            if (inner == nullptr) {
                visitor_(*node, path);
            } else if (entered_.count(inner) == 0) {
                if (depth == maxDepth) {
                    fail("category " + inQuotes(node->GetName().str()) +
                         ": is nested deeper than " + std::to_string(maxDepth) + " levels");
                }
                visit(*inner, path + "/" + node->GetDisplayName().str(), depth + 1);
            }
        }
    }

private:
    std::function<void(GenApi::INode&, const std::string&)> visitor_;
    std::set<const GenApi::ICategory*> entered_;
};

std::string join(const std::vector<std::string>& texts) {
    std::string result;
    for (const std::string& text : texts) {
        result += (result.empty() ? "" : ", ") + text;
    }
    return result;
}

std::string knownFeatures(GenApi::INodeMap& map) {
    std::vector<std::string> names;
    for (const Parameter& parameter : readParameters(map)) {
        names.push_back(parameter.name);
    }
    return join(names);
}

constexpr const char* itTakes = "; it takes ";

// What would be allowed instead of a refused value; empty if there is nothing to say.
std::string allowedValues(const Parameter& parameter) {
    if (!parameter.entries.empty()) {
        return itTakes + join(parameter.entries);
    }
    if (parameter.kind == "Boolean") {
        return std::string(itTakes) + "true and false";
    }
    if (parameter.kind != "Integer" && parameter.kind != "Float") {
        return {};
    }
    std::string text =
        itTakes + parameterText(parameter.min) + " to " + parameterText(parameter.max);
    const bool hasStep = !std::holds_alternative<std::monostate>(parameter.inc) &&
                         parameter.inc != ParameterValue(std::int64_t{1});
    return hasStep ? text + " in steps of " + parameterText(parameter.inc) : text;
}

// The message of a refused value, which goes on with what would be allowed.
std::string withAllowed(std::string message, const Parameter& parameter) {
    const std::string allowed = allowedValues(parameter);
    const std::size_t words = std::string_view(itTakes).size();
    if (!allowed.empty() && message.find(allowed.substr(words)) != std::string::npos) {
        return message;  // it says so itself
    }
    if (!allowed.empty() && message.ends_with('.')) {
        message.pop_back();
    }
    return message + allowed;
}

void assign(GenApi::INode& node, const std::string& value) {
    if (auto* command = dynamic_cast<GenApi::ICommand*>(&node)) {
        if (value != "1") {
            fail("a command is executed by 1");
        }
        command->Execute();
        return;
    }
    const GenApi::CValuePtr target(&node);
    if (!target.IsValid()) {
        fail("it has no value");
    }
    target->FromString(GenApi::gcstring(value));
}

// A text that has changed, though not into the one that was set, was taken in a form of its
// owner's.
bool wasTaken(GenApi::INode& node, const Parameter& before, const std::string& value) {
    if (before.kind != "String" || before.access != "RW" || before.text == value) {
        return true;
    }
    const Parameter after = ParameterReader(node).read({});
    return !after.error.empty() || after.text != before.text;
}

}  // namespace

std::vector<Parameter> readParameters(GenApi::INodeMap& map) {
    std::vector<Parameter> parameters;
    GenApi::INode* root = map.GetNode("Root");
    auto* category = dynamic_cast<GenApi::ICategory*>(root);
    if (category != nullptr) {
        TreeWalk walk([&](GenApi::INode& node, const std::string& path) {
            parameters.push_back(ParameterReader(node).read(path));
        });
        walk.visit(*category, root->GetDisplayName().str());
    }
    return parameters;
}

bool setParameter(GenApi::INodeMap& map, const std::string& name, const std::string& value) {
    const std::string place = "parameter " + inQuotes(name);
    GenApi::INode* node = map.GetNode(GenApi::gcstring(name));
    if (node == nullptr || !node->IsFeature()) {
        fail("there is no " + place + "; there are " + knownFeatures(map));
    }
    const Parameter parameter = ParameterReader(*node).read({});
    if (parameter.access != "RW" && parameter.access != "WO") {
        fail(place + ": can not be set to " + inQuotes(value) + ": it is not writable now (" +
             parameter.access + ")");
    }
    try {
        assign(*node, value);
    } catch (...) {
        fail(place + ": can not be set to " + inQuotes(value) + ": " +
             withAllowed(currentMessage(), parameter));
    }
    return wasTaken(*node, parameter, value);
}

}  // namespace Orlix::Host
