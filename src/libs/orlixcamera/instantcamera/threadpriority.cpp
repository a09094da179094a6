#include "orlixcamera/instantcamera/threadpriority.h"

#include <pthread.h>
#include <sched.h>

#include <string>
#include <system_error>

#include "orlixcamera/instantcamera/messages.h"

namespace Orlix::Detail {

void SetThreadPriority(int priority, const char* threadName) noexcept {
    if (priority <= 0) {
        return;
    }
    sched_param parameter{};
    parameter.sched_priority = priority;
    const int error = pthread_setschedparam(pthread_self(), SCHED_RR, &parameter);
    if (error != 0) {
        Tell(std::string("The ") + threadName + " thread can't have the priority " +
             std::to_string(priority) + ": " + std::system_category().message(error) + ".");
    }
}

}  // namespace Orlix::Detail
