// A program that runs beside the test and ends with it, by its id.
#pragma once

#include <sys/types.h>

#include <string>
#include <vector>

namespace Orlix::Aravis::Testing {

class Process {
public:
    Process() = default;
    // A program without a slash is looked for in the folders of PATH. What it prints goes into the
    // file, if there is one.
    explicit Process(const std::vector<std::string>& command, const std::string& outputFile = {});
    ~Process();
    Process(Process&& other) noexcept;
    Process& operator=(Process&& other) noexcept;

    // As a cable that is pulled: the program does nothing more.
    void Kill();
    // Silence, as of a cable that is pulled, until it goes on.
    void Pause();
    void Continue();
    // Asks a camera to print what it has counted.
    void AskForCounts();
    // Begins the faults that a camera keeps for a signal.
    void BeginFaults();
    // Asks it to end, and waits for that.
    int Terminate();
    // Waits for the program to end by itself; its exit code, or -1.
    int Wait();

private:
    pid_t id_ = -1;
};

// Whether there is a program of that name in PATH.
[[nodiscard]] bool isInstalled(const std::string& program);

}  // namespace Orlix::Aravis::Testing
