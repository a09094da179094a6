// CAnythingToNodeMapAdapter turns the parameter ports of a node into a live node map. A node holds
// one adapter by value, fills it once and publishes getNodeMap(). The adapter has no lock: all
// operations run under the node's lock, which createNodeMap hands on to the node map.
#pragma once

#include <map>
#include <memory>

#include "anythingtonodemapadapter/api.h"
#include "anythingtonodemapadapter/basicnodemapport.h"
#include "anythingtonodemapadapter/parameterports.h"
#include "gcbase/gcstring.h"
#include "genapi/nodemapref.h"

namespace AnythingToNodeMapAdapter {

using GenICam::gcstring;

// Parameters by name; the order is that of the description.
using NodeMapPorts = std::map<gcstring, std::shared_ptr<Detail::CBasicNodeMapPort>>;

// What there is to know of a parameter set without a map. Does not own its implementation.
class ANYTHINGTONODEMAPADAPTER_API CAnythingToNodeMapAdapterBase {
public:
    virtual ~CAnythingToNodeMapAdapterBase();
    CAnythingToNodeMapAdapterBase(const CAnythingToNodeMapAdapterBase&) = delete;
    CAnythingToNodeMapAdapterBase& operator=(const CAnythingToNodeMapAdapterBase&) = delete;

    // The description for looking at; only createNodeMap makes one that can be loaded.
    virtual void generateDescription(gcstring& out, const gcstring& portName,
                                     const gcstring& prefix);

protected:
    class CAnythingToNodeMapAdapterBaseImpl;
    explicit CAnythingToNodeMapAdapterBase(CAnythingToNodeMapAdapterBaseImpl* impl);

private:
    CAnythingToNodeMapAdapterBaseImpl* impl_;
};

// Life: empty, then populated, then live after createNodeMap. What is added later shows after the
// next createNodeMap. The adapter shares in the ports; the owner of their values outlives it.
class ANYTHINGTONODEMAPADAPTER_API CAnythingToNodeMapAdapter
    : public CAnythingToNodeMapAdapterBase {
public:
    // The name is that of its maps.
    explicit CAnythingToNodeMapAdapter(const gcstring& deviceName = "Device");
    ~CAnythingToNodeMapAdapter() override;

    // Adds the parameter under its name. A parameter of that name is replaced with all its
    // dependencies; a null port is ignored.
    void addParameter(std::shared_ptr<ICategoryParameterPort> port, int mergePriority = 0);
    void addParameter(std::shared_ptr<IIntegerParameterPort> port, int mergePriority = 0);
    void addParameter(std::shared_ptr<IBooleanParameterPort> port, int mergePriority = 0);
    void addParameter(std::shared_ptr<IEnumParameterPort> port, int mergePriority = 0);
    void addParameter(std::shared_ptr<IStringParameterPort> port, int mergePriority = 0);
    void addParameter(std::shared_ptr<ICommandParameterPort> port, int mergePriority = 0);
    // Appends an entry to an enumeration added before; without that enumeration, nothing happens.
    void addEnumEntry(const gcstring& enumName, std::shared_ptr<IEnumEntryParameterPort> entry,
                      int mergePriority = 0);

    // The parameter of that name, for addDependency on it, or nodeMapPortsEnd().
    [[nodiscard]] NodeMapPorts::iterator findNodeMapPort(const gcstring& name);
    [[nodiscard]] NodeMapPorts::iterator nodeMapPortsEnd();
    // Both in one step; a parameter that was not added is an InvalidArgumentException.
    void addDependency(const gcstring& parameter, const gcstring& kind, const gcstring& name);

    // Builds the live map and connects the parameters to it; a map built before is dead after.
    // `lock` guards the map and outlives it; without one the map has a lock of its own. An empty
    // port name gives every parameter a port of its own, any other name one port for all. What
    // GenApi raises about the description passes through, and the map before stays. The result is
    // an empty handle: take the map from getNodeMap().
    GenApi::CNodeMapRef createNodeMap(GenApi::CLock* lock, const gcstring& portName,
                                      const gcstring& prefix);

    // Never null: an empty map until the first createNodeMap. Valid until the next createNodeMap
    // or the adapter's end.
    [[nodiscard]] GenApi::INodeMap* getNodeMap();

private:
    class CAnythingToNodeMapAdapterImpl;
    explicit CAnythingToNodeMapAdapter(CAnythingToNodeMapAdapterImpl* impl);

    template <typename NodeMapPort, typename Interface>
    void add(std::shared_ptr<Interface> port, int mergePriority);

    CAnythingToNodeMapAdapterImpl* impl_;
};

}  // namespace AnythingToNodeMapAdapter
