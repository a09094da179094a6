#include "orlixdataprocessingcore/utils/helper.h"

#include <string>

namespace Orlix::DataProcessing::Utils {

GenICam::gcstring Helper::toUpper(const GenICam::gcstring& text) {
    std::string upper = text.str();
    for (char& character : upper) {
        if (character >= 'a' && character <= 'z') {
            character = static_cast<char>(character - 'a' + 'A');
        }
    }
    return GenICam::gcstring(std::move(upper));
}

GenICam::gcstring Helper::trim(const GenICam::gcstring& text) {
    constexpr std::string_view blanks = " \t\n\r\v\f";
    const std::size_t begin = text.str().find_first_not_of(blanks);
    if (begin == std::string::npos) {
        return GenICam::gcstring();
    }
    const std::size_t end = text.str().find_last_not_of(blanks) + 1;
    return text.substr(begin, end - begin);
}

}  // namespace Orlix::DataProcessing::Utils
