// Runs the real program on a free port and reads what it tells.
#pragma once

#include <sys/types.h>

#include <cstdint>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

namespace Orlix::Camsim::Testing {

class CamsimProcess {
public:
    explicit CamsimProcess(const std::vector<std::string>& arguments = {});
    ~CamsimProcess();
    CamsimProcess(const CamsimProcess&) = delete;
    CamsimProcess& operator=(const CamsimProcess&) = delete;

    [[nodiscard]] std::uint16_t port() const { return port_; }
    [[nodiscard]] const std::string& greeting() const { return greeting_; }
    // The most memory that it ever had, in kB.
    [[nodiscard]] std::int64_t peakMemory() const;
    // Its statistics as they are now.
    [[nodiscard]] nlohmann::json statistics();
    // The occasion of the faults that wait for a signal; what is sent from then on comes behind it.
    void signal();
    // Ends it; its statistics at the end.
    [[nodiscard]] nlohmann::json stop();

private:
    [[nodiscard]] std::string readLine();

    pid_t child_ = -1;
    int out_ = -1;
    std::string greeting_;
    std::uint16_t port_ = 0;
};

struct CommandResult {
    int exitCode = -1;
    std::string text;  // both outputs
};
// Runs a line of the shell.
[[nodiscard]] CommandResult runShell(const std::string& line);

}  // namespace Orlix::Camsim::Testing
