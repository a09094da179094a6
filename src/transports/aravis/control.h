// Who has control of a GigE Vision camera, as the camera tells it over a socket that is not the
// controller's. A value; one thread at a time.
#pragma once

#include <cstdint>

#include "aravis/gvcpclient.h"

namespace Orlix::Aravis {

// The program in control, where the camera tells it: zeros where it doesn't.
struct Holder {
    std::uint32_t port = 0;
    std::uint32_t address = 0;

    [[nodiscard]] bool IsKnown() const noexcept { return port != 0 || address != 0; }
};

[[nodiscard]] Holder AskForHolder(GvcpClient& client);

// What one question tells of the control that this program took.
enum class ControlSign : std::uint8_t {
    None,      // no answer
    NotAsked,  // for want of a socket: nothing is known
    Refused,   // a sign of life that tells nothing more
    Held,      // somebody is in control, and nothing says that it is another program
    Gone,      // nobody is, or another program
};

// `holder` is who was in control when this program had taken it.
[[nodiscard]] ControlSign AskForControl(GvcpClient& client, const Holder& holder,
                                        const GvcpClient::Patience& patience);

}  // namespace Orlix::Aravis
