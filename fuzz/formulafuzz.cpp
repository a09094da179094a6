// Any text as a formula, of integers and of floats: it is compiled or refused, and worked out for a
// few values of its variables. A converter has it in both directions.
#include <cstddef>
#include <string>

#include "noiseport.h"

namespace {

using namespace GenApi;
using OrlixFuzz::attempt;

// A formula is text in XML; what XML can not hold is left out.
std::string escaped(const std::uint8_t* data, std::size_t size) {
    std::string text;
    for (std::size_t i = 0; i < size; ++i) {
        const char c = static_cast<char>(data[i]);
        if (c == '<') {
            text += "&lt;";
        } else if (c == '&') {
            text += "&amp;";
        } else if (c == '>') {
            text += "&gt;";
        } else if (data[i] >= 0x20 || c == '\n' || c == '\t') {
            text += c;
        }
    }
    return text;
}

std::string element(const std::string& tag, const std::string& name, const std::string& formulas) {
    return "<" + tag + " Name=\"" + name +
           "\"><pVariable Name=\"A\">A</pVariable><pVariable Name=\"B\">B</pVariable>"
           "<pVariable Name=\"C\">C</pVariable><Constant Name=\"K\">7</Constant>"
           "<Expression Name=\"X\">A + K</Expression>" +
           formulas + "</" + tag + ">";
}

std::string description(const std::string& f) {
    const std::string knife = "<Formula>" + f + "</Formula>";
    const std::string both = "<FormulaTo>" + f + "</FormulaTo><FormulaFrom>" + f + "</FormulaFrom>";
    return "<RegisterDescription xmlns=\"http://www.genicam.org/GenApi/Version_1_1\">"
           "<Integer Name=\"A\"><Value>3</Value></Integer>"
           "<Float Name=\"B\"><Value>0.5</Value></Float>"
           "<Integer Name=\"C\"><Value>-1</Value></Integer>"
           "<Integer Name=\"T\"><Value>5</Value><Min>-100</Min><Max>100</Max></Integer>" +
           element("IntSwissKnife", "IntKnife", knife) + element("SwissKnife", "Knife", knife) +
           element("IntConverter", "IntBoth", both + "<pValue>T</pValue>") +
           element("Converter", "Both", both + "<pValue>T</pValue>") + "</RegisterDescription>";
}

void useInteger(const CIntegerPtr& node, std::int64_t value) {
    attempt([&] { (void)node->GetValue(); });
    attempt([&] { (void)node->GetMin(); });
    attempt([&] { node->SetValue(value, false); });
}

void useFloat(const CFloatPtr& node, double value) {
    attempt([&] { (void)node->GetValue(); });
    attempt([&] { (void)node->GetMax(); });
    attempt([&] { node->SetValue(value, false); });
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    attempt([&] {
        const std::string text = description(escaped(data, size));
        CNodeMapFactory factory(ContentType_Xml, text.data(), text.size());
        const CNodeMapRef map = factory.CreateNodeMap();
        for (const std::int64_t a : {std::int64_t{0}, std::int64_t{-1}, INT64_MIN, INT64_MAX}) {
            CIntegerPtr(map->GetNode("A"))->SetValue(a);
            useInteger(map->GetNode("IntKnife"), a);
            useFloat(map->GetNode("Knife"), 1.5);
            useInteger(map->GetNode("IntBoth"), a);
            useFloat(map->GetNode("Both"), static_cast<double>(a));
        }
    });
    return 0;
}
