#include "imageloading/loadfile.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <new>
#include <stdexcept>
#include <string>

#include "gcbase/gcexception.h"
#include "orlixdataprocessingcore/core/errors.h"
#include "support/texts.h"

namespace Plugin::OrlixVCellPackageBase {
namespace {

namespace Core = Orlix::DataProcessing::Core;
namespace Utils = Orlix::DataProcessing::Utils;
using testing::ElementsAre;
using testing::EndsWith;
using testing::IsEmpty;

class TryLoad : public testing::Test {
protected:
    [[nodiscard]] std::vector<std::string> lines() const {
        return getLines(capture, "orlix.dataprocessing.vcell.ImageLoading");
    }

    // The text of the exception of class E that the error keeps.
    template <typename E>
    static std::string causeOf(const std::shared_ptr<Core::IError>& error) {
        const auto kept = std::dynamic_pointer_cast<Core::IExceptionError>(error);
        return kept == nullptr
                   ? "no exception kept"
                   : getFailure<E>([&] { Utils::rethrowException(kept->getException()); });
    }

    const Utils::LogCapture capture;
};

TEST_F(TryLoad, ALoadThatGoesWellHasNoErrorAndNoLine) {
    int loads = 0;
    EXPECT_EQ(tryLoad([&] { ++loads; }), nullptr);
    EXPECT_EQ(loads, 1);
    EXPECT_THAT(lines(), IsEmpty());
}

TEST_F(TryLoad, AGenICamExceptionIsAnErrorOfItsKind) {
    const auto error =
        tryLoad([] { throw GenICam::RuntimeException("no picture", __FILE__, __LINE__); });
    ASSERT_NE(std::dynamic_pointer_cast<Core::GenICamExceptionError>(error), nullptr);
    EXPECT_EQ(error->getName(), "GenICamExceptionError");
    EXPECT_EQ(error->getDescription(), "Failed to load image.");
    EXPECT_EQ(causeOf<GenICam::RuntimeException>(error), "no picture");
    EXPECT_THAT(lines(), ElementsAre("4 ImageLoading: Exception caught while loading image. "
                                     "Message: no picture"));
}

TEST_F(TryLoad, AStandardExceptionIsAnErrorOfItsKind) {
    const auto error = tryLoad([] { throw std::out_of_range("too far"); });
    ASSERT_NE(std::dynamic_pointer_cast<Core::StdExceptionError>(error), nullptr);
    EXPECT_EQ(error->getName(), "StdExceptionError");
    EXPECT_EQ(error->getDescription(), "Failed to load image.");
    EXPECT_EQ(causeOf<std::out_of_range>(error), "too far");
    EXPECT_THAT(lines(), ElementsAre("4 ImageLoading: Exception caught while loading image. "
                                     "Message: too far"));
}

TEST_F(TryLoad, AnythingElseIsAnErrorWithThePlace) {
    const auto error =
        std::dynamic_pointer_cast<Core::UnknownExceptionError>(tryLoad([] { throw 5; }));
    ASSERT_NE(error, nullptr);
    EXPECT_EQ(error->getName(), "UnknownExceptionError");
    EXPECT_EQ(error->getDescription(), "Failed to load image.");
    EXPECT_EQ(error->getSourceFile(),
              "src/plugins/orlixvcellpackagebase/imageloading/loadfile.cpp");
    EXPECT_GT(error->getSourceLine(), 0U);
    EXPECT_THAT(lines(), ElementsAre("4 ImageLoading: Unknown exception caught while loading "
                                     "image."));
}

}  // namespace
}  // namespace Plugin::OrlixVCellPackageBase
