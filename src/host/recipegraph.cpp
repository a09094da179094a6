#include "orlixhost/recipegraph.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <system_error>

#include "host/message.h"
#include "host/nodelines.h"
#include "host/settingsdocument.h"
#include "host/startwatch.h"
#include "orlixdataprocessingcore/core/image.h"
#include "orlixdataprocessingcore/core/inode.h"
#include "orlixdataprocessingcore/graph/graph.h"
#include "orlixdataprocessingcore/utils/log.h"
#include "orlixdataprocessingcore/utils/serializable.h"
#include "orlixhost/filedescriptor.h"
#include "orlixhost/jsonsettings.h"
#include "orlixhost/nodeparameters.h"
#include "orlixhost/parametertree.h"

namespace Orlix::Host {
namespace {

using DataProcessing::Core::INode;

DataProcessing::Utils::CatId getCatIdRecipeGraph() {
    static const auto id = DataProcessing::Utils::getCatId("orlix.host.RecipeGraph");
    return id;
}

// Puts the current directory back, which a node's load may change for the whole process. Relative
// paths of the command line keep their meaning, also in a directory whose name is gone.
class CurrentDirectoryKeeper {
public:
    CurrentDirectoryKeeper() : directory_(::open(".", O_PATH | O_DIRECTORY | O_CLOEXEC)) {
        if (!directory_.isOpen()) {
            fail("the current folder can not be opened: " + std::generic_category().message(errno));
        }
    }
    ~CurrentDirectoryKeeper() { static_cast<void>(::fchdir(directory_.get()) == 0); }
    CurrentDirectoryKeeper(const CurrentDirectoryKeeper&) = delete;
    CurrentDirectoryKeeper& operator=(const CurrentDirectoryKeeper&) = delete;

private:
    const FileDescriptor directory_;
};

DataProcessing::Utils::ISerializable& serializableOf(INode& node) {
    auto* serializable = dynamic_cast<DataProcessing::Utils::ISerializable*>(&node);
    if (serializable == nullptr) {
        fail("the node has no settings to load or save");
    }
    return *serializable;
}

// The store's own messages name the setting; those of the node mostly don't.
std::string withSetting(const std::string& message, const JsonSettings& settings) {
    const bool named = message.rfind("setting \"", 0) == 0 || settings.lastRead().empty();
    return named ? message : "setting " + inQuotes(settings.lastRead()) + ": " + message;
}

std::string joinQuoted(const std::vector<std::string>& texts) {
    std::string result;
    for (const std::string& text : texts) {
        result += (result.empty() ? "" : ", ") + inQuotes(text);
    }
    return result;
}

// What the node would have taken, for somebody who has mistyped a key.
std::string knownSettings(const JsonSettings& loaded) {
    std::vector<std::string> names;
    for (const SettingsElements& path : loaded.document().read) {
        if (path.size() == 1) {
            names.push_back(pathText(path));
        }
    }
    return names.empty() ? "; the node has no settings" : "; it has " + joinQuoted(names);
}

}  // namespace

RecipeGraph::RecipeGraph(Recipe recipe, const PackageList& packages,
                         const Package::PoolPointer& pool)
    : recipe_(std::move(recipe)),
      pool_(pool),
      graph_(std::make_unique<DataProcessing::Core::Graph>()) {
    createNodes(packages);
    for (std::size_t i = 0; i < nodes_.size(); ++i) {
        loadSettings(i);
    }
}

RecipeGraph::~RecipeGraph() = default;

void RecipeGraph::createNodes(const PackageList& packages) {
    for (std::size_t i = 0; i < recipe_.nodes().size(); ++i) {
        const RecipeNode& node = recipe_.nodes()[i];
        withPlace(recipe_.placeOf(i), [&] {
            const PackageList::Entry entry = packages.find(node.type, node.uuid);
            nodes_.push_back(entry.package->createNode(*entry.module, pool_));
            uuids_.push_back(entry.module->uuid);
            graph_->addNode(GenICam::gcstring(node.name), nodes_.back());
        });
    }
}

void RecipeGraph::loadSettings(std::size_t index) {
    const std::string place = recipe_.placeOf(index);
    const std::shared_ptr<JsonSettings> settings = recipe_.settings(index);
    auto& serializable = withPlace(
        place, [&]() -> auto& { return serializableOf(*nodes_[index]); });
    try {
        const CurrentDirectoryKeeper keeper;
        const NodeLines lines([&] {
            const std::string key = settings->lastRead();
            return place + (key.empty() ? "" : ": setting " + inQuotes(key));
        });
        serializable.loadSettings(settings);
    } catch (...) {
        fail(place + ": " + withSetting(currentMessage(), *settings));
    }
    const auto written = std::make_shared<JsonSettings>(recipe_.basePath());
    withPlace(place, [&] { serializable.saveSettings(written); });
    const std::vector<std::string> unknown = settings->unknownKeys(*written);
    if (!unknown.empty()) {
        fail(place + ": unknown setting " + joinQuoted(unknown) + knownSettings(*settings));
    }
}

void RecipeGraph::start(const DataProcessing::Core::NodeArgumentCollection& arguments) {
    const StartWatch watch(nodes_);
    try {
        graph_->start(arguments);
    } catch (...) {
        const std::string message = currentMessage();
        const std::size_t failed = watch.failedNode();
        fail((failed < nodes_.size() ? startedPlace(failed) : recipe_.source()) +
             ": can not start: " + message);
    }
}

// With the texts that the node was given, which mostly say where it looks: the message of the node
// itself has none. Others may be of anything that the node happens to show.
std::string RecipeGraph::startedPlace(std::size_t index) const {
    std::string texts;
    try {
        for (const Parameter& parameter : readParameters(vcellMapOf(*nodes_[index]))) {
            if (parameter.kind == "String" && parameter.access == "RW" && !parameter.text.empty()) {
                texts +=
                    (texts.empty() ? "" : ", ") + parameter.name + " = " + inQuotes(parameter.text);
            }
        }
    } catch (...) {
        // A node without parameters has nothing to add to its message.
    }
    return recipe_.placeOf(index) + (texts.empty() ? "" : " (" + texts + ")");
}

std::size_t RecipeGraph::indexOf(const std::string& name) const {
    const auto& nodes = recipe_.nodes();
    const auto found = std::find_if(nodes.begin(), nodes.end(),
                                    [&](const RecipeNode& node) { return node.name == name; });
    if (found == nodes.end()) {
        fail(recipe_.source() + ": there is no node " + inQuotes(name));
    }
    return static_cast<std::size_t>(found - nodes.begin());
}

void RecipeGraph::set(const std::string& assignment) {
    // A node's name may have an equals sign, but no dot.
    const std::size_t dot = assignment.find('.');
    const std::size_t equals = dot == std::string::npos ? dot : assignment.find('=', dot);
    if (equals == std::string::npos || dot == 0 || dot + 1 == equals) {
        fail("--set " + assignment + ": expected NODE.PARAM=VALUE");
    }
    const std::size_t index = indexOf(assignment.substr(0, dot));
    const std::string place = recipe_.placeOf(index);
    const std::string parameter = assignment.substr(dot + 1, equals - dot - 1);
    withPlace(place, [&] {
        const NodeLines lines([&] { return place + ": parameter " + inQuotes(parameter); });
        const std::string value = assignment.substr(equals + 1);
        if (!setParameter(vcellMapOf(*nodes_[index]), parameter, value)) {
            using namespace DataProcessing::Utils;
            createLogEntry(Severitiy::Warning, getCatIdRecipeGraph(),
                           "The node has not taken the text %s.", inQuotes(value).c_str());
        }
    });
}

void RecipeGraph::connect() {
    for (std::size_t i = 0; i < recipe_.connections().size(); ++i) {
        const RecipeConnection& connection = recipe_.connections()[i];
        withPlace(recipe_.source() + ": connections[" + std::to_string(i) + "]", [&] {
            using GenICam::gcstring;
            graph_->connect(gcstring(connection.fromNode), gcstring(connection.fromPin),
                            gcstring(connection.toNode), gcstring(connection.toPin));
        });
    }
    withPlace(recipe_.source(), [&] { graph_->validate(); });
}

std::vector<OpenOutput> RecipeGraph::openOutputs() const {
    using DataProcessing::Core::Image;
    using DataProcessing::Utils::TypeInfo;
    const auto imageType = TypeInfo::getTypeInfo<Image>(true);
    const auto& connections = recipe_.connections();
    std::vector<OpenOutput> outputs;
    for (std::size_t i = 0; i < nodes_.size(); ++i) {
        const std::string& node = recipe_.nodes()[i].name;
        for (const auto& descriptor : nodes_[i]->getOutputDescriptors()) {
            const std::string pin = descriptor.name.str();
            const bool isTaken =
                std::any_of(connections.begin(), connections.end(), [&](const auto& connection) {
                    return connection.fromNode == node && connection.fromPin == pin;
                });
            if (!isTaken) {
                outputs.push_back({node, pin, descriptor.type == imageType});
            }
        }
    }
    return outputs;
}

Recipe RecipeGraph::saved(const std::string& basePath) const {
    Recipe result = recipe_;
    for (std::size_t i = 0; i < nodes_.size(); ++i) {
        const auto settings = std::make_shared<JsonSettings>(basePath);
        withPlace(recipe_.placeOf(i), [&] { serializableOf(*nodes_[i]).saveSettings(settings); });
        result.setSettings(i, *settings, uuids_[i]);
    }
    return result;
}

}  // namespace Orlix::Host
