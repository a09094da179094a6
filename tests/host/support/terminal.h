// A pseudo terminal: what a program writes to it as to a screen is read here.
#pragma once

#include <regex>
#include <string>

namespace Orlix::Host::Testing {

class Terminal {
public:
    Terminal();
    ~Terminal();
    Terminal(const Terminal&) = delete;
    Terminal& operator=(const Terminal&) = delete;

    // For the child's standard error. The parent closes its own copy when the child runs, so that
    // the child's end is the end of the text.
    [[nodiscard]] int childEnd() const { return childEnd_; }
    void closeChildEnd();
    // What the child finds in TERM; to be set before it starts.
    [[nodiscard]] const char* type() const { return type_; }
    void setType(const char* type) { type_ = type; }
    void setColumns(unsigned short columns);

    // Blocks until what has been written so far has the pattern in it, or the writer has gone.
    // True if the pattern was found.
    [[nodiscard]] bool waitFor(const std::regex& pattern);
    // Everything that was ever written.
    [[nodiscard]] std::string readToEnd();

private:
    // False when the writer has gone.
    bool readSome();

    int end_ = -1;
    int childEnd_ = -1;
    const char* type_ = "xterm";
    std::string text_;
};

}  // namespace Orlix::Host::Testing
