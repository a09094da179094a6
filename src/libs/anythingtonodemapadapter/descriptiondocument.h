// The whole description of a parameter set: head, one piece for each parameter in the order of
// their names, the shared port if there is one. Runs under the node's lock.
#pragma once

#include <map>
#include <memory>

#include "anythingtonodemapadapter/api.h"
#include "gcbase/gcstring.h"

namespace AnythingToNodeMapAdapter::Detail {

using GenICam::gcstring;

class CBasicNodeMapPort;
using NodeMapPorts = std::map<gcstring, std::shared_ptr<CBasicNodeMapPort>>;

// A text to look at leaves the ports as they are: in own-port mode its addresses run on and its
// ports have no names, so that it can not be loaded. For a node map every port remembers its block.
enum class DescriptionPurpose { LookAt, NodeMap };

// The same text in every locale. An empty port name gives every parameter a port of its own.
[[nodiscard]] ANYTHINGTONODEMAPADAPTER_API gcstring writeDescription(const NodeMapPorts& ports,
                                                                     const gcstring& portName,
                                                                     const gcstring& prefix,
                                                                     DescriptionPurpose purpose);

}  // namespace AnythingToNodeMapAdapter::Detail
