// Formulas: order of operators, arithmetic, names, and converters in both directions.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>

#include "genapi/testmap.h"

using namespace GenApiTest;
using testing::HasSubstr;

namespace {

std::string escaped(const std::string& formula) {
    return "<![CDATA[" + formula + "]]>";
}

// One integer and one float knife of the same formula, with variables A = 7, B = 2, F = 2.5.
struct KnifeMap : TestMap {
    explicit KnifeMap(const std::string& formula, const std::string& more = "")
        : TestMap(knife("IntSwissKnife", "I", formula, more) +
                  knife("SwissKnife", "R", formula, more) +
                  "<Integer "
                  "Name=\"VarA\"><Value>7</Value><Min>1</Min><Max>70</Max><Inc>3</Inc></Integer>"
                  "<Integer Name=\"VarB\"><Value>2</Value></Integer><Float "
                  "Name=\"VarF\"><Value>2.5</Value></Float>"
                  "<Boolean Name=\"VarT\"><Value>1</Value></Boolean>"
                  "<Enumeration Name=\"VarE\"><EnumEntry Name=\"Two\"><Value>2</Value></EnumEntry>"
                  "<EnumEntry "
                  "Name=\"Nine\"><NumericValue>9.5</NumericValue><Value>9</Value></"
                  "EnumEntry><Value>9</Value></Enumeration>") {}
    static std::string knife(const std::string& element, const std::string& name,
                             const std::string& formula, const std::string& more) {
        return "<" + element + " Name=\"" + name +
               "\"><pVariable Name=\"A\">VarA</pVariable>"
               "<pVariable Name=\"B\">VarB</pVariable><pVariable Name=\"F\">VarF</pVariable>"
               "<pVariable Name=\"T\">VarT</pVariable><pVariable Name=\"En\">VarE</pVariable>" +
               more + "<Formula>" + escaped(formula) + "</Formula></" + element + ">";
    }
};

std::int64_t whole(const std::string& formula) {
    return KnifeMap(formula).integer("I")->GetValue();
}
double real(const std::string& formula) {
    return KnifeMap(formula).real("R")->GetValue();
}
std::string wholeError(const std::string& formula) {
    KnifeMap t(formula);
    return errorOf<GenICam::GenericException>([&] { (void)t.integer("I")->GetValue(); });
}
std::string realError(const std::string& formula) {
    KnifeMap t(formula);
    return errorOf<GenICam::GenericException>([&] { (void)t.real("R")->GetValue(); });
}

}  // namespace

TEST(Formula, Rule27TheOrderOfTheOperators) {
    EXPECT_EQ(whole("4 & 6 = 6"), 4 & 1);
    EXPECT_EQ(whole("1 | 2 ^ 3 & 2"), 1 | (2 ^ (3 & 2)));
    EXPECT_EQ(whole("1 << 2 + 1"), 8);
    EXPECT_EQ(whole("2 + 3 * 4 - 6 / 4"), 13);
    EXPECT_EQ(whole("10 - 4 - 3"), 3);
    EXPECT_EQ(whole("64 / 4 / 2"), 8);
    EXPECT_EQ(whole("2 ** 3 ** 2"), 512);
    EXPECT_EQ(whole("-2 ** 2"), -4);
    EXPECT_EQ(whole("2 ** -1"), 0);
    EXPECT_EQ(whole("- - 3"), 3);
    EXPECT_EQ(whole("~0 & 0xFF"), 255);
    EXPECT_EQ(whole("1 ? 2 : 0 ? 3 : 4"), 2);
    EXPECT_EQ(whole("0 ? 2 : 0 ? 3 : 4"), 4);
    EXPECT_EQ(whole("1 || 0 && 0"), 1);
    EXPECT_EQ(whole("1 < 2 = 1"), 1);
    EXPECT_EQ(whole("(A + B) * (A - B)"), 45);
}

TEST(Formula, Rule28EqualityInAllSpellings) {
    EXPECT_EQ(whole("A = 7"), 1);
    EXPECT_EQ(whole("A == 7"), 1);
    EXPECT_EQ(whole("A <> 7"), 0);
    EXPECT_EQ(whole("A != 7"), 0);
    EXPECT_EQ(whole("A <= 7"), 1);
    EXPECT_EQ(whole("A >= 8"), 0);
}

