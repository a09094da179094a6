#include "camera/allocationstep.h"

#include <string>

namespace Plugin::OrlixVCellPackageBase {

namespace Core = Orlix::DataProcessing::Core;
namespace Utils = Orlix::DataProcessing::Utils;

void runAllocationStep(Core::ErrorList& errors, const Utils::LogSubject& subject, const char* doing,
                       const std::function<Core::ErrorList()>& step) {
    try {
        const Core::ErrorList more = step();
        errors.insert(errors.end(), more.begin(), more.end());
    } catch (...) {
        Utils::logCaught(subject, doing);
        const std::string unknown = std::string("Unknown exception caught while ") + doing;
        errors.push_back(Utils::makeErrorOfCaught(unknown.c_str()));
    }
}

}  // namespace Plugin::OrlixVCellPackageBase
