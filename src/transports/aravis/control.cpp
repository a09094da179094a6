#include "aravis/control.h"

#include "aravis/bootstrap.h"

namespace Orlix::Aravis {
namespace {

using Answer = GvcpClient::Answer;
using Patience = GvcpClient::Patience;

// A camera that tells its holder tells another one of another program; a lost answer is no proof.
bool isAnother(GvcpClient& client, std::uint32_t address, std::uint32_t known,
               const Patience& patience) {
    std::uint32_t value = 0;
    return known != 0 && client.ReadRegister(address, value, patience) == Answer::Given &&
           value != known;
}

ControlSign signOf(Answer failed) {
    switch (failed) {
        case Answer::None:
            return ControlSign::None;
        case Answer::NotAsked:
            return ControlSign::NotAsked;
        default:
            return ControlSign::Refused;
    }
}

}  // namespace

Holder AskForHolder(GvcpClient& client) {
    Holder holder;
    if (client.ReadRegister(Bootstrap::primaryPort, holder.port, {}) != Answer::Given) {
        holder.port = 0;
    }
    if (client.ReadRegister(Bootstrap::primaryApplication, holder.address, {}) != Answer::Given) {
        holder.address = 0;
    }
    return holder;
}

ControlSign AskForControl(GvcpClient& client, const Holder& holder, const Patience& patience) {
    std::uint32_t privilege = 0;
    const Answer answer = client.ReadRegister(Bootstrap::controlPrivilege, privilege, patience);
    if (answer != Answer::Given) {
        return signOf(answer);
    }
    const bool isGone = (privilege & Bootstrap::privilegeMask) == 0 ||
                        isAnother(client, Bootstrap::primaryPort, holder.port, patience) ||
                        isAnother(client, Bootstrap::primaryApplication, holder.address, patience);
    return isGone ? ControlSign::Gone : ControlSign::Held;
}

}  // namespace Orlix::Aravis