TEST(Formula, Rule29TheElementDecidesTheArithmetic) {
    EXPECT_EQ(whole("5/2*2"), 4);
    EXPECT_EQ(whole("-7/2"), -3);
    EXPECT_EQ(whole("-7%3"), -1);
    EXPECT_DOUBLE_EQ(real("5/2*2"), 5.0);
    EXPECT_DOUBLE_EQ(real("-7%3"), -1.0);
}

TEST(Formula, Rule30AFloatLiteralMakesThatOperationADoubleOne) {
    EXPECT_EQ(whole("A / 2.0"), 3);
    EXPECT_EQ(whole("-A / 2.0"), -3);
    EXPECT_EQ(whole("A / 2.0 * 2"), 7);
    EXPECT_EQ(whole("A / 2 * 2.0"), 6);
    EXPECT_EQ(whole("A * 1e1"), 70);
}

TEST(Formula, Rule31DivisionIsAFloatOneAlsoBetweenIntegers) {
    EXPECT_DOUBLE_EQ(real("A / (1 << B)"), 1.75);
    EXPECT_DOUBLE_EQ(real("A / B"), 3.5);
}

TEST(Formula, Rule32IntegerLiteralsAreExact) {
    EXPECT_EQ(whole("0xFFFFFFFFFFFFFFFF"), -1);
    EXPECT_EQ(whole("9007199254740993"), 9007199254740993);
    EXPECT_EQ(whole("0xF000000000000001 + 1"), static_cast<std::int64_t>(0xF000000000000002));
}

TEST(Formula, Rule33BranchesNotTakenAreNotWorkedOut) {
    EXPECT_EQ(whole("1 ? 5 : 1/0"), 5);
    EXPECT_EQ(whole("0 && 1/0"), 0);
    EXPECT_EQ(whole("1 || 1/0"), 1);
    TestMap t(
        "<IntSwissKnife Name=\"K\"><pVariable Name=\"X\">Gone</pVariable><pVariable "
        "Name=\"C\">C</pVariable>"
        "<Formula>C ? X : 3</Formula></IntSwissKnife><Integer Name=\"C\"><Value>0</Value></Integer>"
        "<Integer Name=\"Gone\"><Value>1</Value><pIsAvailable>No</pIsAvailable></Integer>"
        "<Integer Name=\"No\"><Value>0</Value></Integer>");
    EXPECT_EQ(t.integer("K")->GetValue(), 3);
    EXPECT_EQ(t.mode("K"), RO);
    t.integer("C")->SetValue(1);
    EXPECT_EQ(t.mode("K"), NA);
    EXPECT_THROW((void)t.integer("K")->GetValue(), GenICam::AccessException);
}

TEST(Formula, Rule34OverflowWrapsAndNothingIsUndefined) {
    EXPECT_EQ(whole("9223372036854775807 + 1"), INT64_MIN);
    EXPECT_EQ(whole("0x8000000000000000 / -1"), INT64_MIN);
    EXPECT_EQ(whole("0x8000000000000000 % -1"), 0);
    EXPECT_EQ(whole("-0x8000000000000000"), INT64_MIN);
    EXPECT_EQ(whole("1 << 63"), INT64_MIN);
    EXPECT_THAT(wholeError("1 << 64"), HasSubstr("a shift by a count outside of 0 to 63"));
    EXPECT_THAT(wholeError("1 >> -1"), HasSubstr("a shift by a count outside of 0 to 63"));
    EXPECT_EQ(whole("-8 >> 1"), -4);
    EXPECT_EQ(whole("3 ** 40"), 12157665459056928801ULL - 0);
    EXPECT_EQ(whole("1 ** -5 + (-1) ** -3 + 7 ** -1"), 0);
}

TEST(Formula, Rule35DivisionByZeroIsAnErrorOfThatRead) {
    EXPECT_EQ(wholeError("A / (B - 2)"),
              "Node 'I' can not be evaluated: a division by zero in its formula.");
    EXPECT_EQ(wholeError("A % 0"),
              "Node 'I' can not be evaluated: a division by zero in its formula.");
    EXPECT_EQ(realError("A / 0"),
              "Node 'R' can not be evaluated: a division by zero in its formula.");
    EXPECT_THAT(realError("SQRT(-1)"),
                HasSubstr("a function of a number that it is not defined for"));
    EXPECT_THAT(realError("LN(0)"), HasSubstr("a result that is not finite"));
}

