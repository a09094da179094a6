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
    std::sort(edges.begin(), edges.end());
    edges.erase(std::unique(edges.begin(), edges.end()), edges.end());
    return edges;
}

// Fills one slice for each node from edges sorted by provider.
void index(const std::vector<Edge>& edges, std::size_t count, std::vector<Slice>& slices,
           std::vector<NodeId>& links) {
    slices.assign(count, {});
    links.reserve(edges.size());
    for (const Edge& edge : edges) {
        Slice& slice = slices[edge.provider];
        if (slice.count++ == 0) {
            slice.begin = static_cast<std::uint32_t>(links.size());
        }
        links.push_back(edge.dependant);
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

}  // namespace

void linkDependants(LoadContext& context) {
    Description& d = context.description;
    index(invalidationEdges(context), d.nodes.size(), d.dependants, d.dependantLinks);
    std::vector<Edge> providers;
    for (const Edge& edge : context.reads) {
        providers.push_back({edge.dependant, edge.provider});
    }
    std::sort(providers.begin(), providers.end());
    providers.erase(std::unique(providers.begin(), providers.end()), providers.end());
    index(providers, d.nodes.size(), d.providers, d.providerLinks);
    linkSelecting(context);
    markFeatures(d);
    d.prepareClosures();
}

}  // namespace GenApi::Detail
