#include "aravis/support/process.h"

#include <fcntl.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <filesystem>
#include <sstream>
#include <utility>

namespace Orlix::Aravis::Testing {

Process::Process(const std::vector<std::string>& command, const std::string& outputFile) {
    std::vector<std::string> texts = command;
    std::vector<char*> arguments;
    for (std::string& text : texts) {
        arguments.push_back(text.data());
    }
    arguments.push_back(nullptr);
    posix_spawn_file_actions_t actions;
    ::posix_spawn_file_actions_init(&actions);
    if (!outputFile.empty()) {
        constexpr mode_t forAll = 0666;
        ::posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, outputFile.c_str(),
                                           O_WRONLY | O_CREAT | O_TRUNC, forAll);
    }
    if (::posix_spawnp(&id_, arguments[0], &actions, nullptr, arguments.data(), environ) != 0) {
        id_ = -1;
    }
    ::posix_spawn_file_actions_destroy(&actions);
}

Process::~Process() {
    Kill();
}

Process::Process(Process&& other) noexcept : id_(std::exchange(other.id_, -1)) {}

Process& Process::operator=(Process&& other) noexcept {
    std::swap(id_, other.id_);
    return *this;
}

void Process::Kill() {
    if (id_ > 0) {
        ::kill(id_, SIGKILL);
        static_cast<void>(Wait());
    }
}

void Process::Pause() {
    ::kill(id_, SIGSTOP);
    // It has stopped when its parent hears so.
    int status = 0;
    static_cast<void>(::waitpid(id_, &status, WUNTRACED));
}

void Process::AskForCounts() {
    ::kill(id_, SIGUSR1);
}

void Process::BeginFaults() {
    ::kill(id_, SIGUSR2);
}

void Process::Continue() {
    ::kill(id_, SIGCONT);
}

int Process::Terminate() {
    ::kill(id_, SIGTERM);
    return Wait();
}

int Process::Wait() {
    int status = 0;
    if (::waitpid(std::exchange(id_, -1), &status, 0) < 0 || !WIFEXITED(status)) {
        return -1;
    }
    return WEXITSTATUS(status);
}

bool isInstalled(const std::string& program) {
    const char* const path = std::getenv("PATH");
    std::istringstream folders(path != nullptr ? path : "");
    for (std::string folder; std::getline(folders, folder, ':');) {
        if (std::filesystem::exists(std::filesystem::path(folder) / program)) {
            return true;
        }
    }
    return false;
}

}  // namespace Orlix::Aravis::Testing