TEST(Formula, Rule36TruthIsNotZero) {
    EXPECT_EQ(whole("0.5 && 1"), 1);
    EXPECT_EQ(whole("5 && 3"), 1);
    EXPECT_EQ(whole("0.5 ? 4 : 2"), 4);
    EXPECT_DOUBLE_EQ(real("F > 2"), 1.0);
}

TEST(Formula, Rule37Functions) {
    EXPECT_EQ(whole("SGN(-5) + SGN(0) + SGN(9)"), 0);
    EXPECT_EQ(whole("NEG(A)"), -7);
    EXPECT_EQ(whole("ABS(-9)"), 9);
    EXPECT_EQ(whole("SQRT(49)"), 7);
    EXPECT_DOUBLE_EQ(real("SIN(0)+COS(0)+TAN(0)+ATAN(0)+ASIN(0)+ACOS(1)"), 1.0);
    EXPECT_DOUBLE_EQ(real("EXP(1)"), std::exp(1.0));
    EXPECT_DOUBLE_EQ(real("LN(E)"), 1.0);
    EXPECT_DOUBLE_EQ(real("LG(1000)"), 3.0);
    EXPECT_DOUBLE_EQ(real("TRUNC(-2.7)"), -2.0);
    EXPECT_DOUBLE_EQ(real("FLOOR(-2.2)"), -3.0);
    EXPECT_DOUBLE_EQ(real("CEIL(2.2)"), 3.0);
    EXPECT_DOUBLE_EQ(real("ROUND(2.5)"), 3.0);
    EXPECT_DOUBLE_EQ(real("ROUND(-2.456, 2)"), -2.46);
    EXPECT_DOUBLE_EQ(real("sqrt(16) * PI"), 4 * 3.14159265358979323846);
}

TEST(Formula, Rule38AVariableHidesFunctionsAndConstants) {
    const std::string more =
        "<pVariable Name=\"E\">VarA</pVariable><pVariable Name=\"EXP\">VarB</pVariable>"
        "<pVariable Name=\"a_b.C\">VarA</pVariable>";
    KnifeMap t("E * 10 + EXP + a_b.C", more);
    EXPECT_EQ(t.integer("I")->GetValue(), 79);
    KnifeMap u("COS", "<pVariable Name=\"COS\">VarA</pVariable>");
    EXPECT_EQ(u.integer("I")->GetValue(), 7);
}

TEST(Formula, Rule39VariablesOfAllKindsAndTheirMembers) {
    EXPECT_EQ(whole("T + En"), 10);
    EXPECT_DOUBLE_EQ(real("En"), 9.0);
    const std::string more =
        "<pVariable Name=\"V.Min\">VarA</pVariable><pVariable Name=\"V.Max\">VarA</pVariable>"
        "<pVariable Name=\"V.Inc\">VarA</pVariable><pVariable Name=\"V.Value\">VarA</pVariable>"
        "<pVariable Name=\"W.Entry.Two\">VarE</pVariable>";
    KnifeMap t("V.Min * 10000 + V.Max * 100 + V.Inc * 10 + V.Value + W.Entry.Two * 100000", more);
    EXPECT_EQ(t.integer("I")->GetValue(), 10000 + 7000 + 30 + 7 + 200000);
    EXPECT_EQ(whole("A.Max"), 70);
}

TEST(Formula, Rule39AnUndeclaredNameFailsThatNodeOnly) {
    KnifeMap t("A + Missing");
    EXPECT_EQ(t.mode("I"), NA);
    EXPECT_THAT(t.reasons("I"), HasSubstr("the name 'Missing' is not declared"));
    EXPECT_EQ(t.integer("VarA")->GetValue(), 7);
}

