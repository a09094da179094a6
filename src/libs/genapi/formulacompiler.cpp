#include "genapi/formulacompiler.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <charconv>
#include <cstring>

#include "genapi/formulalexer.h"
#include "genapi/formulawords.h"
#include "genapi/numbertext.h"

namespace GenApi::Detail {

namespace {

constexpr std::size_t maximumLength = std::size_t{64} * 1024;
constexpr std::size_t maximumCode = std::size_t{64} * 1024;
constexpr int maximumNesting = 1000;

// Ends the compilation; its text becomes the node's reason.
struct FormulaError {
    std::string text;
};

std::string upperCase(std::string_view text) {
    std::string result(text);
    for (char& c : result) {
        c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
    }
    return result;
}

// Recursive descent; each level of the operators that nest calls the next tighter one.
class Compiler {
public:
    Compiler(Program& program, const FormulaScope& scope) : program_(program), scope_(scope) {}

    void compile(std::string_view text) {
        if (text.size() > maximumLength) {
            throw FormulaError{"it is longer than " + std::to_string(maximumLength) +
                               " characters"};
        }
        Lexer lexer(text);
        Lexer* outer = lexer_;
        lexer_ = &lexer;
        conditional();
        if (lexer.token() != Token::end) {
            throw FormulaError{"'" + std::string(lexer.text()) + "' is not expected"};
        }
        lexer_ = outer;
    }

private:
    struct Nest {
        explicit Nest(int& d) : depth(d) {
            if (++depth > maximumNesting) {
                throw FormulaError{"it is nested deeper than " + std::to_string(maximumNesting)};
            }
        }
        ~Nest() { --depth; }
        int& depth;
    };

    std::size_t emit(Opcode opcode, std::size_t operand, int growth) {
        if (program_.code.size() >= maximumCode) {
            throw FormulaError{"it is too long"};
        }
        program_.code.push_back({opcode, static_cast<std::uint32_t>(operand)});
        stack_ += growth;
        program_.stackDepth = std::max(program_.stackDepth, static_cast<std::uint32_t>(stack_));
        return program_.code.size() - 1;
    }
    // Lets an earlier jump lead here.
    void land(std::size_t jump) {
        program_.code[jump].operand = static_cast<std::uint32_t>(program_.code.size());
    }

    bool accept(std::string_view symbol) {
        if (!lexer_->is(symbol)) {
            return false;
        }
        lexer_->next();
        return true;
    }
    void expect(std::string_view symbol) {
        if (!accept(symbol)) {
            const std::string found =
                lexer_->token() == Token::end ? "its end" : "'" + std::string(lexer_->text()) + "'";
            throw FormulaError{"'" + std::string(symbol) + "' is missing before " + found};
        }
    }

    void conditional() {
        const Nest nest(depth_);
        either();
        if (!accept("?")) {
            return;
        }
        const std::size_t toElse = emit(Opcode::jumpIfFalse, 0, -1);
        conditional();
        expect(":");
        const std::size_t toEnd = emit(Opcode::jump, 0, -1);
        land(toElse);
        conditional();
        land(toEnd);
    }

    void either() {
        both();
        while (accept("||")) {
            const std::size_t isTrue = emit(Opcode::jumpIfTrue, 0, -1);
            both();
            finishLogic(isTrue, 1);
        }
    }

    void both() {
        binary(1);
        while (accept("&&")) {
            const std::size_t isFalse = emit(Opcode::jumpIfFalse, 0, -1);
            binary(1);
            finishLogic(isFalse, 0);
        }
    }

    // The right side decides, unless the left one jumped here.
    void finishLogic(std::size_t jump, std::size_t known) {
        emit(Opcode::toTruth, 0, 0);
        const std::size_t toEnd = emit(Opcode::jump, 0, -1);
        land(jump);
        emit(Opcode::pushTruth, known, 1);
        land(toEnd);
    }

    [[nodiscard]] const Operator* currentOperator() const {
        for (const Operator& candidate : operators) {
            if (lexer_->is(candidate.symbol)) {
                return &candidate;
            }
        }
        return nullptr;
    }

    // All left-associative operators that bind at least that tightly.
    void binary(int binding) {
        const Nest nest(depth_);
        unary();
        for (const Operator* found = currentOperator();
             found != nullptr && found->binding >= binding; found = currentOperator()) {
            lexer_->next();
            binary(found->binding + 1);
            emit(found->opcode, 0, -1);
        }
    }

    void unary() {
        const Nest nest(depth_);
        if (accept("-")) {
            unary();
            emit(Opcode::negate, 0, 0);
        } else if (accept("~")) {
            unary();
            emit(Opcode::invert, 0, 0);
        } else if (accept("+")) {
            unary();
        } else {
            power();
        }
    }

    // Tighter than a sign before it, looser than one behind it.
    void power() {
        primary();
        if (accept("**")) {
            unary();
            emit(Opcode::power, 0, -1);
        }
    }

    void primary() {
        switch (lexer_->token()) {
            case Token::integer:
            case Token::real:
                number(lexer_->text(), lexer_->token());
                return;
            case Token::name:
                name();
                return;
            case Token::end:
                throw FormulaError{"a value is missing at its end"};
            case Token::symbol:
                break;
        }
        if (!accept("(")) {
            throw FormulaError{"a value is missing before '" + std::string(lexer_->text()) + "'"};
        }
        conditional();
        expect(")");
    }

