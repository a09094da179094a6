// Injecting further descriptions into one.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "genapi/testmap.h"

using namespace GenApiTest;
using ::testing::HasSubstr;

namespace {

CNodeMapRef inject(const std::string& target, const std::vector<std::string>& added) {
    const std::string text = document(target);
    CNodeMapFactory factory(ContentType_Xml, text.data(), text.size());
    for (const std::string& nodes : added) {
        const std::string other = document(nodes);
        factory.InjectDescription(ContentType_Xml, other.data(), other.size());
    }
    return factory.CreateNodeMap();
}

std::string integer(const char* name, int value, const char* priority = nullptr) {
    return std::string("<Integer Name=\"") + name + "\"" +
           (priority == nullptr ? "" : std::string(" MergePriority=\"") + priority + "\"") +
           "><Value>" + std::to_string(value) + "</Value></Integer>\n";
}

std::int64_t valueOf(const CNodeMapRef& map, const char* name) {
    return CIntegerPtr(map->GetNode(name))->GetValue();
}

std::string namesIn(const CNodeMapRef& map, const char* category) {
    FeatureList_t features;
    CCategoryPtr(map->GetNode(category))->GetFeatures(features);
    std::string names;
    for (IValue* feature : features) {
        names += (feature->GetNode()->GetName() + " ").c_str();
    }
    return names;
}

}  // namespace

TEST(Merging, Rule10NodesOfBothAreThereAndLinkToEachOther) {
    const CNodeMapRef map = inject("<Integer Name=\"A\"><pValue>B</pValue></Integer>",
                                   {integer("B", 7) + "<Integer Name=\"C\"><pValue>A</pValue>"
                                                      "</Integer>"});
    EXPECT_EQ(valueOf(map, "C"), 7);
    EXPECT_TRUE(map->GetLoadReport().remarks.empty());
    EXPECT_EQ(map->GetModelName(), "Params");
}

TEST(Merging, Rule10TheHigherPriorityCounts) {
    const CNodeMapRef higher = inject(integer("A", 1), {integer("A", 2, "1")});
    EXPECT_EQ(valueOf(higher, "A"), 2);
    EXPECT_EQ(valueOf(inject(integer("A", 1, "1"), {integer("A", 2)}), "A"), 1);
    EXPECT_EQ(valueOf(inject(integer("A", 1), {integer("A", 2, "-1")}), "A"), 1);
    EXPECT_EQ(valueOf(inject(integer("A", 1, "-1"), {integer("A", 2)}), "A"), 2);
    // The one that does not count is told of.
    ASSERT_EQ(higher->GetLoadReport().remarks.size(), 1U);
    const LoadRemark& remark = higher->GetLoadReport().remarks[0];
    EXPECT_EQ(remark.name, "A");
    EXPECT_EQ(remark.document, 0U);
    EXPECT_EQ(remark.reason,
              "The node of line 3 of the injected description 1 counts in place of this one.");
}

TEST(Merging, Rule10ANodeOfAnotherTypeMayReplaceOne) {
    const CNodeMapRef map = inject(
        "<Enumeration Name=\"A\"><EnumEntry Name=\"On\"><Value>1</Value></EnumEntry><Value>1"
        "</Value></Enumeration>",
        {integer("A", 5, "1")});
    EXPECT_EQ(valueOf(map, "A"), 5);
    EXPECT_EQ(map->GetNode("EnumEntry_A_On"), nullptr);
    EXPECT_EQ(map->GetNumNodes(), 1U);
}

TEST(Merging, Rule10OneNameOfOnePriorityIsAnError) {
    EXPECT_EQ(errorOf<GenICam::RuntimeException>(
                  [] { (void)inject(integer("A", 1), {integer("A", 2)}); }),
              "Node map description, line 3, column 2: the name 'A' is taken by the node of line 3 "
              "of the description, and the MergePriority of both is 0.");
    EXPECT_THROW((void)inject(integer("A", 1, "1"), {integer("A", 2, "1")}),
                 GenICam::RuntimeException);
}

TEST(Merging, Rule10CategoriesShareTheirFeaturesWithoutDoubles) {
    const std::string first =
        "<Category Name=\"Root\"><pFeature>A</pFeature><pFeature>B</pFeature>"
        "</Category>" +
        integer("A", 1) + integer("B", 2);
    const std::string second =
        "<Category Name=\"Root\"><ToolTip>other</ToolTip><pFeature>C"
        "</pFeature><pFeature>A</pFeature></Category>" +
        integer("C", 3);
    const CNodeMapRef map = inject(first, {second});
    EXPECT_EQ(namesIn(map, "Root"), "A B C ");
    EXPECT_EQ(map->GetNode("Root")->GetToolTip(), "");
    EXPECT_TRUE(map->GetNode("C")->IsFeature());
    EXPECT_TRUE(map->GetLoadReport().remarks.empty());
    // Of their texts those of the higher priority count.
    std::string stronger = second;
    stronger.insert(stronger.find("Name"), "MergePriority=\"1\" ");
    const CNodeMapRef turned = inject(first, {stronger});
    EXPECT_EQ(namesIn(turned, "Root"), "C A B ");
    EXPECT_EQ(turned->GetNode("Root")->GetToolTip(), "other");
}

TEST(Merging, Rule10SeveralMayBeInjectedAlsoIntoGroups) {
    const CNodeMapRef map =
        inject("<Group Comment=\"g\">" + integer("A", 1) + "</Group>",
               {"<Group Comment=\"h\">" + integer("A", 2, "1") + integer("B", 3) + "</Group>",
                integer("B", 4, "1")});
    EXPECT_EQ(valueOf(map, "A"), 2);
    EXPECT_EQ(valueOf(map, "B"), 4);
}

TEST(Merging, AWrongPriorityIsTakenForNone) {
    const CNodeMapRef map = inject(integer("A", 1), {integer("B", 2, "9")});
    ASSERT_EQ(map->GetLoadReport().remarks.size(), 1U);
    EXPECT_EQ(map->GetLoadReport().remarks[0].reason,
              "The MergePriority '9' is none of -1, 0 and 1.");
    EXPECT_EQ(map->GetLoadReport().remarks[0].document, 1U);
}

TEST(Merging, NothingIsInjectedAfterTheFirstMap) {
    const std::string text = document("");
    CNodeMapFactory factory(ContentType_Xml, text.data(), text.size());
    (void)factory.CreateNodeMap();
    EXPECT_THROW(factory.InjectDescription(ContentType_Xml, text.data(), text.size()),
                 GenICam::LogicalErrorException);
}

TEST(Merging, AnInjectedTextIsCheckedAsAnyOther) {
    EXPECT_THROW((void)inject("", {"<Integer"}), GenICam::RuntimeException);
    const std::string text = document("");
    CNodeMapFactory factory(ContentType_Xml, text.data(), text.size());
    EXPECT_THROW(factory.InjectDescription(ContentType_Xml, nullptr, 3),
                 GenICam::InvalidArgumentException);
    EXPECT_THAT(errorOf<GenICam::RuntimeException>([&] {
                    factory.InjectDescription(ContentType_Xml, "<a/>", 4);
                    (void)factory.CreateNodeMap();
                }),
                HasSubstr("the root element is 'a'"));
}
