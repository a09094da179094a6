#include "orlixdataprocessingcore/utils/catchladder.h"

namespace Orlix::DataProcessing::Utils {

std::shared_ptr<Core::IError> makeErrorOfCurrentException(const char* unknownDescription,
                                                          const char* sourceFile,
                                                          unsigned int sourceLine) {
    const DateTime now = DateTime::now();
    try {
        throw;
    } catch (const GenICam::GenericException& exception) {
        return std::make_shared<Core::GenICamExceptionError>(exception, now);
    } catch (const std::exception& exception) {
        return std::make_shared<Core::StdExceptionError>(exception, now);
    } catch (...) {
        return std::make_shared<Core::UnknownExceptionError>(
            unknownDescription, cutSourcePath(sourceFile), sourceLine, now);
    }
}

}  // namespace Orlix::DataProcessing::Utils
