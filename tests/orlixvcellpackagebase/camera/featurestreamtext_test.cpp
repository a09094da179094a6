#include "camera/featurestreamtext.h"

#include <gtest/gtest.h>

#include <optional>
#include <random>
#include <regex>
#include <sstream>
#include <string>

namespace Plugin::OrlixVCellPackageBase {
namespace {

using GenICam::gcstring;

const std::string header = "# {05D8C294-F295-4dfb-9D01-096BD04049F4}\n";

std::string make(const std::string& entered) {
    const auto stream = makeFeatureStream(gcstring(entered));
    return stream ? stream->str() : "refused";
}

TEST(FeatureStreamText, OneLineWithASignGetsHeaderAndTab) {
    EXPECT_EQ(make("Width=640"), header + "Width\t640\n");
    EXPECT_EQ(make("Width=640\n"), header + "Width\t640\n");
}

TEST(FeatureStreamText, AHeaderAnywhereIsEnough) {
    EXPECT_EQ(make(header + "Width\t640\n"), header + "Width\t640\n");
    EXPECT_EQ(make("Width\t640\n" + header), "Width\t640\n" + header);
    EXPECT_EQ(make("{05D8C294-F295-4dfb-9D01-096BD04049F4} # A\t1"),
              header + "{05D8C294-F295-4dfb-9D01-096BD04049F4} # A\t1\n");
}

TEST(FeatureStreamText, NothingStaysNothing) {
    EXPECT_EQ(make(""), "");
}

TEST(FeatureStreamText, BlanksAroundTheSignAreTaken) {
    EXPECT_EQ(make("Width \t = \t 640 "), header + "Width\t640 \n");
    EXPECT_EQ(make("A ="), header + "A\t\n");
}

TEST(FeatureStreamText, EverySignOfALineBecomesATab) {
    EXPECT_EQ(make("A = b=c"), header + "A\tb\tc\n");
    EXPECT_EQ(make("A==b"), header + "A\t\tb\n");
    EXPECT_EQ(make("A = = b"), header + "A\t\tb\n");
}

TEST(FeatureStreamText, ATabNeedsALetterRightBeforeIt) {
    EXPECT_EQ(make("Gain1\t5"), "refused");
    EXPECT_EQ(make("Gain\t5"), header + "Gain\t5\n");
    EXPECT_EQ(make("Gain1\tx\t5"), header + "Gain1\tx\t5\n");
    EXPECT_EQ(make("Gain1=5"), header + "Gain1\t5\n");
}

TEST(FeatureStreamText, ALineWithTheCommentSignIsTakenAsItIs) {
    EXPECT_EQ(make("? nothing # at all"), header + "? nothing # at all\n");
    EXPECT_EQ(make("A = #b"), header + "A = #b\n");
}

TEST(FeatureStreamText, EmptyLinesAreRefused) {
    EXPECT_EQ(make("A=1\n\nB=2"), "refused");
    EXPECT_EQ(make("A=1\n \t \nB=2"), "refused");
    EXPECT_EQ(make("\n"), "refused");
    EXPECT_EQ(make("A=1\n\n"), "refused");
}

TEST(FeatureStreamText, ANameHasLettersAndDigits) {
    EXPECT_EQ(make(" A=1"), "refused");
    EXPECT_EQ(make("A_B=1"), "refused");
    EXPECT_EQ(make("A.B = 1"), "refused");
    EXPECT_EQ(make("=1"), "refused");
    EXPECT_EQ(make("A"), "refused");
    EXPECT_EQ(make("\xC3\xA4=1"), "refused");
}

TEST(FeatureStreamText, ACarriageReturnStaysAndDoesNoHarm) {
    EXPECT_EQ(make("A=1\r\nB\t2\r\n"), header + "A\t1\r\nB\t2\r\n");
}

TEST(FeatureStreamText, AHundredThousandBytesOfOneKindAreRefusedOrTaken) {
    for (const char* unit : {" ", "a", "\t", "=", "a=", "a\t", "\n", "\r", "\x80", "# "}) {
        std::string text;
        while (text.size() < 100000) {
            text += unit;
        }
        static_cast<void>(make(text));
        static_cast<void>(make("A=" + text));
    }
    EXPECT_EQ(make(std::string(100000, 'a') + "\t"), header + std::string(100000, 'a') + "\t\n");
}

// What the rules are in the words of regular expressions, which are too slow and too deep for long
// lines.
std::string makeByExpressions(const std::string& entered) {
    static const std::regex comment("\\s*#\\s*");
    static const std::regex sign("^([a-zA-Z0-9]+)(\\s*=\\s*)");
    static const std::regex separator("(\\s*=\\s*)");
    static const std::regex tab("[a-zA-Z]+[\\t]");
    std::string out = entered.find(header.substr(0, header.size() - 1)) == std::string::npos
                          ? header
                          : std::string();
    std::istringstream lines(entered);
    for (std::string line; std::getline(lines, line);) {
        if (std::regex_search(line, comment)) {
            out += line + "\n";
        } else if (std::regex_search(line, sign)) {
            out += std::regex_replace(line, separator, "\t") + "\n";
        } else if (std::regex_search(line, tab)) {
            out += line + "\n";
        } else {
            return "refused";
        }
    }
    return out;
}

TEST(FeatureStreamText, AgreesWithTheExpressionsOnRandomText) {
    std::mt19937 random(7);
    const std::string alphabet = "aZ9 \t==#\n\r\v_";
    std::uniform_int_distribution<std::size_t> letter(0, alphabet.size() - 1);
    std::uniform_int_distribution<int> length(1, 12);
    int accepted = 0;
    for (int i = 0; i < 20000; ++i) {
        std::string text;
        for (int count = length(random); count > 0; --count) {
            text += alphabet[letter(random)];
        }
        const std::string expected = makeByExpressions(text);
        ASSERT_EQ(make(text), expected) << testing::PrintToString(text);
        accepted += expected == "refused" ? 0 : 1;
    }
    EXPECT_GT(accepted, 1000);
}

}  // namespace
}  // namespace Plugin::OrlixVCellPackageBase