TEST(Formula, Rule40ConstantsAndExpressionsInAnyOrder) {
    const std::string more =
        "<Constant Name=\"Ten\">10</Constant><Expression Name=\"X\">Y + 1</Expression>"
        "<Expression Name=\"Y\">A * Ten</Expression>";
    EXPECT_EQ(KnifeMap("X * 2", more).integer("I")->GetValue(), 142);
    KnifeMap t("P", "<Expression Name=\"P\">Q</Expression><Expression Name=\"Q\">P</Expression>");
    EXPECT_THAT(t.reasons("I"), HasSubstr("its expression 'P' contains itself"));
    EXPECT_EQ(whole("  1\n +\r\n 2 "), 3);
}

TEST(Formula, Rule41EveryVariableIsReadAtMostOnce) {
    TestMap t(
        "<IntSwissKnife Name=\"K\"><pVariable Name=\"X\">R</pVariable><Formula>X + X * "
        "X</Formula></IntSwissKnife>" +
        std::string(Reg{"R"}));
    t.port.poke(0, 3);
    EXPECT_EQ(t.integer("K")->GetValue(), 12);
    EXPECT_EQ(t.port.count('R'), 1U);
}

TEST(Formula, WrongFormulasCostTheirNodeWithAReason) {
    for (const char* formula : {"1 +", "(1", "1)", "1 2", "FOO(1)", "1 ? 2", "A B", "$", "1 ..2",
                                "0x", "SIN()", "@", "1,2"}) {
        KnifeMap t(formula);
        EXPECT_EQ(t.mode("I"), NA) << formula;
        EXPECT_THAT(t.reasons("I"), HasSubstr("is wrong: ")) << formula;
    }
}

TEST(Formula, Rule12DepthAndLengthAreBounded) {
    EXPECT_EQ(whole(std::string(60, '(') + "1" + std::string(60, ')')), 1);
    EXPECT_THAT(KnifeMap(std::string(20000, '(') + "1" + std::string(20000, ')')).reasons("I"),
                HasSubstr("nested deeper"));
    EXPECT_THAT(KnifeMap(std::string(20000, '-') + "1").reasons("I"), HasSubstr("nested deeper"));
    EXPECT_THAT(KnifeMap(std::string(70000, ' ') + "1").mode("I") == RO ? "trimmed" : "",
                HasSubstr("trimmed"));
    std::string expressions = "<Expression Name=\"X0\">A</Expression>";
    for (int i = 1; i < 40; ++i) {
        const std::string before = "X" + std::to_string(i - 1);
        expressions += "<Expression Name=\"X" + std::to_string(i) + "\">" + before + "+" + before +
                       "</Expression>";
    }
    EXPECT_THAT(KnifeMap("X39", expressions).reasons("I"), HasSubstr("it is too long"));
}

TEST(Formula, Rule63KnivesAreReadOnlyAndWriteOnlyVariablesMakeThemNotAvailable) {
    TestMap t(
        "<IntSwissKnife Name=\"K\"><pVariable Name=\"X\">W</pVariable><Formula>1 ? 2 : "
        "X</Formula></IntSwissKnife>" +
        std::string(Reg{"W", 0, "WO"}));
    EXPECT_EQ(t.mode("K"), NA);
    EXPECT_EQ(KnifeMap("1").mode("I"), RO);
    KnifeMap u("1");
    EXPECT_THROW(u.integer("I")->SetValue(1), GenICam::AccessException);
}

TEST(Formula, Rule13AnInlineFormulaIsATermOfTheAddress) {
    TestMap t(
        "<Integer Name=\"Sel\"><Value>3</Value></Integer>"
        "<IntReg Name=\"A\"><Address>0x100</Address><IntSwissKnife Name=\"AOff\"><pVariable "
        "Name=\"S\">Sel</pVariable>"
        "<Formula>S * "
        "8</Formula></IntSwissKnife><Length>8</Length><AccessMode>RW</AccessMode><pPort>P</pPort></"
        "IntReg>"
        "<StructReg><Address>0x200</Address><IntSwissKnife Name=\"BOff\"><pVariable "
        "Name=\"S\">Sel</pVariable>"
        "<Formula>S * "
        "4</Formula></IntSwissKnife><Length>4</Length><AccessMode>RO</AccessMode><pPort>P</pPort>"
        "<StructEntry Name=\"B1\"><Bit>0</Bit></StructEntry><StructEntry "
        "Name=\"B2\"><Bit>1</Bit></StructEntry></StructReg>");
    EXPECT_EQ(CRegisterPtr(t.node("A"))->GetAddress(), 0x118);
    EXPECT_EQ(CRegisterPtr(t.node("B2"))->GetAddress(), 0x20C);
    EXPECT_EQ(t.integer("AOff")->GetValue(), 24);
    t.integer("A")->SetValue(5);
    t.integer("Sel")->SetValue(0);
    EXPECT_EQ(t.integer("A")->GetValue(), 0);
    EXPECT_TRUE(t.remarks().empty());
}

