#include "aravis/systemlock.h"

namespace Orlix::Aravis {

std::mutex& SystemLock() {
    static std::mutex* const lock = new std::mutex;
    return *lock;
}

}  // namespace Orlix::Aravis
