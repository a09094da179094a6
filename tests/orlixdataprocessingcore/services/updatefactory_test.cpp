#include "orlixdataprocessingcore/core/testnodes.h"

namespace Orlix::DataProcessing::Core {
namespace {

TEST(UpdateFactory, NumbersUpdatesInTheOrderOfTheirCreation) {
    const auto first = makeUpdate();
    const auto second = makeUpdate();
    EXPECT_LT(first->getSequenceNumber(), second->getSequenceNumber());
    EXPECT_GE(first->getSequenceNumber(), 1U);
}

TEST(UpdateFactory, KeepsTheParent) {
    const auto parent = makeUpdate();
    const auto child = getDefaultUpdateFactory()->createUpdate(nullptr, parent);
    EXPECT_EQ(child->getParent(), parent);
    EXPECT_EQ(parent->getParent(), nullptr);
}

TEST(UpdateFactory, ALongChainOfParentsEndsWithoutADeepStack) {
    UpdatePtr update = makeUpdate();
    for (int length = 0; length < 1000000; ++length) {
        update = getDefaultUpdateFactory()->createUpdate(nullptr, update);
    }
    update.reset();
}

}  // namespace
}  // namespace Orlix::DataProcessing::Core
