// Nodes that answer from a configuration ROM.
#include "genapi/configrom.h"
#include "genapi/engine.h"
#include "genapi/engineerror.h"

namespace GenApi::Detail {

std::vector<std::uint8_t> Engine::configRom(NodeId id, CacheUse use) {
    const NodeId rom = d_->configKeys[node(id).detail].rom;
    std::vector<std::uint8_t> bytes(static_cast<std::size_t>(length(rom)));
    readBytes(rom, bytes, use);
    return bytes;
}

void Engine::refuseConfigKey(NodeId id) const {
    const ConfigKeyDetail& detail = d_->configKeys[node(id).detail];
    constexpr char digits[] = "0123456789ABCDEF";
    GENAPI_THROW(RuntimeException,
                 says(id, std::string("can not be evaluated: the configuration ROM '") +
                              std::string(d_->nameOf(detail.rom)) + "' has nothing for the key " +
                              digits[detail.key >> 4] + digits[detail.key & 15] + "."));
}

std::int64_t Engine::configInteger(NodeId id, CacheUse use) {
    const ConfigKeyDetail& detail = d_->configKeys[node(id).detail];
    const auto entry = findConfigKey(configRom(id, use), detail.key);
    if (!entry) {
        refuseConfigKey(id);
    }
    return configValue(*entry, address(detail.rom));
}

std::string Engine::configString(NodeId id, CacheUse use) {
    const std::vector<std::uint8_t> rom = configRom(id, use);
    const auto entry = findConfigKey(rom, d_->configKeys[node(id).detail].key);
    const auto text = entry ? configText(rom, *entry) : std::nullopt;
    if (!text) {
        refuseConfigKey(id);
    }
    return *text;
}

}  // namespace GenApi::Detail
