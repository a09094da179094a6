// What the graph asks of a node beyond INode.
#pragma once

#include <cstdint>
#include <memory>

namespace Orlix::DataProcessing::Core {

class IGraphUpdate;
class NodeBase;

class NodeDriver {
public:
    // Makes several jobs in a row on the calling thread cheaper: the node is claimed once for all
    // of them. Without effect for null, and while another thread executes.
    class Reservation {
    public:
        explicit Reservation(NodeBase* node);
        ~Reservation();
        Reservation(const Reservation&) = delete;
        Reservation& operator=(const Reservation&) = delete;

    private:
        NodeBase* const node_;
    };

    // Tells all sinks that this update has no values. By the thread that gives the node its jobs.
    static void skip(NodeBase& node, const std::shared_ptr<IGraphUpdate>& update);
    [[nodiscard]] static std::uint64_t failedJobs(const NodeBase& node);
    // Whether jobs of a source wait for a worker or are being run.
    [[nodiscard]] static bool hasSourceJobs(const NodeBase& node);
};

}  // namespace Orlix::DataProcessing::Core
