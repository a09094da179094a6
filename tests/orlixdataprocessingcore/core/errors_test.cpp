#include "orlixdataprocessingcore/core/errors.h"

#include <gtest/gtest.h>

#include <stdexcept>

#include "orlixdataprocessingcore/utils/typeinfo.h"

namespace {

using namespace Orlix::DataProcessing::Core;
using namespace Orlix::DataProcessing::Utils;

TEST(Errors, AnInvalidValueErrorChainsItsParents) {
    const DateTime time = DateTime::now();
    const auto origin = std::make_shared<DeviceError>("Device is gone.", time);
    const InvalidValueError error("Input image is invalid.", ErrorList{origin}, time);
    EXPECT_EQ(error.getName(), "InvalidValueError");
    EXPECT_EQ(error.getDescription(), "Input image is invalid.");
    EXPECT_TRUE(error.getTimestamp() == time);
    ASSERT_EQ(error.getParentErrors().size(), 1U);
    EXPECT_EQ(error.getParentErrors()[0], origin);
    EXPECT_EQ(origin->getName(), "DeviceError");
    EXPECT_TRUE(origin->getParentErrors().empty());
}

TEST(Errors, AGenICamErrorKeepsTheExceptionThatIsBeingHandled) {
    std::shared_ptr<GenICamExceptionError> error;
    try {
        throw GenICam::AccessException("Not now.", "f.cpp", 3);
    } catch (const GenICam::GenericException& exception) {
        error = std::make_shared<GenICamExceptionError>(exception, DateTime::now());
    }
    EXPECT_EQ(error->getName(), "GenICamExceptionError");
    EXPECT_EQ(error->getDescription(), "Not now.");
    EXPECT_THROW(rethrowException(error->getException()), GenICam::AccessException);
}

TEST(Errors, OutsideOfAHandlerACopyIsKept) {
    const GenICam::RuntimeException exception("Kept.", "f.cpp", 3);
    const GenICamExceptionError error(exception, DateTime::now());
    EXPECT_THROW(rethrowException(error.getException()), GenICam::GenericException);
    const StdExceptionError standard(std::logic_error("what"), DateTime::now());
    EXPECT_EQ(standard.getDescription(), "what");
    EXPECT_THROW(rethrowException(standard.getException()), std::exception);
    const UnknownExceptionError unknown("Odd.", "f.cpp", 4, DateTime::now());
    EXPECT_THROW(rethrowException(unknown.getException()), GenICam::RuntimeException);
}

TEST(Errors, AStandardErrorHasTheTextOfWhat) {
    try {
        throw std::out_of_range("far out");
    } catch (const std::exception& exception) {
        const StdExceptionError error(exception, DateTime::now());
        EXPECT_EQ(error.getName(), "StdExceptionError");
        EXPECT_EQ(error.getDescription(), "far out");
        EXPECT_THROW(rethrowException(error.getException()), std::out_of_range);
    }
}

TEST(Errors, TellTheirRegisteredType) {
    const auto error = std::make_shared<DeviceError>("d", DateTime());
    const std::shared_ptr<IError> seen = error;
    EXPECT_EQ(seen->getTypeInfo(true).getIdentifier(), "Orlix::DataProcessing::Core::DeviceError");
    EXPECT_EQ(object_cast<DeviceError>(seen.get()), error.get());
    EXPECT_EQ(object_cast<IExceptionError>(seen.get()), nullptr);
}

}  // namespace
