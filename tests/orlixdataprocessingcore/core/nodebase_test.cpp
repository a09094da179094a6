// The lock, the errors and the types that every node has.
#include "orlixdataprocessingcore/core/nodebase.h"

#include "orlixdataprocessingcore/core/errors.h"
#include "orlixdataprocessingcore/core/nodetest.h"
#include "orlixdataprocessingcore/threading/recursiveclock.h"

namespace Orlix::DataProcessing::Core {
namespace {

using GenICam::InvalidArgumentException;
using GenICam::RuntimeException;

class NodeBaseTest : public NodeTest {};

std::shared_ptr<IError> makeError(const char* text, int second) {
    return std::make_shared<DeviceError>(
        text, DateTime(DateTime::TimePoint(std::chrono::seconds(second))));
}

TEST_F(NodeBaseTest, TakesItsLockOnlyOnce) {
    const auto lock = std::make_shared<Threading::RecursiveCLock>();
    EXPECT_THROW(node->setLock(nullptr), InvalidArgumentException);
    node->setLock(lock);
    EXPECT_EQ(node->getLock(), lock);
    EXPECT_THROW(node->setLock(lock), RuntimeException);
}

TEST_F(NodeBaseTest, KeepsItsErrorsInTheOrderOfTheirTimes) {
    const auto later = makeError("later", 2);
    const auto sooner = makeError("sooner", 1);
    std::vector<std::pair<std::size_t, std::size_t>> sizes;
    static_cast<void>(
        node->getErrorChangedSignal()->connect([&](const ErrorSet& before, const ErrorSet& after) {
            sizes.emplace_back(before.size(), after.size());
        }));
    EXPECT_TRUE(node->setError(later));
    EXPECT_TRUE(node->setError(sooner));
    EXPECT_FALSE(node->setError(sooner));
    EXPECT_FALSE(node->setError(nullptr));
    EXPECT_EQ(*node->getErrors().begin(), sooner);
    EXPECT_TRUE(node->resetError(sooner));
    EXPECT_FALSE(node->resetError(sooner));
    EXPECT_TRUE(node->hasError());
    EXPECT_EQ(sizes, (std::vector<std::pair<std::size_t, std::size_t>>{{0, 1}, {1, 2}, {2, 1}}));
}

TEST_F(NodeBaseTest, TwoErrorsOfTheSameTimeAreTwoEntries) {
    EXPECT_TRUE(node->setError(makeError("one", 1)));
    EXPECT_TRUE(node->setError(makeError("two", 1)));
    EXPECT_EQ(node->getErrors().size(), 2U);
}

TEST_F(NodeBaseTest, ANodeOwnErrorSurvivesGoodJobsAndStarts) {
    const auto error = makeError("device", 1);
    node->setError(error);
    node->start({});
    static_cast<void>(runOnce(*node, {}));
    EXPECT_TRUE(node->hasError());
}

TEST(NodeTypes, AreRegisteredWithTheirBases) {
    const TestNode node;
    const auto simple = Utils::TypeInfo::getTypeInfo<SimpleNode>(true);
    EXPECT_EQ(node.getTypeInfo(true), simple);
    EXPECT_TRUE(simple.canConvert(Utils::TypeInfo::getTypeInfo<NodeBase>(true)));
    EXPECT_TRUE(simple.canConvert(Utils::TypeInfo::getTypeInfo<INode>(true)));
    EXPECT_FALSE(simple.canConvert(Utils::TypeInfo::getTypeInfo<AdvancedNode>(true)));
    EXPECT_NE(Utils::object_cast<INode>(static_cast<const Utils::IObject*>(&node)), nullptr);
}

}  // namespace
}  // namespace Orlix::DataProcessing::Core
