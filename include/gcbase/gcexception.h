// The GenICam exception family: every failure inside a call chain is one of these, carrying a
// description, the source file and the line where it was raised. Objects are immutable values.
#pragma once

#include <exception>
#include <memory>

#include "gcbase/api.h"

namespace GenICam {

class GCBASE_API GenericException : public std::exception {
public:
    GenericException(const char* description, const char* sourceFileName, unsigned int sourceLine);
    GenericException(const char* description, const char* sourceFileName, unsigned int sourceLine,
                     const char* exceptionType);
    GenericException(const GenericException&) noexcept;
    GenericException& operator=(const GenericException&) noexcept;
    ~GenericException() override;

    // The bare text, without place or class; what log lines and error objects show.
    [[nodiscard]] virtual const char* GetDescription() const noexcept;
    [[nodiscard]] virtual const char* GetSourceFileName() const noexcept;
    [[nodiscard]] virtual unsigned int GetSourceLine() const noexcept;
    // "DESCRIPTION : CLASS thrown (file 'FILE', line N)"
    [[nodiscard]] const char* what() const noexcept override;

private:
    struct Data;
    // Shared and immutable, so that copying an exception in flight can not fail.
    std::shared_ptr<const Data> data_;
};

#define GCBASE_DECLARE_EXCEPTION(Name)                                                      \
    class GCBASE_API Name : public GenericException {                                       \
    public:                                                                                 \
        Name(const char* description, const char* sourceFileName, unsigned int sourceLine); \
        Name(const char* description, const char* sourceFileName, unsigned int sourceLine,  \
             const char* exceptionType);                                                    \
        Name(const Name&) noexcept;                                                         \
        Name& operator=(const Name&) noexcept;                                              \
        ~Name() override;                                                                   \
    }

// A failed allocation.
GCBASE_DECLARE_EXCEPTION(BadAllocException);
// A bad argument: a null pointer, an empty text, a value that means nothing here.
GCBASE_DECLARE_EXCEPTION(InvalidArgumentException);
// A value outside its range.
GCBASE_DECLARE_EXCEPTION(OutOfRangeException);
// Access to a property that has no value.
GCBASE_DECLARE_EXCEPTION(PropertyException);
// A state that forbids the call, a failed look-up, a parse error.
GCBASE_DECLARE_EXCEPTION(RuntimeException);
// A programming error, such as the use of an unset pointer.
GCBASE_DECLARE_EXCEPTION(LogicalErrorException);
// An access that the node's access mode forbids.
GCBASE_DECLARE_EXCEPTION(AccessException);
// Something did not happen in its time.
GCBASE_DECLARE_EXCEPTION(TimeoutException);
// An object is not of the type that was asked for.
GCBASE_DECLARE_EXCEPTION(DynamicCastException);

#undef GCBASE_DECLARE_EXCEPTION

// Raises the exception for a text that could not be allocated.
[[noreturn]] GCBASE_API void ThrowBadAlloc(const char* sourceFileName, unsigned int sourceLine);

}  // namespace GenICam
