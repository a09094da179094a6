// Formulas: order of operators, arithmetic, names, variables.
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

TEST(Formula, Rule39AnEntryIsAlsoWrittenAsEnumAndFoundByTheEntrysOwnNodeOnly) {
    EXPECT_EQ(whole("En.Enum.Two + En.Entry.Nine"), 11);
    // A name that another node has taken leads to no entry.
    TestMap t(
        "<Enumeration Name=\"E\"><EnumEntry Name=\"A\"><Value>1</Value></EnumEntry><Value>1"
        "</Value></Enumeration><Integer Name=\"EnumEntry_E_A\"><Value>5</Value></Integer>"
        "<IntSwissKnife Name=\"K\"><pVariable Name=\"V\">E</pVariable><Formula>V.Entry.A</Formula>"
        "</IntSwissKnife>");
    EXPECT_EQ(t.mode("K"), NA);
    EXPECT_THAT(t.reasons("K"), HasSubstr("the name 'V.Entry.A' is not declared"));
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
