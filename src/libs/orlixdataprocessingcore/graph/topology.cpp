#include "orlixdataprocessingcore/graph/topology.h"

#include <algorithm>
#include <map>
#include <set>
#include <string>

#include "gcbase/gcexception.h"

namespace Orlix::DataProcessing::Core {

namespace {

using Origins = std::set<const GraphNode*>;
using OriginsOfNode = std::map<const GraphNode*, Origins>;

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

// Where the updates begin under which a node's values leave.
Origins originsOf(const GraphNode& node, const std::vector<const Connection*>& inputs,
                  const OriginsOfNode& known) {
    Origins origins;
    bool waits = false;
    for (const Connection* const input : inputs) {
        // An input that keeps its last value takes no part, unless all inputs do.
        waits = waits || !input->keepsLastValue();
    }
    for (const Connection* const input : inputs) {
        if (!waits || !input->keepsLastValue()) {
            const Origins& more = known.at(input->from());
            origins.insert(more.begin(), more.end());
        }
    }
    if (inputs.empty() || !node.node().isForwardingUpdates()) {
        return {&node};
    }
    return origins;
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
        } else if (known.at(first->from()) != known.at(input->from())) {
            throw GenICam::RuntimeException(
                ("The inputs \"" + first->ends().toPin.str() + "\" and \"" +
                 input->ends().toPin.str() + "\" of node \"" + node.name().str() +
                 "\" get their values from different sources and can never have a value of the "
                 "same update. Connect them to one source, or switch auto reset off for one.")
                    .c_str(),
                __FILE__, __LINE__);
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
