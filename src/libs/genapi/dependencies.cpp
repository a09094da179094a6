#include "genapi/dependencies.h"

#include <algorithm>

namespace GenApi::Detail {

namespace {

// Invalidating a feature is of use only if the bytes behind it go too, so whoever invalidates it
// invalidates the nodes that it takes its value from.
void addWithSources(const Description& d, NodeId from, NodeId to, std::vector<Edge>& edges) {
    // The bound ends circles of value links.
    for (int depth = 0; to != noNode && depth < 64; ++depth) {
        edges.push_back({from, to});
        to = d.nodes[to].value;
    }
}

std::vector<Edge> invalidationEdges(LoadContext& context) {
    const Description& d = context.description;
    std::vector<Edge> edges = context.reads;
    for (std::size_t i = 0; i < d.nodes.size(); ++i) {
        const auto id = static_cast<NodeId>(i);
        for (const NodeId invalidator : d.list(d.nodes[i].invalidators)) {
            addWithSources(d, invalidator, id, edges);
        }
        for (const NodeId selected : d.list(d.nodes[i].selected)) {
            addWithSources(d, id, selected, edges);
        }
    }
    return edges;
}

// Fills one slice for each node, each dependant once and in the order of their numbers. The edges
// are counted first, so that only the few of each node are left to sort.
void index(const std::vector<Edge>& edges, std::size_t count, std::vector<Slice>& slices,
           std::vector<NodeId>& links) {
    std::vector<std::uint32_t> places(count + 1, 0);
    for (const Edge& edge : edges) {
        ++places[edge.provider + 1];
    }
    for (std::size_t i = 0; i < count; ++i) {
        places[i + 1] += places[i];
    }
    std::vector<NodeId> sorted(edges.size());
    std::vector<std::uint32_t> next(places.begin(), places.end() - 1);
    for (const Edge& edge : edges) {
        sorted[next[edge.provider]++] = edge.dependant;
    }
    slices.assign(count, {});
    links.reserve(edges.size());
    for (std::size_t i = 0; i < count; ++i) {
        const auto first = sorted.begin() + places[i];
        const auto last = sorted.begin() + places[i + 1];
        std::sort(first, last);
        slices[i].begin = static_cast<std::uint32_t>(links.size());
        links.insert(links.end(), first, std::unique(first, last));
        slices[i].count = static_cast<std::uint32_t>(links.size()) - slices[i].begin;
    }
}

void linkSelecting(LoadContext& context) {
    Description& d = context.description;
    std::vector<Edge> edges;
    for (std::size_t i = 0; i < d.nodes.size(); ++i) {
        for (const NodeId selected : d.list(d.nodes[i].selected)) {
            edges.push_back({selected, static_cast<NodeId>(i)});
        }
    }
    std::sort(edges.begin(), edges.end());
    for (auto first = edges.begin(); first != edges.end();) {
        std::vector<NodeId> selecting;
        auto last = first;
        for (; last != edges.end() && last->provider == first->provider; ++last) {
            selecting.push_back(last->dependant);
        }
        d.nodes[first->provider].selecting = context.store(selecting);
        first = last;
    }
}

// Features are what a walk through categories reaches from "Root".
void markFeatures(Description& d) {
    std::vector<NodeId> open;
    const NodeId root = d.find("Root");
    if (root != noNode && d.nodes[root].kind == Kind::category) {
        open.push_back(root);
        d.nodes[root].feature = true;
    }
    while (!open.empty()) {
        const NodeId id = open.back();
        open.pop_back();
        for (const NodeId member : d.list(d.nodes[id].members)) {
            Node& node = d.nodes[member];
            if (!node.feature && node.kind == Kind::category) {
                open.push_back(member);
            }
            node.feature = true;
        }
    }
}

// Nearly no node has a set of valid values, so that writing need not look for one.
void markListed(Description& d) {
    const auto isListed = [&](const Node& node) {
        if (node.kind != Kind::integer && node.kind != Kind::floating) {
            return false;
        }
        const NumberDetail& detail = d.numbers[node.detail];
        // Where a table leads is known later.
        return detail.validValues.count != 0 || detail.index != noNode;
    };
    for (Node& node : d.nodes) {
        const Node* source = &node;
        for (int depth = 0; depth < 64 && !node.mayBeListed; ++depth) {
            node.mayBeListed = isListed(*source) || depth == 63;
            if (source->value == noNode) {
                break;
            }
            source = &d.nodes[source->value];
        }
    }
}

}  // namespace

void linkDependants(LoadContext& context) {
    Description& d = context.description;
    index(invalidationEdges(context), d.nodes.size(), d.dependants, d.dependantLinks);
    std::vector<Edge> providers;
    providers.reserve(context.reads.size());
    for (const Edge& edge : context.reads) {
        providers.push_back({edge.dependant, edge.provider});
    }
    context.reads.clear();
    index(providers, d.nodes.size(), d.providers, d.providerLinks);
    linkSelecting(context);
    markFeatures(d);
    markListed(d);
    d.prepareClosures();
}

}  // namespace GenApi::Detail
