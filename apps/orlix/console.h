// What the program writes to stderr: log lines of all modules and the live line of a run, without
// one tearing the other.
#pragma once

#include <memory>
#include <string>

namespace Orlix::App {

// One object for the life of the program; its functions are safe from any thread.
//
// Until start() the log is held back: what a command fails with is in its one message, and a log
// line of the same failure would only repeat it. A command that succeeds shows what was held.
class Console {
public:
    enum class LogMode { HoldBack, ShowAtOnce };

    explicit Console(LogMode mode);
    ~Console();
    Console(const Console&) = delete;
    Console& operator=(const Console&) = delete;

    // Shows the lines that were held back and from now on every line as it comes.
    void start();
    // Replaces the live line; an empty text removes it. A text that is wider than the terminal is
    // cut, since a line that wraps can't be replaced.
    void showLiveLine(const std::string& text);
    // Whether stderr is a terminal on which a line can be replaced.
    [[nodiscard]] static bool canShowLiveLine();
    // A line of the program's own, behind which the live line goes on.
    void showNotice(const std::string& message) { showError(message); }
    // The one message of a failed command.
    void showError(const std::string& message);

private:
    struct State;

    // Shared with the sink, which a line in flight may reach after the end of this object.
    std::shared_ptr<State> state_;
};

}  // namespace Orlix::App
