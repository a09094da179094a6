#include "anythingtonodemapadapter/stringparameterport.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

#include "testowner.h"

namespace AnythingToNodeMapAdapter::Test {

using testing::ElementsAre;
using testing::IsEmpty;

// The bytes of a read of `length` into a buffer that held other bytes.
std::string readBytes(const IStringParameterPort& port, std::size_t length) {
    std::string bytes(length, 'x');
    port.readValue(bytes.data(), length);
    return bytes;
}

TEST(StringParameterPortRelay, LongTextIsCutWithoutATerminator) {
    TestOwner owner;
    owner.path = "abcdef";
    EXPECT_EQ(readBytes(*makePath(owner), 4), "abcd");
    EXPECT_EQ(readBytes(*makePath(owner), 6), "abcdef");
    EXPECT_EQ(readBytes(*makePath(owner), 0), "");
}

TEST(StringParameterPortRelay, ShortTextIsPaddedWithZerosToTheEnd) {
    TestOwner owner;
    owner.path = "ab";
    EXPECT_EQ(readBytes(*makePath(owner), 6), std::string("ab\0\0\0\0", 6));
}

TEST(StringParameterPortRelay, SizeIsTheMaximumLength) {
    TestOwner owner;
    EXPECT_EQ(makePath(owner, {}, 1024)->getSize(), 1024U);
}

TEST(StringParameterPortRelay, ChangedTextReachesSetterAndObserver) {
    TestOwner owner;
    CountingObserver observer;
    const auto port = makePath(owner);
    port->setObserver(&observer);
    port->writeValue("other", false);
    EXPECT_EQ(owner.path, "other");
    EXPECT_THAT(observer.names, ElementsAre("Path"));
}

TEST(StringParameterPortRelay, PresentTextCallsTheSetterButNoObserver) {
    TestOwner owner;
    CountingObserver observer;
    const auto port = makePath(owner);
    port->setObserver(&observer);
    port->writeValue("images", false);
    EXPECT_EQ(owner.setterCalls, 1);
    EXPECT_THAT(observer.names, IsEmpty());
}

TEST(StringParameterPortRelay, SilentChangeNeverCallsTheObserver) {
    TestOwner owner;
    CountingObserver observer;
    const auto port = makePath(owner);
    port->setObserver(&observer);
    port->writeValue("other", true);
    EXPECT_EQ(owner.path, "other");
    EXPECT_THAT(observer.names, IsEmpty());
}

TEST(StringParameterPort, HoldsItsText) {
    const auto port = makeStatus();
    EXPECT_EQ(readBytes(*port, 6), std::string("idle\0\0", 6));
    EXPECT_EQ(readBytes(*port, 2), "id");
    port->writeValue("busy now", true);
    EXPECT_EQ(readBytes(*port, 8), "busy now");
    EXPECT_EQ(port->getSize(), 12U);
}

TEST(StringParameterPort, UnchangedTextTouchesNoObserverSilentOrNot) {
    CountingObserver observer;
    const auto port = makeStatus();
    port->setObserver(&observer);
    port->writeValue("idle", false);
    port->writeValue("idle", true);
    EXPECT_THAT(observer.names, IsEmpty());
}

TEST(StringParameterPort, ChangedTextReachesTheObserverUnlessSilent) {
    CountingObserver observer;
    const auto port = makeStatus();
    port->setObserver(&observer);
    port->writeValue("busy", true);
    EXPECT_THAT(observer.names, IsEmpty());
    port->writeValue("done", false);
    EXPECT_THAT(observer.names, ElementsAre("Status"));
}

}  // namespace AnythingToNodeMapAdapter::Test
