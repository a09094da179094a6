// IPortConstruct, what a port node of a map tells those who serve it: the transport, and the
// adapters of chunks and events. Constants of the description, but for GetChunkID.
#pragma once

#include "genapi/iport.h"

namespace GenApi {

// Belongs to the map; any thread may call.
class GENAPI_API IPortConstruct : virtual public IBase {
public:
    // Connects, as INodeMap::Connect with this port's name.
    virtual void SetPortImpl(IPort* pPort) = 0;
    [[nodiscard]] virtual EYesNo GetSwapEndianess() = 0;
    // Whether its registers lie in a chunk: the description has a ChunkID or a pChunkID.
    [[nodiscard]] virtual bool IsChunkPort() const = 0;
    // False where there is none, or where the node that tells it can not be read now. What the
    // device's port throws passes unchanged.
    [[nodiscard]] virtual bool GetChunkID(std::uint64_t& ChunkID) = 0;
    // Whether the chunk is to be copied, so that it outlives its buffer.
    [[nodiscard]] virtual bool CacheChunkData() const = 0;

protected:
    ~IPortConstruct() override = default;
};

}  // namespace GenApi