TEST(Converter, Rule42FromServesReadsAndToServesWrites) {
    TestMap t(
        "<Converter Name=\"C\"><FormulaTo>FROM * 10 + 1</FormulaTo><FormulaFrom>(TO - 1) / "
        "10</FormulaFrom>"
        "<pValue>R</pValue></Converter>" +
        std::string(Reg{"R"}));
    t.port.poke(0, 26);
    EXPECT_DOUBLE_EQ(t.real("C")->GetValue(), 2.5);
    t.real("C")->SetValue(4.2);
    EXPECT_EQ(t.port.peek(0), 43);
}

TEST(Converter, Rule43OtherVariablesAreReadBeforeTheWrite) {
    TestMap t(
        "<IntConverter Name=\"C\"><pVariable Name=\"OLD\">R</pVariable><FormulaTo>(OLD &amp; 0xF0) "
        "| FROM</FormulaTo>"
        "<FormulaFrom>TO &amp; 0x0F</FormulaFrom><pValue>R</pValue></IntConverter>" +
        std::string(Reg{"R"}));
    t.port.poke(0, 0xA5);
    EXPECT_EQ(t.integer("C")->GetValue(), 5);
    t.integer("C")->SetValue(3);
    EXPECT_EQ(t.port.peek(0), 0xA3);
}

TEST(Converter, Rule44SlopesDecideTheEnds) {
    const auto make = [](const std::string& slope, const std::string& from) {
        return "<Converter Name=\"C\"><FormulaTo>FROM</FormulaTo><FormulaFrom>" + from +
               "</FormulaFrom><pValue>V</pValue>" + slope +
               "</Converter><Integer "
               "Name=\"V\"><Value>5</Value><Min>2</Min><Max>10</Max></Integer>";
    };
    TestMap rising(make("<Slope>Increasing</Slope>", "TO * 2"));
    EXPECT_DOUBLE_EQ(rising.real("C")->GetMin(), 4);
    EXPECT_DOUBLE_EQ(rising.real("C")->GetMax(), 20);
    TestMap falling(make("<Slope>Decreasing</Slope>", "100 / TO"));
    EXPECT_DOUBLE_EQ(falling.real("C")->GetMin(), 10);
    EXPECT_DOUBLE_EQ(falling.real("C")->GetMax(), 50);
    TestMap automatic(make("", "100 / TO"));
    EXPECT_DOUBLE_EQ(automatic.real("C")->GetMin(), 10);
    EXPECT_DOUBLE_EQ(automatic.real("C")->GetMax(), 50);
    TestMap varying(make("<Slope>Varying</Slope>", "TO * 2"));
    EXPECT_DOUBLE_EQ(varying.real("C")->GetMax(), std::numeric_limits<double>::max());
}

TEST(Converter, Rule44AnEndThatTheTargetLacksIsNotConverted) {
    TestMap t(
        "<IntConverter Name=\"C\"><FormulaTo>FROM</FormulaTo><FormulaFrom>0 - "
        "TO</FormulaFrom><pValue>V</pValue></IntConverter>"
        "<Integer Name=\"V\"><Value>5</Value><Min>2</Min></Integer>");
    EXPECT_EQ(t.integer("C")->GetMax(), -2);
    EXPECT_EQ(t.integer("C")->GetMin(), INT64_MIN);
}

TEST(Converter, Rule44OnlyLinearOnesHaveAnIncrement) {
    TestMap t(
        "<Converter "
        "Name=\"C\"><FormulaTo>FROM/2.5</FormulaTo><FormulaFrom>TO*2.5+1</FormulaFrom><pValue>V</"
        "pValue>"
        "<IsLinear>Yes</IsLinear></Converter><Converter "
        "Name=\"D\"><FormulaTo>FROM</FormulaTo><FormulaFrom>TO</FormulaFrom>"
        "<pValue>V</pValue></Converter><Integer "
        "Name=\"V\"><Value>4</Value><Min>0</Min><Max>8</Max><Inc>4</Inc></Integer>");
    EXPECT_DOUBLE_EQ(t.real("C")->GetInc(), 10.0);
    EXPECT_FALSE(t.real("D")->HasInc());
}

