#include "genapi/loader.h"

#include <algorithm>
#include <string_view>

#include "genapi/dependencies.h"
#include "genapi/elements.h"
#include "genapi/nodebuilder.h"
#include "genapi/numbertext.h"

namespace GenApi::Detail {

namespace {

constexpr std::string_view schemaPrefix = "http://www.genicam.org/GenApi/Version_";
constexpr std::size_t maximumNodes = std::size_t{1} << 20;

bool isLegalName(std::string_view name) {
    const auto isLetter = [](char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z'); };
    return !name.empty() && isLetter(name[0]) && std::all_of(name.begin(), name.end(), [&](char c) {
        return isLetter(c) || (c >= '0' && c <= '9') || c == '_';
    });
}

// The name of an entry is only a part of its node's, so it may begin with a digit or a sign.
bool isLegalEntryName(std::string_view name) {
    return isLegalName("E" + std::string(name.substr(name.find_first_not_of("+-") == 1 ? 1 : 0)));
}

class Loader {
public:
    Loader(std::string text, StringPolicy strings)
        : text_(std::move(text)),
          description_(std::make_shared<Description>()),
          context_{*description_, text_, strings, {}, {}} {}

    std::shared_ptr<const Description> load() {
        // The encoding is UTF-8 by now, whatever the declaration says.
        const pugi::xml_parse_result result = document_.load_buffer(
            text_.text().data(), text_.text().size(),
            pugi::parse_default | pugi::parse_ws_pcdata_single, pugi::encoding_utf8);
        if (!result) {
            text_.fail(static_cast<std::size_t>(std::max<std::ptrdiff_t>(result.offset, 0)),
                       std::string("not well-formed, ") + result.description() + ".");
        }
        const pugi::xml_node root = document_.document_element();
        checkRoot(root);
        readRoot(root);
        collect(root);
        collectEntries();
        index();
        NodeBuilder builder(context_);
        for (std::size_t i = 0; i < pending_.size(); ++i) {
            builder.build(static_cast<NodeId>(i), pending_[i]);
        }
        linkDependants(context_);
        return description_;
    }

private:
    [[noreturn]] void fail(pugi::xml_node element, const std::string& reason) const {
        text_.fail(static_cast<std::size_t>(std::max<std::ptrdiff_t>(element.offset_debug(), 0)),
                   reason);
    }

    void checkRoot(pugi::xml_node root) {
        if (std::string_view(root.name()) != "RegisterDescription") {
            fail(root, std::string("the root element is '") + root.name() +
                           "'; a description's is 'RegisterDescription'.");
        }
        const pugi::xml_attribute nameSpace = root.attribute("xmlns");
        if (!nameSpace) {
            context_.warn(root, "", "There is no schema name space; taken as schema 1.1.");
            checkVersion(root, root.attribute("SchemaMajorVersion").as_int(1), 0);
            return;
        }
        const std::string_view value = nameSpace.value();
        const auto unknown = [&] {
            fail(root, "the schema name space '" + std::string(value) + "' is unknown.");
        };
        if (value.substr(0, schemaPrefix.size()) != schemaPrefix) {
            unknown();
        }
        const std::string_view version = value.substr(schemaPrefix.size());
        const std::size_t split = version.find('_');
        const auto major = parseInteger(version.substr(0, split));
        const auto minor = split == std::string_view::npos
                               ? std::optional<std::int64_t>(0)
                               : parseInteger(version.substr(split + 1));
        if (!major || !minor) {
            unknown();
        }
        checkVersion(root, *major, *minor);
    }

    void checkVersion(pugi::xml_node root, std::int64_t major, std::int64_t minor) const {
        if (major != 1 || minor > 1) {
            fail(root, "the schema version " + std::to_string(major) + "." + std::to_string(minor) +
                           " is newer than 1.1, the newest known.");
        }
    }

    void readRoot(pugi::xml_node root) {
        description_->modelName = root.attribute("ModelName").value();
        description_->vendorName = root.attribute("VendorName").value();
        description_->toolTip = root.attribute("ToolTip").value();
        description_->standardNameSpace = root.attribute("StandardNameSpace").value();
        description_->productGuid = root.attribute("ProductGuid").value();
        description_->versionGuid = root.attribute("VersionGuid").value();
        description_->texts.reserve(text_.text().size() / 2);
    }

    // Groups have no meaning of their own. The nesting is bounded by the text's depth.
    void collect(pugi::xml_node parent) {
        for (const pugi::xml_node element : parent.children()) {
            if (element.type() == pugi::node_element) {
                collectElement(element);
            }
        }
    }

    void collectElement(pugi::xml_node element) {
        const std::string_view tag = element.name();
        if (tag == "Group") {
            collect(element);
        } else if (tag == "StructReg") {
            collectStruct(element);
        } else if (const auto kind = kindOf(tag)) {
            add(*kind, element);
            collectInline(element);
        } else if (tag != "Extension") {
            checkName(element);
            context_.drop(element, element.attribute("Name").value(),
                          "The element is unknown; the node is left out.");
        }
    }

    // The parent of struct entries is no node, but its inline formulas are.
    void collectStruct(pugi::xml_node element) {
        collectInline(element);
        for (const pugi::xml_node entry : element.children("StructEntry")) {
            if (add(Kind::maskedIntReg, entry)) {
                pending_.back().structRegister = element;
                collectInline(entry);
            }
        }
    }

    void collectInline(pugi::xml_node element) {
        for (const pugi::xml_node inner : element.children("IntSwissKnife")) {
            // An inline formula needs no name.
            if (add(Kind::intSwissKnife, inner)) {
                context_.inlineNodes[inner.internal_object()] = lastId();
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
            const pugi::xml_node enumeration = pending_[i].element;
            for (const pugi::xml_node entry : enumeration.children("EnumEntry")) {
                if (add(Kind::enumEntry, entry)) {
                    pending_.back().enumeration = static_cast<NodeId>(i);
                }
            }
            pending_[i].firstEntry = first;
            pending_[i].entryCount = static_cast<std::uint32_t>(pending_.size()) - first;
        }
    }

    [[nodiscard]] NodeId lastId() const { return static_cast<NodeId>(pending_.size() - 1); }

    void checkName(pugi::xml_node element) const {
        const pugi::xml_attribute name = element.attribute("Name");
        const bool isEntry = std::string_view(element.name()) == "EnumEntry";
        const bool isLegal = isEntry ? isLegalEntryName(name.value()) : isLegalName(name.value());
        if (name && (!isLegal || name.value()[0] == '\0')) {
            fail(element, std::string("the name '") + name.value() + "' of the element '" +
                              element.name() +
                              "' is illegal: a letter is expected first, then letters, digits and "
                              "underscores.");
        }
    }

    bool add(Kind kind, pugi::xml_node element) {
        checkName(element);
        if (!element.attribute("Name") && kind != Kind::intSwissKnife) {
            context_.drop(element, "", "The node has no name.");
            return false;
        }
        if (pending_.size() >= maximumNodes) {
            fail(element, "there are more than " + std::to_string(maximumNodes) + " nodes.");
        }
        Node node;
        node.kind = kind;
        node.line = context_.lineOf(element);
        description_->nodes.push_back(node);
        pending_.push_back({element, {}, noNode, noNode, 0});
        return true;
    }

    // Names become known only here, so that a node of its own wins over an entry's made-up name.
    void index() {
        Description& d = *description_;
        d.names.reserve(d.nodes.size());
        for (std::size_t i = 0; i < d.nodes.size(); ++i) {
            const PendingNode& pending = pending_[i];
            std::string name = pending.element.attribute("Name").value();
            if (pending.enumeration != noNode) {
                name = "EnumEntry_" + std::string(d.nameOf(pending.enumeration)) + "_" + name;
            }
            if (name.empty()) {
                continue;
            }
            d.nodes[i].name = context_.store(name);
            const auto id = static_cast<NodeId>(i);
            const NodeId before = d.names.insert(name, id, d.nodes, d.texts);
            if (before != noNode) {
                context_.drop(pending.element, name,
                              "The name is taken by the node of line " +
                                  std::to_string(d.nodes[before].line) +
                                  "; this one can not be reached by it.");
            }
        }
    }

    XmlText text_;
    pugi::xml_document document_;
    std::shared_ptr<Description> description_;
    LoadContext context_;
    std::vector<PendingNode> pending_;
};

}  // namespace

std::shared_ptr<const Description> loadDescription(std::string text, StringPolicy strings) {
    return Loader(std::move(text), strings).load();
}

}  // namespace GenApi::Detail
