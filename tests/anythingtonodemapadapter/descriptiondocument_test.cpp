// Whole descriptions, compared byte by byte with the files in golden/.
#include "anythingtonodemapadapter/descriptiondocument.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <locale>
#include <sstream>
#include <string>

#include "filetext.h"
#include "testtree.h"

namespace AnythingToNodeMapAdapter::Test {

using Detail::DescriptionPurpose;
using Detail::writeDescription;
using testing::HasSubstr;
using testing::Not;

std::string golden(const std::string& name) {
    return fileText(std::string(GOLDEN_FOLDER) + "/" + name);
}

std::string document(TestTree& tree, const gcstring& portName, const gcstring& prefix = "",
                     DescriptionPurpose purpose = DescriptionPurpose::NodeMap) {
    return writeDescription(tree.ports(), portName, prefix, purpose).str();
}

TEST(DescriptionDocument, InOwnPortModeEveryParameterHasAPort) {
    TestTree tree;
    EXPECT_EQ(document(tree, ""), golden("ownports.xml"));
}

TEST(DescriptionDocument, InSharedModeOnePortServesAll) {
    TestTree tree;
    EXPECT_EQ(document(tree, "SharedPort"), golden("sharedport.xml"));
}

TEST(DescriptionDocument, ThePrefixReachesRegistersAndPorts) {
    TestTree tree;
    EXPECT_EQ(document(tree, "", "My"), golden("prefix.xml"));
}

TEST(DescriptionDocument, IsTheSameEveryTime) {
    TestTree tree;
    EXPECT_EQ(document(tree, "SharedPort"), golden("sharedport.xml"));
    EXPECT_EQ(document(tree, ""), golden("ownports.xml"));
    EXPECT_EQ(document(tree, "SharedPort"), golden("sharedport.xml"));
}

TEST(DescriptionDocument, ForLookingAtTheAdapterWritesTheSharedFormAsItIs) {
    TestTree tree;
    gcstring text;
    tree.adapter.generateDescription(text, "SharedPort", "");
    EXPECT_EQ(text.str(), golden("sharedport.xml"));
}

TEST(DescriptionDocument, ForLookingAtAddressesRunOnAndPortsHaveNoNames) {
    TestTree tree;
    gcstring text;
    tree.adapter.generateDescription(text, "", "");
    EXPECT_EQ(text.str(), golden("lookat.xml"));
    for (const auto& [name, port] : tree.ports()) {
        EXPECT_EQ(port->registerLength(), 0) << name;
    }
}

TEST(DescriptionDocument, AnEmptySetIsStillADocument) {
    const std::string head = golden("ownports.xml").substr(0, golden("ownports.xml").find("    <"));
    EXPECT_EQ(writeDescription({}, "", "", DescriptionPurpose::NodeMap),
              (head + "\n</RegisterDescription>\n").c_str());
}

TEST(DescriptionDocument, BlocksOfASharedPortLieOneBehindTheOther) {
    TestTree tree;
    static_cast<void>(document(tree, "SharedPort"));
    std::int64_t next = 0;
    for (const auto& [name, port] : tree.ports()) {
        EXPECT_EQ(port->registerStart(), next) << name;
        next += port->registerLength();
    }
    EXPECT_EQ(next, 24 + 48 + 24 + 24 + 8 + 8 + 1040 + 24 + 48 + 24 + 28);
}

// A locale whose numbers look like 1.024 and that has a decimal comma.
class Grouping : public std::numpunct<char> {
protected:
    char do_thousands_sep() const override { return '.'; }
    std::string do_grouping() const override { return "\3"; }
};

class GlobalLocale {
public:
    explicit GlobalLocale(const std::locale& locale) : before_(std::locale::global(locale)) {}
    ~GlobalLocale() { std::locale::global(before_); }
    GlobalLocale(const GlobalLocale&) = delete;
    GlobalLocale& operator=(const GlobalLocale&) = delete;

private:
    std::locale before_;
};

TEST(DescriptionDocument, DoesNotDependOnTheLocaleOfTheHost) {
    TestTree tree;
    const GlobalLocale locale(std::locale(std::locale::classic(), new Grouping));
    std::ostringstream check;
    check << 1024;
    ASSERT_EQ(check.str(), "1.024");
    EXPECT_EQ(document(tree, ""), golden("ownports.xml"));
    EXPECT_EQ(document(tree, "SharedPort"), golden("sharedport.xml"));
}

}  // namespace AnythingToNodeMapAdapter::Test
