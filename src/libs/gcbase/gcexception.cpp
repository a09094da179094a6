#include "gcbase/gcexception.h"

#include <string>

namespace GenICam {

struct GenericException::Data {
    std::string description;
    std::string sourceFileName;
    unsigned int sourceLine = 0;
    std::string what;
};

namespace {

const char* orEmpty(const char* text) {
    return text != nullptr ? text : "";
}

}  // namespace

GenericException::GenericException(const char* description, const char* sourceFileName,
                                   unsigned int sourceLine)
    : GenericException(description, sourceFileName, sourceLine, "GenericException") {}

GenericException::GenericException(const char* description, const char* sourceFileName,
                                   unsigned int sourceLine, const char* exceptionType) {
    auto data = std::make_shared<Data>();
    data->description = orEmpty(description);
    data->sourceFileName = orEmpty(sourceFileName);
    data->sourceLine = sourceLine;
    data->what = data->description + " : " + orEmpty(exceptionType) + " thrown (file '" +
                 data->sourceFileName + "', line " + std::to_string(sourceLine) + ")";
    data_ = std::move(data);
}

GenericException::GenericException(const GenericException&) noexcept = default;
GenericException& GenericException::operator=(const GenericException&) noexcept = default;
GenericException::~GenericException() = default;

const char* GenericException::GetDescription() const noexcept {
    return data_->description.c_str();
}
const char* GenericException::GetSourceFileName() const noexcept {
    return data_->sourceFileName.c_str();
}
unsigned int GenericException::GetSourceLine() const noexcept {
    return data_->sourceLine;
}
const char* GenericException::what() const noexcept {
    return data_->what.c_str();
}

#define GCBASE_DEFINE_EXCEPTION(Name)                                                        \
    Name::Name(const char* description, const char* sourceFileName, unsigned int sourceLine) \
        : GenericException(description, sourceFileName, sourceLine, #Name) {}                \
    Name::Name(const char* description, const char* sourceFileName, unsigned int sourceLine, \
               const char* exceptionType)                                                    \
        : GenericException(description, sourceFileName, sourceLine, exceptionType) {}        \
    Name::Name(const Name&) noexcept = default;                                              \
    Name& Name::operator=(const Name&) noexcept = default;                                   \
    Name::~Name() = default

GCBASE_DEFINE_EXCEPTION(BadAllocException);
GCBASE_DEFINE_EXCEPTION(InvalidArgumentException);
GCBASE_DEFINE_EXCEPTION(OutOfRangeException);
GCBASE_DEFINE_EXCEPTION(PropertyException);
GCBASE_DEFINE_EXCEPTION(RuntimeException);
GCBASE_DEFINE_EXCEPTION(LogicalErrorException);
GCBASE_DEFINE_EXCEPTION(AccessException);
GCBASE_DEFINE_EXCEPTION(TimeoutException);
GCBASE_DEFINE_EXCEPTION(DynamicCastException);

#undef GCBASE_DEFINE_EXCEPTION

void ThrowBadAlloc(const char* sourceFileName, unsigned int sourceLine) {
    throw BadAllocException("Could not allocate memory for a string.", sourceFileName, sourceLine);
}

}  // namespace GenICam
