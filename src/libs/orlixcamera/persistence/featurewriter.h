// Writes the state of a node map as a feature stream.
#pragma once

#include <string>

namespace GenApi {
class INodeMap;
}

namespace Orlix {

// Holds the map's lock. Moves selectors on the way and puts them back in any case.
[[nodiscard]] std::string writeFeatureStream(GenApi::INodeMap& map);

}  // namespace Orlix
