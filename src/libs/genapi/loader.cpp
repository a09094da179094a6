#include "genapi/loader.h"

#include <algorithm>
#include <deque>
#include <string_view>

#include "genapi/dependencies.h"
#include "genapi/elements.h"
#include "genapi/merging.h"
#include "genapi/nodebuilder.h"
#include "genapi/numbertext.h"
#include "genapi/xmltext.h"

namespace GenApi::Detail {

namespace {

constexpr std::string_view schemaPrefix = "http://www.genicam.org/GenApi/Version_";
constexpr std::size_t maximumNodes = std::size_t{1} << 20;

bool isLetter(char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
}
bool isNameCharacter(char c) {
    return isLetter(c) || (c >= '0' && c <= '9') || c == '_';
}

bool isLegalName(std::string_view name) {
    return !name.empty() && isLetter(name[0]) &&
           std::all_of(name.begin(), name.end(), isNameCharacter);
}

// The name of an entry is only a part of its node's, so it may begin with a digit or a sign.
bool isLegalEntryName(std::string_view name) {
    const bool hasSign = !name.empty() && (name[0] == '+' || name[0] == '-');
    name.remove_prefix(hasSign ? 1 : 0);
    return !name.empty() && std::all_of(name.begin(), name.end(), isNameCharacter);
}

class Loader {
public:
    Loader(std::vector<std::string> texts, StringPolicy strings)
        : description_(std::make_shared<Description>()),
          context_{*description_, strings, 0, {}, {}} {
        std::size_t size = 0;
        for (std::string& text : texts) {
            size += text.size();
            texts_.emplace_back(std::move(text), static_cast<std::uint32_t>(texts_.size()));
        }
        constexpr std::size_t least = std::size_t{16} * 1024 * 1024;
        constexpr std::size_t most = std::size_t{1024} * 1024 * 1024;
        context_.room = std::min(least + 32 * size, most);
    }

    std::shared_ptr<const Description> load() {
        for (const XmlText& text : texts_) {
            checkRoot(text);
        }
        readRoot(texts_.front());
        for (const XmlText& text : texts_) {
            if (texts_.size() > 1) {
                plan_.add(text.root(), context_);
            }
        }
        for (const XmlText& text : texts_) {
            collect(text.root());
        }
        collectEntries();
        index();
        NodeBuilder builder(context_);
        for (std::size_t i = 0; i < pending_.size(); ++i) {
            builder.build(static_cast<NodeId>(i), pending_[i]);
        }
        linkDependants(context_);
        description_->shrink();
        return description_;
    }

private:
    void checkRoot(const XmlText& text) {
        const XmlElement root = text.root();
        if (root.name() != "RegisterDescription") {
            root.fail("the root element is '" + std::string(root.name()) +
                      "'; a description's is 'RegisterDescription'.");
        }
        if (text.isRepaired()) {
            context_.warn(root, "",
                          "Some bytes are no UTF-8; they were taken as those of Windows-1252.");
        }
        const Version_t version = schemaOf(text);
        if (version.Major != 1 || version.Minor > 1) {
            root.fail("the schema version " + std::to_string(version.Major) + "." +
                      std::to_string(version.Minor) + " is newer than 1.1, the newest known.");
        }
        if (text.number() == 0) {
            description_->schemaVersion = version;
        }
    }

    // What the name space says; the attributes say the same and less reliably.
    Version_t schemaOf(const XmlText& text) {
        const XmlElement root = text.root();
        Version_t version = versionOf(root, "Schema");
        if (!text.nameSpace()) {
            context_.warn(root, "", "There is no schema name space; taken as schema 1.1.");
            version.Major = version.Major == 0 ? std::uint16_t{1} : version.Major;
            version.Minor = version.Major == 1 ? std::uint16_t{1} : version.Minor;
            return version;
        }
        const std::string_view value = trim(*text.nameSpace());
        const bool isKnown = value.substr(0, schemaPrefix.size()) == schemaPrefix;
        const std::string_view numbers = isKnown ? value.substr(schemaPrefix.size()) : "";
        const std::size_t split = numbers.find('_');
        const auto major = parseInteger(numbers.substr(0, split));
        const auto minor = split == std::string_view::npos
                               ? std::optional<std::int64_t>(0)
                               : parseInteger(numbers.substr(split + 1));
        constexpr std::int64_t most = 0xFFFF;
        if (!major || !minor || *major < 0 || *major > most || *minor < 0 || *minor > most) {
            root.fail("the schema name space '" + std::string(value) + "' is unknown.");
        }
        version.Major = static_cast<std::uint16_t>(*major);
        version.Minor = static_cast<std::uint16_t>(*minor);
        return version;
    }

    // Of the three attributes that begin so; what is missing or no number is 0.
    static Version_t versionOf(XmlElement root, const std::string& prefix) {
        const auto number = [&](const char* suffix) {
            const auto value = parseInteger(root.valueOf(prefix + suffix));
            return static_cast<std::uint16_t>(
                std::clamp<std::int64_t>(value.value_or(0), 0, 0xFFFF));
        };
        return {number("MajorVersion"), number("MinorVersion"), number("SubMinorVersion")};
    }

    void readRoot(const XmlText& text) {
        const XmlElement root = text.root();
        description_->modelName = root.valueOf("ModelName");
        description_->vendorName = root.valueOf("VendorName");
        description_->toolTip = root.valueOf("ToolTip");
        description_->standardNameSpace = root.valueOf("StandardNameSpace");
        description_->productGuid = root.valueOf("ProductGuid");
        description_->versionGuid = root.valueOf("VersionGuid");
        description_->deviceVersion = versionOf(root, "");
        description_->texts.reserve(text.size() / 2);
    }

