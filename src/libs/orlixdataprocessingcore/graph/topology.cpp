#include "orlixdataprocessingcore/graph/topology.h"

#include <algorithm>
#include <map>
#include <set>
#include <string>
#include <utility>

#include "gcbase/gcexception.h"

namespace Orlix::DataProcessing::Core {

namespace {

// Where updates begin: a node, and the group of its pins that share them.
using Origin = std::pair<const GraphNode*, gcstring>;
using Origins = std::set<Origin>;
using OriginsOfNode = std::map<const GraphNode*, Origins>;  // empty where updates begin

// Connections by the node at one of their ends.
std::multimap<const GraphNode*, const Connection*> indexBy(const Connections& connections,
                                                           const GraphNode* (Connection::*end)()
                                                               const noexcept) {
    std::multimap<const GraphNode*, const Connection*> index;
    for (const auto& connection : connections) {
        index.emplace((connection.get()->*end)(), connection.get());
    }
    return index;
}

gcstring updateGroupOf(const Connection& connection) {
    for (const OutputDescriptor& output : connection.from()->node().getOutputDescriptors()) {
        if (output.name == connection.ends().fromPin) {
            return output.updateGroup;
        }
    }
    return {};
}

// Where the updates begin that come through the connection.
Origins originsOf(const Connection& connection, const OriginsOfNode& known) {
    const Origins& passedOn = known.at(connection.from());
    return passedOn.empty() ? Origins{{connection.from(), updateGroupOf(connection)}} : passedOn;
}

// Where the updates begin that the node passes on.
Origins originsOf(const GraphNode& node, const std::vector<const Connection*>& inputs,
                  const OriginsOfNode& known) {
    Origins origins;
    if (!node.node().isForwardingUpdates()) {
        return origins;
    }
    bool waits = false;
    for (const Connection* const input : inputs) {
        // An input that keeps its last value takes no part, unless all inputs do.
        waits = waits || !input->keepsLastValue();
    }
    for (const Connection* const input : inputs) {
        if (!waits || !input->keepsLastValue()) {
            origins.merge(originsOf(*input, known));
        }
    }
    return origins;
}

std::string fromPlace(const Connection& connection) {
    const ConnectionEnds& ends = connection.ends();
    return "\"" + ends.fromNode.str() + "." + ends.fromPin.str() + "\"";
}

std::set<const GraphNode*> nodesOf(const Origins& origins) {
    std::set<const GraphNode*> nodes;
    for (const Origin& origin : origins) {
        nodes.insert(origin.first);
    }
    return nodes;
}

[[noreturn]] void refuseJoin(const GraphNode& node, const Connection& a, const Connection& b,
                             bool sameNodes) {
    const std::string inputs = "The inputs \"" + a.ends().toPin.str() + "\" and \"" +
                               b.ends().toPin.str() + "\" of node \"" + node.name().str() + "\"";
    const std::string text =
        sameNodes ? inputs + " can never have a value of the same update: the outputs behind " +
                        fromPlace(a) + " and " + fromPlace(b) +
                        " have updates of their own. Switch auto reset off for one."
                  : inputs +
                        " get their values from different sources and can never have a value of "
                        "the same update. Connect them to one source, or switch auto reset off "
                        "for one.";
    throw GenICam::RuntimeException(text.c_str(), __FILE__, __LINE__);
}

void checkJoin(const GraphNode& node, const std::vector<const Connection*>& inputs,
               const OriginsOfNode& known) {
    const Connection* first = nullptr;
    for (const Connection* const input : inputs) {
        if (input->keepsLastValue()) {
            continue;
        }
        if (first == nullptr) {
            first = input;
            continue;
        }
        const Origins one = originsOf(*first, known);
        const Origins other = originsOf(*input, known);
        if (one != other) {
            refuseJoin(node, *first, *input, nodesOf(one) == nodesOf(other));
        }
    }
}

}  // namespace

GraphNodes sortSourcesFirst(const GraphNodes& nodes, const Connections& connections) {
    std::map<const GraphNode*, std::size_t> open;  // inputs whose producer is not listed yet
    for (const auto& connection : connections) {
        ++open[connection->to()];
    }
    const auto byProducer = indexBy(connections, &Connection::from);
    std::map<const GraphNode*, std::shared_ptr<GraphNode>> shared;
    GraphNodes sorted;
    for (const auto& node : nodes) {
        shared.emplace(node.get(), node);
        if (open[node.get()] == 0) {
            sorted.push_back(node);
        }
    }
    for (std::size_t index = 0; index < sorted.size(); ++index) {
        const auto [begin, end] = byProducer.equal_range(sorted[index].get());
        for (auto entry = begin; entry != end; ++entry) {
            const GraphNode* const consumer = entry->second->to();
            if (--open[consumer] == 0) {
                sorted.push_back(shared.at(consumer));
            }
        }
    }
    return sorted;
}

bool reaches(const GraphNode& from, const GraphNode& to, const Connections& connections) {
    const auto byProducer = indexBy(connections, &Connection::from);
    std::set<const GraphNode*> seen{&from};
    std::vector<const GraphNode*> pending{&from};
    while (!pending.empty()) {
        const GraphNode* const node = pending.back();
        pending.pop_back();
        if (node == &to) {
            return true;
        }
        const auto [begin, end] = byProducer.equal_range(node);
        for (auto entry = begin; entry != end; ++entry) {
            if (seen.insert(entry->second->to()).second) {
                pending.push_back(entry->second->to());
            }
        }
    }
    return false;
}

void checkJoins(const GraphNodes& nodes, const Connections& connections) {
    const auto byConsumer = indexBy(connections, &Connection::to);
    OriginsOfNode origins;
    for (const auto& node : sortSourcesFirst(nodes, connections)) {
        std::vector<const Connection*> inputs;
        const auto [begin, end] = byConsumer.equal_range(node.get());
        for (auto entry = begin; entry != end; ++entry) {
            inputs.push_back(entry->second);
        }
        checkJoin(*node, inputs, origins);
        origins.emplace(node.get(), originsOf(*node, inputs, origins));
    }
}

}  // namespace Orlix::DataProcessing::Core
