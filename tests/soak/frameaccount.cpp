#include "soak/frameaccount.h"

#include <stdexcept>

#include "genapi/genapi.h"
#include "orlixdataprocessingcore/core/inode.h"
#include "orlixdataprocessingcore/core/nodemapcontainer.h"

namespace Soak {
namespace {

namespace Core = Orlix::DataProcessing::Core;

GenApi::INodeMap& cameraInstanceMap(Core::INode& node) {
    if (auto* const container = dynamic_cast<Core::INodeMapContainer*>(&node)) {
        for (const Core::NodeMapInfo& info : container->getNodeMapInfos()) {
            if (info.GetIdentifier() == "@CameraInstance") {
                return *info.GetNodeMap();
            }
        }
    }
    throw std::runtime_error("the node has no map of a camera object");
}

}  // namespace

CameraCounts readCameraCounts(Core::INode& node) {
    GenApi::INodeMap& map = cameraInstanceMap(node);
    const auto read = [&map](const char* name) {
        return GenApi::CIntegerPtr(map.GetNode(name))->GetValue();
    };
    return {read("TotalSent"),    read("TotalDelivered"),     read("TotalFailed"),
            read("TotalSkipped"), read("TotalLostForBuffer"), read("TotalEventsLost")};
}

std::vector<std::string> findMistakes(const FrameAccount& account) {
    std::vector<std::string> mistakes;
    const auto expect = [&](bool holds, const std::string& what) {
        if (!holds) {
            mistakes.push_back(account.name + ": " + what);
        }
    };
    const auto text = [](std::int64_t number) { return std::to_string(number); };
    const CameraCounts& camera = account.camera;
    const std::int64_t fates =
        camera.delivered + camera.failed + camera.skipped + camera.lostForBuffer;
    expect(camera.sent == fates,
           text(camera.sent) + " frames were sent, but " + text(fates) + " are accounted for");

    const auto errors = static_cast<std::int64_t>(account.images.errors);
    const std::int64_t good = static_cast<std::int64_t>(account.images.frames) - errors;
    const std::int64_t missing = camera.delivered - good;
    expect(missing >= 0 && missing <= account.ends + account.dropped,
           text(camera.delivered) + " frames were delivered, and " + text(good) +
               " came to the sink; only " + text(account.ends) + " ends of a run and " +
               text(account.dropped) + " dropped jobs explain a difference");
    expect(errors <= camera.failed, text(camera.failed) + " frames failed, but " + text(errors) +
                                        " images with an error came to the sink");
    const auto chunks = static_cast<std::int64_t>(account.chunks.frames);
    expect(chunks == good && account.chunks.errors == 0,
           text(good) + " images came to the sink, but " + text(chunks) +
               " values of a chunk, with " +
               text(static_cast<std::int64_t>(account.chunks.errors)) + " errors");
    const auto events = static_cast<std::int64_t>(account.events.frames);
    expect(events > 0 && events + camera.eventsLost <= camera.sent + account.ends,
           text(events) + " events came of " + text(camera.sent) + " frames, and " +
               text(camera.eventsLost) + " were lost");
    expect(account.events.errors == 0, "events have errors");
    return mistakes;
}

}  // namespace Soak