    // Groups have no meaning of their own. The nesting is bounded by the text's depth.
    void collect(XmlElement parent) {
        for (const XmlElement element : parent.children()) {
            collectElement(element);
        }
    }

    void collectElement(XmlElement element) {
        const std::string_view tag = element.name();
        if (tag == "Group") {
            collect(element);
        } else if (tag == "StructReg") {
            collectStruct(element);
        } else if (const auto kind = kindOf(tag)) {
            collectNode(*kind, element);
        } else if (tag != "Extension") {
            checkName(element);
            context_.drop(element, element.valueOf("Name"),
                          "The element is unknown; the node is left out.");
        }
    }

    void collectNode(Kind kind, XmlElement element) {
        if (!add(kind, element)) {
            return;
        }
        pending_.back().joining = plan_.joining(element);
        if (isRegister(kind)) {
            collectInline(element);
        }
        if (kind == Kind::configRom) {
            collectKeys(element, lastId());
        }
    }

    // The parent of struct entries is no node, but its inline formulas are.
    void collectStruct(XmlElement element) {
        collectInline(element);
        for (const XmlElement entry : element.children()) {
            if (entry.name() == "StructEntry" && add(Kind::maskedIntReg, entry)) {
                pending_.back().structRegister = element;
                collectInline(entry);
            }
        }
    }

    void collectInline(XmlElement element) {
        for (const XmlElement inner : element.children()) {
            // An inline formula needs no name.
            if (inner.name() == "IntSwissKnife" && add(Kind::intSwissKnife, inner)) {
                context_.inlineNodes[inner.key()] = lastId();
            }
        }
    }

    // The keys of a configuration ROM may stand in it.
    void collectKeys(XmlElement rom, NodeId owner) {
        for (const XmlElement key : rom.children()) {
            const auto kind = kindOf(key.name());
            if ((kind == Kind::configText || kind == Kind::configInteger) && add(*kind, key)) {
                pending_.back().owner = owner;
            }
        }
    }

    void collectEntries() {
        const std::size_t count = pending_.size();
        for (std::size_t i = 0; i < count; ++i) {
            if (description_->nodes[i].kind != Kind::enumeration) {
                continue;
            }
            const auto first = static_cast<NodeId>(pending_.size());
            // By value: the list grows in the loop.
            const XmlElement enumeration = pending_[i].element;
            for (const XmlElement entry : enumeration.children()) {
                if (entry.name() == "EnumEntry" && add(Kind::enumEntry, entry)) {
                    pending_.back().owner = static_cast<NodeId>(i);
                }
            }
            pending_[i].firstEntry = first;
            pending_[i].entryCount = static_cast<std::uint32_t>(pending_.size()) - first;
        }
    }

    [[nodiscard]] NodeId lastId() const { return static_cast<NodeId>(pending_.size() - 1); }

    static void checkName(XmlElement element) {
        const auto name = element.attribute("Name");
        const bool isEntry = element.name() == "EnumEntry";
        if (name && !(isEntry ? isLegalEntryName(*name) : isLegalName(*name))) {
            element.fail("the name '" + std::string(*name) + "' of the element '" +
                         std::string(element.name()) +
                         "' is illegal: a letter is expected first, then letters, digits and "
                         "underscores.");
        }
    }

    bool add(Kind kind, XmlElement element) {
        checkName(element);
        if (!element.attribute("Name") && kind != Kind::intSwissKnife) {
            context_.drop(element, "", "The node has no name.");
            return false;
        }
        if (plan_.isReplaced(element)) {
            return false;
        }
        if (pending_.size() >= maximumNodes) {
            element.fail("there are more than " + std::to_string(maximumNodes) + " nodes.");
        }
        Node node;
        node.kind = kind;
        description_->nodes.push_back(node);
        pending_.push_back({element, {}, nullptr, noNode, noNode, 0});
        return true;
    }

    // Names become known only here, so that a node of its own wins over an entry's made-up name.
    void index() {
        Description& d = *description_;
        d.names.reserve(d.nodes.size());
        std::string name;
        for (std::size_t i = 0; i < d.nodes.size(); ++i) {
            const PendingNode& pending = pending_[i];
            name.clear();
            if (d.nodes[i].kind == Kind::enumEntry) {
                name = "EnumEntry_";
                name += d.nameOf(pending.owner);
                name += '_';
            }
            name += pending.element.valueOf("Name");
            if (name.empty()) {
                continue;
            }
            d.nodes[i].name = context_.store(name);
            const auto id = static_cast<NodeId>(i);
            const NodeId before = d.names.insert(name, id, d.nodes, d.texts);
            if (before != noNode) {
                context_.drop(pending.element, name,
                              "The name is taken by the node of line " +
                                  std::to_string(pending_[before].element.line()) +
                                  "; this one can not be reached by it.");
            }
        }
    }

    std::deque<XmlText> texts_;  // which its elements point into
    std::shared_ptr<Description> description_;
    LoadContext context_;
    MergePlan plan_;
    std::vector<PendingNode> pending_;
};

}  // namespace

std::shared_ptr<const Description> loadDescription(std::vector<std::string> texts,
                                                   StringPolicy strings) {
    return Loader(std::move(texts), strings).load();
}

}  // namespace GenApi::Detail
