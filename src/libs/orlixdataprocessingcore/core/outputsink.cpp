#include "orlixdataprocessingcore/core/outputsink.h"

#include "orlixdataprocessingcore/core/handle.h"

namespace Orlix::DataProcessing::Core {

IHandle::~IHandle() = default;
ISpaceListener::~ISpaceListener() = default;
IOutputSink::~IOutputSink() = default;

}  // namespace Orlix::DataProcessing::Core
