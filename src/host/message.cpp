#include "host/message.h"

#include <exception>

#include "gcbase/gcexception.h"

namespace Orlix::Host {

void fail(const std::string& message) {
    throw GenICam::RuntimeException(oneLine(message).c_str(), __FILE__, __LINE__);
}

std::string currentMessage() {
    try {
        throw;
    } catch (const GenICam::GenericException& error) {
        return oneLine(error.GetDescription());
    } catch (const std::exception& error) {
        return oneLine(error.what());
    } catch (...) {
        return "an exception of an unknown class";
    }
}

std::string oneLine(std::string text) {
    for (char& character : text) {
        const auto code = static_cast<unsigned char>(character);
        if (code < 0x20 || code == 0x7f) {
            character = ' ';
        }
    }
    return text;
}

}  // namespace Orlix::Host
