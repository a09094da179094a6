// How a graph is built. How it runs is in graphrun.cpp.
#include "orlixdataprocessingcore/graph/graph_impl.h"

#include <algorithm>
#include <string>

#include "gcbase/gcexception.h"
#include "orlixdataprocessingcore/core/nodelog.h"

namespace Orlix::DataProcessing::Core {

namespace {

std::string placeOf(const gcstring& node, const gcstring& pin) {
    return "\"" + node.str() + "." + pin.str() + "\"";
}

std::string placeOf(const ConnectionEnds& ends) {
    return placeOf(ends.fromNode, ends.fromPin) + " to " + placeOf(ends.toNode, ends.toPin);
}

[[noreturn]] void refuse(const std::string& text) {
    throw GenICam::InvalidArgumentException(text.c_str(), __FILE__, __LINE__);
}

template <typename Descriptor>
const Descriptor* findPin(const std::vector<Descriptor>& pins, const gcstring& name) {
    const auto found = std::find_if(pins.begin(), pins.end(),
                                    [&](const Descriptor& pin) { return pin.name == name; });
    return found == pins.end() ? nullptr : &*found;
}

template <typename Descriptor>
std::string namesOf(const std::vector<Descriptor>& pins) {
    std::string names;
    for (const Descriptor& pin : pins) {
        names += (names.empty() ? "" : ", ") + pin.name.str();
    }
    return names.empty() ? "the node has none" : "there are " + names;
}

OutputDescriptor outputOf(const GraphNode& node, const gcstring& pin) {
    const auto pins = node.node().getOutputDescriptors();
    const auto* const found = findPin(pins, pin);
    if (found == nullptr) {
        refuse("There is no output " + placeOf(node.name(), pin) + "; " + namesOf(pins) + ".");
    }
    return *found;
}

InputDescriptor inputOf(const GraphNode& node, const gcstring& pin) {
    const auto pins = node.node().getInputDescriptors();
    const auto* const found = findPin(pins, pin);
    if (found == nullptr) {
        refuse("There is no input " + placeOf(node.name(), pin) + "; " + namesOf(pins) + ".");
    }
    return *found;
}

void checkTypes(const ConnectionEnds& ends, const OutputDescriptor& output,
                const InputDescriptor& input) {
    if (!output.type.canConvert(input.type)) {
        refuse("Can't connect " + placeOf(ends) + ": an output of type \"" +
               output.type.getIdentifier().str() + "\" doesn't fit an input of type \"" +
               input.type.getIdentifier().str() + "\".");
    }
}

}  // namespace

Graph::Impl::Impl(const GraphOptions& options) : capacity_(options.connectionCapacity) {
    if (capacity_ == 0) {
        refuse("The connections of a graph need a capacity of at least 1.");
    }
}

Graph::Impl::~Impl() {
    guarded(this, "stopping a graph", [&] { stop(StopMode::Drop); });
    guarded(this, "freeing the resources of a graph", [&] { freeResources(); });
    // Slots that still run must end before the nodes that they wake.
    for (Member& member : members_) {
        member.slots.clear();
    }
    for (const Link& link : links_) {
        guarded(this, "taking a connection apart", [&] {
            INode& from = find(link.connection->ends().fromNode)->node();
            INode& to = find(link.connection->ends().toNode)->node();
            if (from.isOutputSinkAttached(link.output)) {
                from.detachOutputSink(link.output);
            }
            if (to.isConfigured(link.input)) {
                to.unconfigureInputType(link.input);
            }
        });
    }
    for (const Reader& reader : readers_) {
        guarded(this, "detaching a sink", [&] {
            if (reader.node->node().isOutputSinkAttached(reader.output)) {
                reader.node->node().detachOutputSink(reader.output);
            }
        });
    }
    activity_->waitUntilIdle();
}

void Graph::Impl::checkStopped(const char* what) const {
    if (running_) {
        throw GenICam::RuntimeException(
            (std::string(what) + " is not possible while the graph runs.").c_str(), __FILE__,
            __LINE__);
    }
}

void Graph::Impl::addNode(const gcstring& name, const std::shared_ptr<INode>& node) {
    checkStopped("Adding a node");
    if (name.empty() || !node) {
        refuse("A node of a graph needs a name and must not be null.");
    }
    for (const Member& member : members_) {
        if (member.node->name() == name) {
            refuse("There is a node \"" + name.str() + "\" already.");
        }
    }
    Member member{std::make_shared<GraphNode>(name, node, activity_), {}, 0};
    observe(member);
    std::lock_guard guard(listMutex_);
    members_.push_back(std::move(member));
}

void Graph::Impl::observe(Member& member) {
    GraphNode* const node = member.node.get();
    INode& inner = node->node();
    const auto listen = [&](const auto& signal, const auto& slot) {
        member.slots.emplace_back(signal->connect(slot, {member.node}), true);
    };
    listen(inner.getCanExecuteSignal(), [node] { node->wake(); });
    // One that is stopped can't wait for space any more: its values are dropped.
    listen(inner.getStateChangedSignal(), [node] { node->wake(); });
    listen(inner.getAutoResetChangedSignal(),
           [this, node](const gcstring& pin) { refreshAutoReset(*node, pin); });
    listen(inner.getInputsChangedSignal(), [this, node] { refreshPins(*node); });
    listen(inner.getOutputsChangedSignal(), [this, node] { refreshPins(*node); });
}

const std::shared_ptr<GraphNode>& Graph::Impl::find(const gcstring& name) const {
    for (const Member& member : members_) {
        if (member.node->name() == name) {
            return member.node;
        }
    }
    refuse("There is no node \"" + name.str() + "\".");
}

void Graph::Impl::connect(const ConnectionEnds& ends) {
    checkStopped("Connecting");
    const std::shared_ptr<GraphNode>& from = find(ends.fromNode);
    const std::shared_ptr<GraphNode>& to = find(ends.toNode);
    const OutputDescriptor output = outputOf(*from, ends.fromPin);
    const InputDescriptor input = inputOf(*to, ends.toPin);
    const std::string place = placeOf(ends);
    if (!to->node().canConfigure(ends.toPin)) {
        refuse("Can't connect " + place + ": the input is taken.");
    }
    checkTypes(ends, output, input);
    if (reaches(*to, *from, connections())) {
        refuse("Can't connect " + place + ": the connection would close a cycle.");
    }
    Link link;
    link.connection = std::make_shared<Connection>(ends, from, to, limitsOf(output, input));
    link.connection->setKeepsLastValue(!to->node().isAutoResetEnabled(ends.toPin));
    link.input = to->node().configureInputType(ends.toPin, output.type);
    try {
        link.output = from->node().attachOutputSink(ends.fromPin, link.connection);
    } catch (...) {
        to->node().unconfigureInputType(link.input);
        throw;
    }
    {
        std::lock_guard guard(listMutex_);
        from->connectOutput(link.connection);
        to->connectInput(*link.connection);
        links_.push_back(std::move(link));
    }
    refreshPins(*to);  // they may have changed before the connection was listed
}

void Graph::Impl::attachSink(const gcstring& node, const gcstring& pin,
                             const std::shared_ptr<IOutputSink>& sink) {
    checkStopped("Attaching a sink");
    if (!sink) {
        refuse("No sink passed for " + placeOf(node, pin) + ".");
    }
    const std::shared_ptr<GraphNode>& from = find(node);
    static_cast<void>(outputOf(*from, pin));
    Reader reader{from, pin, std::make_shared<GraphSink>(wakerOf(sink)), nullptr};
    reader.output = from->node().attachOutputSink(pin, reader.sink);
    from->connectOutput(reader.sink);
    readers_.push_back(std::move(reader));
}

void Graph::Impl::detachSink(const std::shared_ptr<IOutputSink>& sink) {
    checkStopped("Detaching a sink");
    for (auto reader = readers_.begin(); reader != readers_.end();) {
        if (reader->sink->waker()->sink() != sink) {
            ++reader;
            continue;
        }
        if (reader->node->node().isOutputSinkAttached(reader->output)) {
            reader->node->node().detachOutputSink(reader->output);
        }
        reader->node->disconnectOutput(reader->sink);
        reader = readers_.erase(reader);
    }
}

// One for all pins that the sink reads, since a sink tells only one listener of space.
std::shared_ptr<SinkWaker> Graph::Impl::wakerOf(const std::shared_ptr<IOutputSink>& sink) const {
    for (const Reader& reader : readers_) {
        if (reader.sink->waker()->sink() == sink) {
            return reader.sink->waker();
        }
    }
    return std::make_shared<SinkWaker>(sink);
}

void Graph::Impl::validate() const {
    for (const auto& node : nodes()) {
        checkInputs(*node);
    }
    checkJoins(nodes(), connections());
}

void Graph::Impl::checkInputs(const GraphNode& node) const {
    for (const InputDescriptor& input : node.node().getInputDescriptors()) {
        if (!input.optional && node.node().canConfigure(input.name) &&
            !isConnected(node, input.name)) {
            throw GenICam::RuntimeException(
                ("The input " + placeOf(node.name(), input.name) + " has to be connected.").c_str(),
                __FILE__, __LINE__);
        }
    }
}

bool Graph::Impl::isConnected(const GraphNode& node, const gcstring& input) const {
    const Connections all = connections();
    return std::any_of(all.begin(), all.end(), [&](const auto& connection) {
        return connection->to() == &node && connection->ends().toPin == input;
    });
}

// A node may have remade its pins since they were connected, or lack one now. Our bases keep the
// sinks of an output that is made anew.
void Graph::Impl::renewAttachments() {
    for (Link& link : links_) {
        renewLink(link);
    }
    for (Reader& reader : readers_) {
        static_cast<void>(outputOf(*reader.node, reader.pin));
        if (!reader.node->node().isOutputSinkAttached(reader.output)) {
            reader.output = reader.node->node().attachOutputSink(reader.pin, reader.sink);
        }
    }
}

void Graph::Impl::renewLink(Link& link) {
    const ConnectionEnds& ends = link.connection->ends();
    const std::shared_ptr<GraphNode>& from = find(ends.fromNode);
    const std::shared_ptr<GraphNode>& to = find(ends.toNode);
    const OutputDescriptor output = outputOf(*from, ends.fromPin);
    checkTypes(ends, output, inputOf(*to, ends.toPin));
    if (!to->node().isConfigured(link.input)) {
        link.input = to->node().configureInputType(ends.toPin, output.type);
        refreshAutoReset(*to, ends.toPin);
    }
    if (!from->node().isOutputSinkAttached(link.output)) {
        link.output = from->node().attachOutputSink(ends.fromPin, link.connection);
    }
}

ConnectionLimits Graph::Impl::limitsOf(const OutputDescriptor& output,
                                       const InputDescriptor& input) const {
    const std::uint64_t capacity =
        std::min({std::uint64_t{capacity_}, output.maxJobCount, input.maxJobCount});
    return {!input.optional, static_cast<std::size_t>(std::max<std::uint64_t>(1, capacity))};
}

void Graph::Impl::refreshPins(GraphNode& node) {
    for (const auto& connection : connections()) {
        if (connection->from() == &node || connection->to() == &node) {
            refreshLimits(*connection);
        }
    }
    for (const InputDescriptor& input : node.node().getInputDescriptors()) {
        refreshAutoReset(node, input.name);  // that of a pin made anew begins anew
    }
}

// Any thread may remake a pin at any time: what holds in the end is what the nodes say. A pin that
// is gone for the moment leaves the limits as they are.
void Graph::Impl::refreshLimits(Connection& connection) const {
    for (bool isSettled = false; !isSettled;) {
        const auto outputs = connection.from()->node().getOutputDescriptors();
        const auto inputs = connection.to()->node().getInputDescriptors();
        const auto* const output = findPin(outputs, connection.ends().fromPin);
        const auto* const input = findPin(inputs, connection.ends().toPin);
        if (output == nullptr || input == nullptr) {
            return;
        }
        const ConnectionLimits limits = limitsOf(*output, *input);
        isSettled =
            connection.isNeeded() == limits.needed && connection.capacity() == limits.capacity;
        connection.setLimits(limits);
    }
}

// Any thread may change an auto reset at any time: what holds in the end is what the node says.
void Graph::Impl::refreshAutoReset(GraphNode& node, const gcstring& pin) {
    std::shared_ptr<Connection> changed;
    {
        std::lock_guard guard(listMutex_);
        for (const Link& link : links_) {
            if (link.connection->to() == &node && link.connection->ends().toPin == pin) {
                changed = link.connection;
            }
        }
    }
    for (bool isSettled = !changed; !isSettled;) {
        const bool resets = node.node().isAutoResetEnabled(pin);
        node.setKeepsLastValue(*changed, !resets);
        isSettled = node.node().isAutoResetEnabled(pin) == resets;
    }
}

GraphNodes Graph::Impl::nodes() const {
    std::lock_guard guard(listMutex_);
    GraphNodes result;
    for (const Member& member : members_) {
        result.push_back(member.node);
    }
    return result;
}

Connections Graph::Impl::connections() const {
    std::lock_guard guard(listMutex_);
    Connections result;
    for (const Link& link : links_) {
        result.push_back(link.connection);
    }
    return result;
}

}  // namespace Orlix::DataProcessing::Core
