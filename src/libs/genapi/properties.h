// What a node's element says, as texts, for INode::GetProperty. Made anew from the node's row each
// time, so that a description need not keep its text. Pure function; any thread may call.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "genapi/description.h"

namespace GenApi::Detail {

struct Property {
    std::string_view name;
    std::string value;
    std::string attribute;
};

// In a fixed order, several of one name behind each other.
[[nodiscard]] std::vector<Property> propertiesOf(const Description& description, NodeId id);

}  // namespace GenApi::Detail
