// What goes wrong inside a codec. It stays within this library: loading and saving turn it into
// one exception that names the file, too.
#pragma once

#include <stdexcept>
#include <string>

namespace Orlix {

// The text is the bare cause, without file and full stop, such as "the file is truncated".
class CodecError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

// The cause that the system tells for the error number of a failed call.
[[nodiscard]] CodecError systemError(const char* action, int errorNumber);

// The one wording for a file that ends before its picture does.
[[nodiscard]] CodecError truncatedFile();

}  // namespace Orlix