TEST(Converter, Rule45IntegersNeverPassThroughADoubleAndFloatsRound) {
    TestMap t(
        "<IntConverter Name=\"C\"><FormulaTo>FROM + 1</FormulaTo><FormulaFrom>TO - "
        "1</FormulaFrom><pValue>V</pValue></IntConverter>"
        "<Integer Name=\"V\"><Value>9007199254740993</Value></Integer>"
        "<Converter Name=\"D\"><FormulaTo>FROM / 2</FormulaTo><FormulaFrom>TO * "
        "2</FormulaFrom><pValue>S</pValue></Converter>" +
        std::string(Reg{"S", 8, "RW", "<Sign>Signed</Sign>"}));
    EXPECT_EQ(t.integer("C")->GetValue(), 9007199254740992);
    t.integer("C")->SetValue(9007199254740994);
    EXPECT_EQ(t.integer("V")->GetValue(), 9007199254740995);
    t.real("D")->SetValue(5);
    EXPECT_EQ(t.port.peek(8), 3);
    t.real("D")->SetValue(-5);
    EXPECT_EQ(t.port.peek(8), -3);
}

TEST(Converter, Rule45TheTargetsOwnRangeDecides) {
    TestMap t(
        "<Converter "
        "Name=\"D\"><FormulaTo>FROM</FormulaTo><FormulaFrom>TO</FormulaFrom><pValue>S</"
        "pValue><Slope>Varying</Slope></Converter>" +
        std::string(Reg{"S", 0, "RW", "", "IntReg", 1}));
    EXPECT_EQ(errorOf<GenICam::OutOfRangeException>([&] { t.real("D")->SetValue(300); }),
              "Node 'D' leads to 'S': Node 'S' can not take 300: its range is 0 to 255.");
    EXPECT_EQ(t.port.count('W'), 0U);
}

TEST(Converter, Rule35AFailedFormulaWritesNothing) {
    TestMap t(
        "<IntConverter Name=\"C\"><FormulaTo>100 / "
        "FROM</FormulaTo><FormulaFrom>TO</FormulaFrom><pValue>R</pValue></IntConverter>" +
        std::string(Reg{"R"}));
    EXPECT_THROW(t.integer("C")->SetValue(0), GenICam::RuntimeException);
    EXPECT_EQ(t.port.count('W'), 0U);
}

TEST(Converter, Rule63TheDirectionFollowsTheTargetAndVariablesMustBeReadable) {
    const std::string both = "<FormulaTo>FROM</FormulaTo><FormulaFrom>TO</FormulaFrom>";
    TestMap t("<IntConverter Name=\"A\">" + both +
              "<pValue>RO8</pValue></IntConverter><IntConverter Name=\"B\">" + both +
              "<pValue>WO8</pValue></IntConverter><IntConverter Name=\"C\"><pVariable "
              "Name=\"X\">WO8</pVariable>" +
              both + "<pValue>RO8</pValue></IntConverter>" + std::string(Reg{"RO8", 0, "RO"}) +
              std::string(Reg{"WO8", 0, "WO"}));
    EXPECT_EQ(t.mode("A"), RO);
    EXPECT_EQ(t.mode("B"), WO);
    EXPECT_EQ(t.mode("C"), NA);
}

