#include "genapi/nodemapref.h"

#include <gtest/gtest.h>

#include "genapi/testmap.h"

using namespace GenApiTest;

TEST(NodeMapRef, UseWithoutAMapRaisesAccessException) {
    const CNodeMapRef empty("Device");
    EXPECT_FALSE(empty._IsValid());
    EXPECT_EQ(empty._GetDeviceName(), "Device");
    EXPECT_EQ(errorOf<GenICam::AccessException>([&] { (void)empty->GetNumNodes(); }),
              "Feature not present (reference not valid)");
    EXPECT_EQ(errorOf<GenICam::AccessException>([&] { (void)empty._GetNode("A"); }),
              "Feature not present (reference not valid)");
}

TEST(NodeMapRef, CopiesKeepTheMapAlive) {
    CNodeMapRef second("Other");
    {
        const CNodeMapRef first = load(document("<Category Name=\"Root\"/>"));
        second = first;
    }
    EXPECT_NE(second->GetNode("Root"), nullptr);
    EXPECT_EQ(second._GetDeviceName(), "Device");
}

TEST(NodeMapRef, AttachReadsTheNameBackAndLetsTheOldMapGo) {
    CNodeMapRef ref("Mine");
    ref._Attach(CNodeMapFactory::CreateEmptyNodeMap("Empty"));
    EXPECT_EQ(ref._GetDeviceName(), "Empty");
    ref._Attach(ref);
    EXPECT_TRUE(ref._IsValid());
    ref._Destroy();
    EXPECT_EQ(ref._Ptr(), nullptr);
}

TEST(NodeMapRef, TheEmptyMapIsValidAndHasNoNodes) {
    const CNodeMapRef empty = CNodeMapFactory::CreateEmptyNodeMap("Device");
    EXPECT_EQ(empty->GetNumNodes(), 0U);
    EXPECT_EQ(empty->GetNode("Any"), nullptr);
    EXPECT_FALSE(empty->Connect(nullptr, "Any"));
    empty->InvalidateNodes();
    empty->Poll(1000);
}

TEST(Pointer, UseOfAnUnsetPointerRaisesLogicalError) {
    const CIntegerPtr unset;
    EXPECT_EQ(errorOf<GenICam::LogicalErrorException>([&] { (void)unset->GetValue(); }),
              "NULL pointer dereferenced");
    EXPECT_FALSE(IsReadable(unset));
}

TEST(Pointer, ANodeWithoutTheInterfaceGivesAnInvalidPointer) {
    TestMap t(Reg{"A"});
    EXPECT_TRUE(CIntegerPtr(t.node("A")).IsValid());
    EXPECT_TRUE(CRegisterPtr(t.node("A")).IsValid());
    EXPECT_FALSE(CFloatPtr(t.node("A")).IsValid());
    EXPECT_FALSE(CIntegerPtr(t.node("P")).IsValid());
    EXPECT_TRUE(CPortPtr(t.node("P")).IsValid());
}
