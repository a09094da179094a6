// The rival of genapi_benchmark: Aravis' own node tree on a device that is plain memory. Null
// without Aravis at configure time.
#pragma once

#include <cstdint>
#include <memory>
#include <string>

namespace OrlixBenchmark {

// For one thread. Errors of Aravis end the program: a failed read would measure nothing.
class AravisTree {
public:
    [[nodiscard]] static bool isBuiltIn();
    // Range and access checks on, register cache off. The text must live as long.
    [[nodiscard]] static std::unique_ptr<AravisTree> make(const std::string& text);
    virtual ~AravisTree() = default;

    // A name is looked up once; the handle is Aravis' node.
    [[nodiscard]] virtual void* find(const char* name) = 0;
    [[nodiscard]] virtual std::int64_t integer(void* node) = 0;
    virtual void setInteger(void* node, std::int64_t value) = 0;
    [[nodiscard]] virtual double real(void* node) = 0;
    [[nodiscard]] virtual const char* symbolic(void* node) = 0;
};

}  // namespace OrlixBenchmark
