// The description file of the emulated camera, which the build embeds from emulatedcamera.xml.
#pragma once

#include <memory>
#include <string>

#include "orlixcamera/api.h"

namespace Orlix::Emulated {

// Plain XML, shared by all cameras. Any thread may call.
[[nodiscard]] ORLIXCAMERA_API std::shared_ptr<const std::string> GetDescriptionFile();

}  // namespace Orlix::Emulated
