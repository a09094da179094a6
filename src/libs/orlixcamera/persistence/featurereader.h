// Applies a feature stream to a node map.
#pragma once

#include <string_view>

namespace GenApi {
class INodeMap;
}

namespace Orlix {

enum class ReadBack { No, Yes };

// Holds the map's lock. Loads what can be loaded, then throws RuntimeException that names the rest.
void readFeatureStream(std::string_view text, GenApi::INodeMap& map, ReadBack readBack);

}  // namespace Orlix