    void pushInteger(std::int64_t value) {
        program_.integers.push_back(value);
        emit(Opcode::pushInteger, program_.integers.size() - 1, 1);
    }
    void pushReal(double value) {
        program_.reals.push_back(value);
        emit(Opcode::pushReal, program_.reals.size() - 1, 1);
    }

    void number(std::string_view text, Token token) {
        if (token == Token::integer) {
            const auto value = exactInteger(text);
            // Beyond 63 bits the element decides: a float has the number, an integer its bits.
            const bool isHex = text.size() > 1 && (text[1] == 'x' || text[1] == 'X');
            const bool isLarge = !value || *value < 0;
            if (value && (!isLarge || isHex || program_.arithmetic == Arithmetic::integer)) {
                pushInteger(*value);
                lexer_->next();
                return;
            }
        }
        const bool isFloat = token == Token::real || program_.arithmetic == Arithmetic::real;
        const auto value = isFloat ? parseFloat(text) : std::nullopt;
        if (!value) {
            throw FormulaError{"'" + std::string(text) + "' is no number"};
        }
        pushReal(*value);
        lexer_->next();
    }

    // All 64 bits may be used, in either notation.
    static std::optional<std::int64_t> exactInteger(std::string_view text) {
        const bool isHex = text.size() > 1 && (text[1] == 'x' || text[1] == 'X');
        std::uint64_t value = 0;
        const char* last = text.data() + text.size();
        const auto [end, error] =
            std::from_chars(text.data() + (isHex ? 2 : 0), last, value, isHex ? 16 : 10);
        if (error != std::errc{} || end != last) {
            return std::nullopt;
        }
        return static_cast<std::int64_t>(value);
    }

    // What the description declares hides functions and constants of the language.
    void name() {
        const std::string text(lexer_->text());
        if (!scope_.argument.empty() && text == scope_.argument) {
            emit(Opcode::pushArgument, 0, 1);
        } else if (const auto variable = scope_.variable(text)) {
            emit(Opcode::pushVariable, *variable, 1);
        } else if (const NamedText* constant = find(scope_.constants, text)) {
            pushConstant(*constant);
        } else if (const NamedText* expression = find(scope_.expressions, text)) {
            pushExpression(*expression);
        } else if (lexer_->isCall()) {
            call(text);
            return;
        } else {
            pushLanguageConstant(text);
        }
        lexer_->next();
    }

    static const NamedText* find(const std::vector<NamedText>* list, std::string_view name) {
        if (list == nullptr) {
            return nullptr;
        }
        const auto place = std::find_if(list->begin(), list->end(),
                                        [&](const NamedText& entry) { return entry.name == name; });
        return place == list->end() ? nullptr : &*place;
    }

    void pushConstant(const NamedText& constant) {
        const bool isHex = constant.text.find_first_of("xX") != std::string::npos;
        const bool isReal = program_.arithmetic == Arithmetic::real ||
                            (!isHex && constant.text.find_first_of(".eE") != std::string::npos);
        if (isReal) {
            if (const auto value = parseFloat(constant.text)) {
                pushReal(*value);
                return;
            }
        } else if (const auto value = parseInteger(constant.text)) {
            pushInteger(*value);
            return;
        }
        throw FormulaError{"its constant '" + constant.name + "' is no number: '" + constant.text +
                           "'"};
    }

    void pushExpression(const NamedText& expression) {
        if (std::find(open_.begin(), open_.end(), &expression) != open_.end()) {
            throw FormulaError{"its expression '" + expression.name + "' contains itself"};
        }
        const Nest nest(depth_);
        open_.push_back(&expression);
        compile(expression.text);
        open_.pop_back();
    }

    void pushLanguageConstant(const std::string& text) {
        const std::string upper = upperCase(text);
        if (upper == "PI") {
            pushReal(3.14159265358979323846);
        } else if (upper == "E") {
            pushReal(2.71828182845904523536);
        } else {
            throw FormulaError{"the name '" + text + "' is not declared"};
        }
    }

    void call(const std::string& text) {
        const std::string upper = upperCase(text);
        const auto row = std::find_if(functions.begin(), functions.end(),
                                      [&](const FunctionRow& f) { return f.name == upper; });
        if (row == functions.end()) {
            throw FormulaError{"there is no function '" + text + "'"};
        }
        lexer_->next();
        expect("(");
        conditional();
        const bool two = row->function == Function::round && accept(",");
        if (two) {
            conditional();
        }
        expect(")");
        emit(two ? Opcode::call2 : Opcode::call1, static_cast<std::size_t>(row->function),
             two ? -1 : 0);
    }

    Program& program_;
    const FormulaScope& scope_;
    Lexer* lexer_ = nullptr;
    std::vector<const NamedText*> open_;
    int stack_ = 0;
    int depth_ = 0;
};

}  // namespace

CompiledFormula compileFormula(std::string_view text, Arithmetic arithmetic,
                               const FormulaScope& scope) {
    CompiledFormula result;
    result.program.arithmetic = arithmetic;
    try {
        Compiler(result.program, scope).compile(text);
    } catch (const FormulaError& error) {
        result.error = error.text;
        result.program.code.clear();
    }
    return result;
}

}  // namespace GenApi::Detail
