#include "orlixcamera/messagesink.h"

#include <atomic>
#include <cstdio>
#include <exception>

#include "gcbase/gcexception.h"
#include "orlixcamera/instantcamera/messages.h"

namespace Orlix {
namespace {

void writeToStandardError(const char* message) noexcept {
    static_cast<void>(std::fprintf(stderr, "orlixcamera: %s\n", message));
}

std::atomic<MessageSink> currentSink{&writeToStandardError};

}  // namespace

MessageSink SetMessageSink(MessageSink sink) noexcept {
    return currentSink.exchange(sink);
}

void TellMessage(const char* message) noexcept {
    if (const MessageSink sink = currentSink.load()) {
        sink(message);
    }
}

namespace Detail {

void Tell(const std::string& message) noexcept {
    TellMessage(message.c_str());
}

std::string TextOfCurrentException() {
    try {
        throw;
    } catch (const GenICam::GenericException& error) {
        return error.GetDescription();
    } catch (const std::exception& error) {
        return error.what();
    } catch (...) {
        return "an exception of an unknown type";
    }
}

}  // namespace Detail
}  // namespace Orlix
