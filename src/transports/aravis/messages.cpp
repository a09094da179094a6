#include "aravis/messages.h"

#include "orlixcamera/messagesink.h"

namespace Orlix::Aravis {

void Tell(const std::string& message) noexcept {
    TellMessage(message.c_str());
}

}  // namespace Orlix::Aravis
