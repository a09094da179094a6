// The layer's own features of an open GigE Vision camera: their description, and what lies at its
// addresses. Numbers of 64 bits, lowest byte first, one every 8 bytes.
#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "aravis/connection.h"
#include "aravis/streamsettings.h"

namespace Orlix::Aravis {

// The same text for every camera.
[[nodiscard]] std::shared_ptr<const std::string> GetLayerDescription();

// Whole features or InvalidArgumentException; AccessException for one that can only be read.
void ReadLayerMemory(Connection& connection, const StreamState& state, std::int64_t address,
                     void* buffer, std::size_t length);
void WriteLayerMemory(Connection& connection, StreamState& state, std::int64_t address,
                      const void* buffer, std::size_t length);

}  // namespace Orlix::Aravis
