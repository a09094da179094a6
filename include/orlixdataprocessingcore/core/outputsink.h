// Where the values of an output pin go. The graph's connections are sinks; so is whatever a host
// attaches to read a pin.
#pragma once

#include <memory>

#include "orlixdataprocessingcore/api.h"

namespace Orlix::DataProcessing::Utils {
class Variant;
}

namespace Orlix::DataProcessing::Core {

class IGraphUpdate;

// Told by a sink when it can take values again. Implemented by the node behind the pin.
class ORLIXDATAPROCESSINGCORE_API ISpaceListener {
public:
    virtual ~ISpaceListener();
    // Any thread; must not block and takes no node lock. The sink holds no lock that its hasSpace
    // needs, since the listener may ask at once.
    virtual void onSpaceAvailable() = 0;
};

// Called on the threads that produce values; a source may hold its own lock meanwhile. No operation
// may block or stop a node; a sink that can not take a value at once has to queue it.
class ORLIXDATAPROCESSINGCORE_API IOutputSink {
public:
    virtual ~IOutputSink();

    // The pin's value in this update.
    virtual void put(const std::shared_ptr<IGraphUpdate>& update, const Utils::Variant& value) = 0;
    // The same by a producer that needs neither any more, so that a sink that keeps them can take
    // them over. As it stands here, it calls put.
    virtual void putLast(std::shared_ptr<IGraphUpdate>&& update, Utils::Variant&& value);
    // This update has no value for the pin. It may be another object than the one of that number
    // that its source has made.
    virtual void skip(const std::shared_ptr<IGraphUpdate>& update) = 0;
    // Whether another value is welcome now. Values put in spite of a false are taken all the same.
    [[nodiscard]] virtual bool hasSpace() const = 0;
    // Called once at attachment; a null pointer at detachment.
    virtual void setSpaceListener(const std::weak_ptr<ISpaceListener>& listener) = 0;
};

}  // namespace Orlix::DataProcessing::Core
