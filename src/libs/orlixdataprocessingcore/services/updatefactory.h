// The factory behind getDefaultUpdateFactory().
#pragma once

#include "orlixdataprocessingcore/core/graphupdate.h"

namespace Orlix::DataProcessing::Core {

class UpdateFactory final : public IUpdateFactory {
public:
    [[nodiscard]] std::shared_ptr<IGraphUpdate> createUpdate(
        const INode* node, const std::shared_ptr<IGraphUpdate>& parent) override;
};

}  // namespace Orlix::DataProcessing::Core
