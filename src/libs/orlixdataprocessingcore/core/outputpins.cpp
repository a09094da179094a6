#include "orlixdataprocessingcore/core/outputpins.h"

#include <algorithm>
#include <string>

#include "gcbase/gcexception.h"
#include "orlixdataprocessingcore/core/nodelog.h"
#include "orlixdataprocessingcore/core/pinwalk.h"

namespace Orlix::DataProcessing::Core {

namespace {

class OutputHandle final : public IHandle {};

constexpr const char* deliveringToASink = "delivering to a sink";

void skipSinks(const OutputRoute& route, const std::shared_ptr<IGraphUpdate>& update) {
    for (const auto& sink : route.sinks) {
        guarded(sink.get(), deliveringToASink, [&] { sink->skip(update); });
    }
}

std::string inQuotes(const gcstring& name) {
    return "\"" + name.str() + "\"";
}

}  // namespace

bool OutputRoutes::hasSpace() const {
    for (const OutputRoute& route : routes) {
        for (const auto& sink : route.sinks) {
            if (!sink->hasSpace()) {
                return false;
            }
        }
    }
    return true;
}

void OutputRoutes::deliver(std::shared_ptr<IGraphUpdate>&& update, PinValues& values) const {
    ValueWalk walk(values.begin(), values.end());
    for (const OutputRoute& route : routes) {
        if (route.isGone || !walk.goTo(route.pin) || !walk.value().isValid()) {
            skipSinks(route, update);
            continue;
        }
        Utils::Variant& value = walk.value();
        for (const auto& sink : route.sinks) {
            const bool isLast = &route == &routes.back() && &sink == &route.sinks.back();
            guarded(sink.get(), deliveringToASink, [&] {
                if (isLast) {
                    sink->putLast(std::move(update), std::move(value));
                } else {
                    sink->put(update, value);
                }
            });
        }
    }
}

void OutputRoutes::skip(const std::shared_ptr<IGraphUpdate>& update) const {
    for (const OutputRoute& route : routes) {
        skipSinks(route, update);
    }
}

OutputPins::OutputPins() : routes_(std::make_shared<OutputRoutes>()) {}

void OutputPins::add(const OutputDescriptor& descriptor) {
    std::lock_guard guard(mutex_);
    const auto same = std::find_if(pins_.begin(), pins_.end(), [&](const Pin& pin) {
        return pin.descriptor.name == descriptor.name;
    });
    if (descriptor.name.empty() || (same != pins_.end() && !same->isGone)) {
        throw GenICam::InvalidArgumentException(
            ("Output " + inQuotes(descriptor.name) + " can't be made: the name is taken or empty.")
                .c_str(),
            __FILE__, __LINE__);
    }
    Pin pin{descriptor, {}};
    if (same != pins_.end()) {
        pin.attachments = std::move(same->attachments);
        pins_.erase(same);
    }
    pins_.push_back(std::move(pin));
    rebuildRoutes();
}

void OutputPins::remove(const gcstring& name) {
    std::lock_guard guard(mutex_);
    find(name)->isGone = true;
    eraseUnused();
    rebuildRoutes();
}

// A removed pin stays for its sinks.
void OutputPins::eraseUnused() {
    std::erase_if(pins_, [](const Pin& pin) { return pin.isGone && pin.attachments.empty(); });
}

void OutputPins::setUpdateGroup(const gcstring& name, const gcstring& group) {
    std::lock_guard guard(mutex_);
    find(name)->descriptor.updateGroup = group;
}

std::vector<OutputDescriptor> OutputPins::descriptors() const {
    std::lock_guard guard(mutex_);
    std::vector<OutputDescriptor> result;
    result.reserve(pins_.size());
    for (const Pin& pin : pins_) {
        if (!pin.isGone) {
            result.push_back(pin.descriptor);
        }
    }
    return result;
}

std::shared_ptr<IHandle> OutputPins::attach(const gcstring& name,
                                            const std::shared_ptr<IOutputSink>& sink,
                                            const std::weak_ptr<ISpaceListener>& listener) {
    if (!sink) {
        throw GenICam::InvalidArgumentException(
            ("No sink passed for output " + inQuotes(name) + ".").c_str(), __FILE__, __LINE__);
    }
    {
        std::lock_guard guard(mutex_);
        static_cast<void>(find(name));
    }
    // Before the first value, since a sink may be full at once. Sinks are called with no lock held.
    sink->setSpaceListener(listener);
    std::lock_guard guard(mutex_);
    auto handle = std::make_shared<OutputHandle>();
    find(name)->attachments.push_back({handle, sink});
    rebuildRoutes();
    return handle;
}

void OutputPins::detach(const std::shared_ptr<IHandle>& handle) {
    std::shared_ptr<IOutputSink> sink;
    {
        std::lock_guard guard(mutex_);
        for (Pin& pin : pins_) {
            const auto found =
                std::find_if(pin.attachments.begin(), pin.attachments.end(),
                             [&](const Attachment& entry) { return entry.handle == handle; });
            if (found != pin.attachments.end()) {
                sink = std::move(found->sink);
                pin.attachments.erase(found);
                break;
            }
        }
        if (!sink) {
            throw GenICam::InvalidArgumentException(
                "The handle is of no attached sink of this node.", __FILE__, __LINE__);
        }
        eraseUnused();
        rebuildRoutes();
        if (holds(sink)) {
            return;  // it reads another pin of this node and still needs its listener
        }
    }
    sink->setSpaceListener({});
}

void OutputPins::detachAll() {
    std::vector<Attachment> detached;
    {
        std::lock_guard guard(mutex_);
        for (Pin& pin : pins_) {
            std::move(pin.attachments.begin(), pin.attachments.end(), std::back_inserter(detached));
            pin.attachments.clear();
        }
        eraseUnused();
        rebuildRoutes();
    }
    for (const Attachment& attachment : detached) {
        attachment.sink->setSpaceListener({});
    }
}

bool OutputPins::isAttached(const std::shared_ptr<IHandle>& handle) const {
    std::lock_guard guard(mutex_);
    return handle && std::any_of(pins_.begin(), pins_.end(), [&](const Pin& pin) {
               return std::any_of(
                   pin.attachments.begin(), pin.attachments.end(),
                   [&](const Attachment& attachment) { return attachment.handle == handle; });
           });
}

std::shared_ptr<const OutputRoutes> OutputPins::routes() const {
    std::lock_guard guard(mutex_);
    return routes_;
}

std::vector<OutputPins::Pin>::iterator OutputPins::find(const gcstring& name) {
    const auto pin = std::find_if(pins_.begin(), pins_.end(), [&](const Pin& candidate) {
        return !candidate.isGone && candidate.descriptor.name == name;
    });
    if (pin == pins_.end()) {
        throw GenICam::InvalidArgumentException(
            ("There is no output " + inQuotes(name) + ".").c_str(), __FILE__, __LINE__);
    }
    return pin;
}

bool OutputPins::holds(const std::shared_ptr<IOutputSink>& sink) const {
    return std::any_of(pins_.begin(), pins_.end(), [&](const Pin& pin) {
        return std::any_of(pin.attachments.begin(), pin.attachments.end(),
                           [&](const Attachment& attachment) { return attachment.sink == sink; });
    });
}

void OutputPins::rebuildRoutes() {
    auto table = std::make_shared<OutputRoutes>();
    table->routes.reserve(pins_.size());
    for (const Pin& pin : pins_) {
        OutputRoute route{pin.descriptor.name, pin.descriptor.type, {}, pin.isGone};
        for (const Attachment& attachment : pin.attachments) {
            route.sinks.push_back(attachment.sink);
        }
        table->routes.push_back(std::move(route));
        if (pin.isGone) {
            continue;
        }
        // A limit of 0 would hold the source back for ever.
        table->smallestJobCount = std::min(table->smallestJobCount,
                                           std::max<std::uint64_t>(1, pin.descriptor.maxJobCount));
    }
    std::sort(table->routes.begin(), table->routes.end(),
              [](const OutputRoute& a, const OutputRoute& b) { return a.pin < b.pin; });
    routes_ = std::move(table);
    version_.fetch_add(1, std::memory_order_release);
}

}  // namespace Orlix::DataProcessing::Core
