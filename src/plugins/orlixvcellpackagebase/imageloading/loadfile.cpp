#include "imageloading/loadfile.h"

#include <exception>
#include <stdexcept>

#include "gcbase/gcexception.h"
#include "imageloading/log.h"
#include "orlixdataprocessingcore/core/errors.h"

namespace Plugin::OrlixVCellPackageBase {

namespace Core = Orlix::DataProcessing::Core;
namespace Utils = Orlix::DataProcessing::Utils;
using namespace ImageLoadingLog;

namespace {

constexpr char loadFailed[] = "Failed to load image.";

// In a handler. Each error keeps the exception that is being handled; the one that is passed in
// lends its description.
std::shared_ptr<Core::IError> makeLoadError() {
    const auto now = Utils::DateTime::now();
    try {
        throw;
    } catch (const GenICam::GenericException&) {
        return std::make_shared<Core::GenICamExceptionError>(
            GenICam::GenericException(loadFailed, __FILE__, __LINE__), now);
    } catch (const std::exception&) {
        return std::make_shared<Core::StdExceptionError>(std::runtime_error(loadFailed), now);
    } catch (...) {
        return Utils::makeErrorOfCaught(loadFailed);
    }
}

}  // namespace

std::shared_ptr<Core::IError> tryLoad(const std::function<void()>& load) {
    try {
        load();
        return nullptr;
    } catch (...) {
        Utils::logCaught(getSubject(nullptr), "loading image");
        return makeLoadError();
    }
}

}  // namespace Plugin::OrlixVCellPackageBase
