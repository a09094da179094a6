#include "orlixcamera/codecs/codecerror.h"

#include <system_error>

namespace Orlix {

CodecError systemError(const char* action, int errorNumber) {
    return CodecError(std::string(action) + ": " + std::generic_category().message(errorNumber));
}

CodecError truncatedFile() {
    return CodecError("the file is truncated");
}

}  // namespace Orlix
