#include "orlixdataprocessingcore/utils/exceptionptr.h"

#include <gtest/gtest.h>

#include <stdexcept>

#include "orlixdataprocessingcore/expectthrow.h"

namespace {

using namespace Orlix::DataProcessing::Utils;
using Orlix::Test::expectThrow;

TEST(ExceptionPtr, IsNullOutsideOfAHandler) {
    EXPECT_TRUE(getCurrentException() == nullptr);
    EXPECT_TRUE(ExceptionPtr() == nullptr);
}

TEST(ExceptionPtr, KeepsTheExceptionThatIsBeingHandled) {
    ExceptionPtr kept;
    try {
        throw std::out_of_range("far out");
    } catch (...) {
        kept = getCurrentException();
    }
    EXPECT_FALSE(kept == nullptr);
    EXPECT_THROW(rethrowException(kept), std::out_of_range);
    EXPECT_THROW(rethrowException(kept), std::out_of_range) << "a copy is used up by no rethrow";
}

TEST(ExceptionPtr, RethrowOfNothingThrows) {
    expectThrow<GenICam::RuntimeException>([] { rethrowException(nullptr); },
                                           "Invalid exception pointer passed.");
}

TEST(ExceptionPtr, KeepsACopyOfAnyException) {
    const ExceptionPtr kept = makeExceptionPtr(GenICam::TimeoutException("late", "f.cpp", 1));
    EXPECT_THROW(rethrowException(kept), GenICam::TimeoutException);
}

}  // namespace
