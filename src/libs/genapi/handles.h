// The objects that users see as nodes: a map and a number, behind the interfaces of their kind.
// They lie in a block of their map's, which makes and destroys them.
#pragma once

#include <cstddef>

#include "genapi/nodemap.h"

namespace GenApi::Detail {

// Bytes in the block, such that the next handle is aligned.
[[nodiscard]] std::size_t handleSize(Kind kind);
[[nodiscard]] INode* makeHandle(Kind kind, std::byte* place, NodeMap& map, NodeId id);
void destroyHandle(INode* handle) noexcept;

}  // namespace GenApi::Detail
