#include "orlixdataprocessingcore/core/outputsink.h"

#include "orlixdataprocessingcore/core/handle.h"
#include "orlixdataprocessingcore/utils/variant.h"

namespace Orlix::DataProcessing::Core {

IHandle::~IHandle() = default;
ISpaceListener::~ISpaceListener() = default;
IOutputSink::~IOutputSink() = default;

void IOutputSink::putLast(std::shared_ptr<IGraphUpdate>&& update, Utils::Variant&& value) {
    put(update, value);
}

}  // namespace Orlix::DataProcessing::Core
