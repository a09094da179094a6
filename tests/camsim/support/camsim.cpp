#include "camsim/support/camsim.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <fstream>
#include <stdexcept>

extern char** environ;

namespace Orlix::Camsim::Testing {

CamsimProcess::CamsimProcess(const std::vector<std::string>& arguments) {
    std::vector<std::string> all = {ORLIX_CAMSIM_FILE, "--port", "0"};
    all.insert(all.end(), arguments.begin(), arguments.end());
    std::vector<char*> pointers;
    for (std::string& argument : all) {
        pointers.push_back(argument.data());
    }
    pointers.push_back(nullptr);
    int pipe[2];
    if (::pipe2(pipe, O_CLOEXEC) != 0) {
        throw std::runtime_error("no pipe");
    }
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, pipe[1], STDOUT_FILENO);
    const int failure =
        ::posix_spawn(&child_, ORLIX_CAMSIM_FILE, &actions, nullptr, pointers.data(), environ);
    posix_spawn_file_actions_destroy(&actions);
    ::close(pipe[1]);
    out_ = pipe[0];
    if (failure != 0) {
        throw std::runtime_error("the program can't be started");
    }
    greeting_ = readLine();
    const std::size_t colon = greeting_.rfind(':');
    port_ = static_cast<std::uint16_t>(std::stoul(greeting_.substr(colon + 1)));
}

CamsimProcess::~CamsimProcess() {
    if (child_ > 0) {
        ::kill(child_, SIGKILL);
        ::waitpid(child_, nullptr, 0);
    }
    ::close(out_);
}

std::int64_t CamsimProcess::peakMemory() const {
    std::ifstream file("/proc/" + std::to_string(child_) + "/status");
    const std::string key = "VmHWM:";
    for (std::string line; std::getline(file, line);) {
        if (line.compare(0, key.size(), key) == 0) {
            return std::stoll(line.substr(key.size()));
        }
    }
    throw std::runtime_error("the program has ended");
}

nlohmann::json CamsimProcess::statistics() {
    ::kill(child_, SIGUSR1);
    return nlohmann::json::parse(readLine());
}

// The program takes all signals that have come before it takes a datagram.
void CamsimProcess::signal() {
    ::kill(child_, SIGUSR2);
    static_cast<void>(statistics());
}

nlohmann::json CamsimProcess::stop() {
    ::kill(child_, SIGTERM);
    nlohmann::json last = nlohmann::json::parse(readLine());
    int status = 0;
    ::waitpid(child_, &status, 0);
    child_ = -1;
    EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0) << status;
    return last;
}

std::string CamsimProcess::readLine() {
    std::string line;
    char one = 0;
    while (::read(out_, &one, 1) == 1 && one != '\n') {
        line += one;
    }
    if (line.empty()) {
        throw std::runtime_error("the program has ended");
    }
    return line;
}

CommandResult runShell(const std::string& line) {
    CommandResult result;
    FILE* const pipe = ::popen(("{ " + line + "; } 2>&1").c_str(), "r");
    char block[4096];
    while (std::fgets(block, sizeof block, pipe) != nullptr) {
        result.text += block;
    }
    const int status = ::pclose(pipe);
    result.exitCode = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    return result;
}

}  // namespace Orlix::Camsim::Testing
