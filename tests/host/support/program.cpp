#include "host/support/program.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <stdexcept>

#include "host/support/terminal.h"

namespace Orlix::Host::Testing {
namespace {

struct Pipe {
    int read = -1;
    int write = -1;
};

Pipe makePipe() {
    std::array<int, 2> ends{};
    if (::pipe2(ends.data(), O_CLOEXEC) != 0) {
        throw std::runtime_error("no pipe");
    }
    return {ends[0], ends[1]};
}

[[noreturn]] void runChild(const std::vector<const char*>& arguments, const std::string& folder,
                           int out, int err, const char* terminalType) {
    ::dup2(out, STDOUT_FILENO);
    ::dup2(err, STDERR_FILENO);
    if (terminalType != nullptr) {
        ::setenv("TERM", terminalType, 1);
    }
    if (folder.empty() || ::chdir(folder.c_str()) == 0) {
        ::execv(arguments.front(), const_cast<char* const*>(arguments.data()));
    }
    ::_exit(126);
}

// False at the end of the stream.
bool readSome(int file, std::string& text) {
    std::array<char, 4096> block{};
    const ssize_t count = ::read(file, block.data(), block.size());
    if (count > 0) {
        text.append(block.data(), static_cast<std::size_t>(count));
    }
    return count > 0 || (count < 0 && errno == EINTR);
}

}  // namespace

Program::Program(const std::string& file, const std::vector<std::string>& arguments,
                 const std::string& folder, const Terminal* terminal) {
    std::vector<const char*> texts = {file.c_str()};
    for (const std::string& argument : arguments) {
        texts.push_back(argument.c_str());
    }
    texts.push_back(nullptr);
    const Pipe out = makePipe();
    const Pipe err = makePipe();
    child_ = ::fork();
    if (child_ == 0) {
        if (terminal != nullptr) {
            runChild(texts, folder, out.write, terminal->childEnd(), terminal->type());
        }
        runChild(texts, folder, out.write, err.write, nullptr);
    }
    ::close(out.write);
    ::close(err.write);
    out_ = out.read;
    err_ = err.read;
}

Program::~Program() {
    if (child_ > 0) {
        ::kill(child_, SIGKILL);
        static_cast<void>(wait());
    }
}

void Program::sendSignal(int number) const {
    ::kill(child_, number);
}

std::string Program::readErrorLine() {
    std::string line;
    for (char next = 0; ::read(err_, &next, 1) == 1 && next != '\n';) {
        line += next;
    }
    return line;
}

ProgramResult Program::wait() {
    ProgramResult result;
    std::array<pollfd, 2> sources = {{{out_, POLLIN, 0}, {err_, POLLIN, 0}}};
    std::array<std::string*, 2> texts = {&result.out, &result.err};
    for (int open = 2; open > 0;) {
        ::poll(sources.data(), sources.size(), -1);
        for (std::size_t i = 0; i < sources.size(); ++i) {
            if (sources[i].fd >= 0 && sources[i].revents != 0 &&
                !readSome(sources[i].fd, *texts[i])) {
                ::close(sources[i].fd);
                sources[i].fd = -1;
                --open;
            }
        }
    }
    int status = 0;
    while (::waitpid(child_, &status, 0) < 0 && errno == EINTR) {
    }
    child_ = -1;
    result.exitCode = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
    return result;
}

std::string orlixFile() {
    return ORLIX_PROGRAM_FILE;
}

std::string packageFile() {
    return ORLIX_PACKAGE_FILE;
}

ProgramResult runOrlix(const std::vector<std::string>& arguments, const std::string& folder) {
    return Program(orlixFile(), arguments, folder).wait();
}

}  // namespace Orlix::Host::Testing
