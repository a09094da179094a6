// What a transport back end of its own module exports. A module is a shared library whose file name
// begins with "liborlixtransport" and which lies beside the camera library; it has one function of
// C linkage, under the name below.
#pragma once

#include <cstdint>

namespace Orlix::Transport {

class ILayer;

// Grows with every change of transport.h or of the classes that it uses.
inline constexpr std::uint32_t backendVersion = 1;
inline constexpr const char* createLayerName = "orlixCreateTransportLayer";
inline constexpr const char* backendFilePrefix = "liborlixtransport";

// The layer of that number, from 0; null where the module has no more, or was built for another
// version. The caller owns it. What it throws tells why there is none.
using CreateLayer = ILayer* (*)(std::uint32_t version, std::uint32_t number);

}  // namespace Orlix::Transport