TEST(Float, Rule47And48RangesAndIncrements) {
    TestMap t(
        "<Float Name=\"A\"><Value>1.5</Value></Float><Float "
        "Name=\"B\"><Value>1</Value><Min>0.5</Min><Max>2.5</Max><Inc>0.25</Inc>"
        "<Unit>ms</Unit></Float><Float Name=\"C\"><pValue>B</pValue></Float>");
    EXPECT_EQ(t.real("A")->GetMax(), std::numeric_limits<double>::max());
    EXPECT_FALSE(t.real("A")->HasInc());
    EXPECT_THROW((void)t.real("A")->GetInc(), GenICam::LogicalErrorException);
    EXPECT_EQ(t.real("C")->GetMin(), 0.5);
    EXPECT_EQ(t.real("C")->GetInc(), 0.25);
    EXPECT_EQ(t.real("C")->GetUnit(), "ms");
    t.real("C")->SetValue(0.6);
    EXPECT_EQ(t.real("B")->GetValue(), 0.6);
    EXPECT_EQ(errorOf<GenICam::OutOfRangeException>([&] { t.real("C")->SetValue(3); }),
              "Node 'C' can not take 3: its range is 0.5 to 2.5.");
    EXPECT_THROW(t.real("A")->SetValue(std::nan("")), GenICam::OutOfRangeException);
}

TEST(Float, Rule53AFloatLinkUsesTheNumericValueAndWritesTheNearestEntry) {
    TestMap t(
        "<Float Name=\"A\"><pValue>E</pValue></Float><Enumeration Name=\"E\"><EnumEntry "
        "Name=\"Half\"><NumericValue>0.5</NumericValue>"
        "<Value>1</Value></EnumEntry><EnumEntry "
        "Name=\"Two\"><Value>2</Value></EnumEntry><Value>1</Value></Enumeration>");
    EXPECT_EQ(t.real("A")->GetValue(), 0.5);
    t.real("A")->SetValue(1.8);
    EXPECT_EQ(t.enumeration("E")->ToString(), "Two");
}

TEST(Float, Rule57TextFollowsNotationAndPrecision) {
    const auto textOf = [](const std::string& more) {
        TestMap t("<Float Name=\"A\"><Value>1234.56789</Value>" + more + "</Float>");
        return t.real("A")->ToString().str();
    };
    EXPECT_EQ(textOf(""), "1234.57");
    EXPECT_EQ(
        textOf("<DisplayPrecision>8</DisplayPrecision><DisplayNotation>Fixed</DisplayNotation>"),
        "1234.5679");
    EXPECT_EQ(
        textOf(
            "<DisplayPrecision>3</DisplayPrecision><DisplayNotation>Scientific</DisplayNotation>"),
        "1.23e+03");
}

TEST(Float, Rule49CopiesTakeEveryValueAndNarrowTheRange) {
    TestMap t(
        "<Float Name=\"A\"><pValue>B</pValue><pValueCopy>C</pValueCopy></Float>"
        "<Float Name=\"B\"><Value>1</Value><Min>0</Min><Max>10</Max></Float>"
        "<Float Name=\"C\"><Value>1</Value><Min>2</Min><Max>20</Max></Float>");
    EXPECT_EQ(t.real("A")->GetMin(), 2);
    EXPECT_EQ(t.real("A")->GetMax(), 10);
    t.real("A")->SetValue(3.5);
    EXPECT_EQ(t.real("C")->GetValue(), 3.5);
}

TEST(ValidValues, Rule46TheyAreConvertedOneByOneAndSorted) {
    TestMap t(
        "<Integer Name=\"V\"><Value>4</Value><ValidValueSet>8; 2 ;4</ValidValueSet></Integer>"
        "<IntConverter Name=\"C\"><FormulaTo>0 - FROM</FormulaTo><FormulaFrom>0 - "
        "TO</FormulaFrom><pValue>V</pValue></IntConverter>"
        "<Float Name=\"F\"><Value>1</Value><ValidValueSet>2.5;1</ValidValueSet></Float>");
    EXPECT_EQ(t.integer("V")->GetIncMode(), listIncrement);
    EXPECT_EQ(t.integer("V")->GetMin(), 2);
    EXPECT_EQ(t.integer("V")->GetMax(), 8);
    EXPECT_EQ(t.integer("C")->GetListOfValidValues(), (int64_autovector_t{-8, -4, -2}));
    t.integer("C")->SetValue(-8);
    EXPECT_EQ(t.integer("V")->GetValue(), 8);
    EXPECT_EQ(errorOf<GenICam::OutOfRangeException>([&] { t.integer("V")->SetValue(6); }),
              "Node 'V' can not take 6: it is none of its valid values.");
    EXPECT_THROW(t.real("F")->SetValue(2), GenICam::OutOfRangeException);
    t.real("F")->SetValue(2.5);
}
