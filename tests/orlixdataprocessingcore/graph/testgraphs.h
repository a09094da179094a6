// Graphs that several tests are built on.
#pragma once

#include <memory>
#include <vector>

#include "orlixdataprocessingcore/core/testnodes.h"
#include "orlixdataprocessingcore/graph/graph.h"

namespace Orlix::DataProcessing::Core {

// "Source", then "A", "B" and so on, each fed by the one before; the sink, if any, reads the last.
inline void buildChain(Graph& graph, const std::shared_ptr<TestSource>& source,
                       const std::vector<std::shared_ptr<TestNode>>& nodes,
                       const std::shared_ptr<TestSink>& sink = nullptr) {
    gcstring last("Source");
    graph.addNode(last, source);
    for (std::size_t index = 0; index < nodes.size(); ++index) {
        const gcstring name(1, static_cast<char>('A' + index));
        graph.addNode(name, nodes[index]);
        graph.connect(last, "Out", name, "In");
        last = name;
    }
    if (sink) {
        graph.attachSink(last, "Out", sink);
    }
}

}  // namespace Orlix::DataProcessing::Core
