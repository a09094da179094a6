#include "orlixdataprocessingcore/utils/slotresult.h"

#include <gtest/gtest.h>

#include <stdexcept>

#include "orlixdataprocessingcore/expectthrow.h"

namespace {

using namespace Orlix::DataProcessing::Utils;
using Orlix::Test::expectThrow;

TEST(SlotResult, AValueResultIsValidWithoutException) {
    ValueResult<void> result;
    EXPECT_TRUE(result.isValid());
    EXPECT_FALSE(result.hasException());
    EXPECT_NO_THROW(result.get());
}

TEST(SlotResult, SecondGetOfAnExceptionFindsTheResultEmpty) {
    ExceptionResult<void> result(makeExceptionPtr(std::range_error("bad slot")));
    EXPECT_TRUE(result.isValid());
    EXPECT_TRUE(result.hasException());
    EXPECT_THROW(result.get(), std::range_error);
    EXPECT_FALSE(result.isValid());
    const auto thrown =
        expectThrow<GenICam::RuntimeException>([&] { result.get(); }, "Result is not valid.");
    EXPECT_EQ(thrown.sourceFile, "src/libs/orlixdataprocessingcore/utils/slotresult_impl.h");
    expectThrow<GenICam::RuntimeException>([&] { static_cast<void>(result.hasException()); },
                                           "Result is not valid.");
}

TEST(SlotResult, AnExceptionResultOfNothingIsRefused) {
    expectThrow<GenICam::InvalidArgumentException>([] { ExceptionResult<void> result(nullptr); },
                                                   "Invalid exception pointer passed.");
}

}  // namespace
