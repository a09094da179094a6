// Runs the real program as a child process and collects what it writes.
#pragma once

#include <sys/types.h>

#include <string>
#include <vector>

namespace Orlix::Host::Testing {

struct ProgramResult {
    int exitCode = -1;  // 128 + number for a child that a signal has ended
    std::string out;
    std::string err;
};

class Terminal;

// A child that runs. The destructor kills it if nobody has waited for it.
class Program {
public:
    // The working folder may be empty. With a terminal, standard error goes there and nowhere else.
    Program(const std::string& file, const std::vector<std::string>& arguments,
            const std::string& folder = {}, const Terminal* terminal = nullptr);
    ~Program();
    Program(const Program&) = delete;
    Program& operator=(const Program&) = delete;

    void sendSignal(int number) const;
    // Blocks until the child has written a whole line to standard error. The line is taken out.
    [[nodiscard]] std::string readErrorLine();
    // Reads both outputs to their end, then waits for the child.
    [[nodiscard]] ProgramResult wait();

private:
    pid_t child_ = -1;
    int out_ = -1;
    int err_ = -1;
};

// The program orlix from this build.
[[nodiscard]] ProgramResult runOrlix(const std::vector<std::string>& arguments,
                                     const std::string& folder = {});
[[nodiscard]] std::string orlixFile();
// The package of this build.
[[nodiscard]] std::string packageFile();

}  // namespace Orlix::Host::Testing
