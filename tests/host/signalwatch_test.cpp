// Each test runs in a process of its own, with no other thread that a signal could go to.
#include "orlix/signalwatch.h"

#include <gtest/gtest.h>
#include <semaphore.h>
#include <unistd.h>

#include <chrono>
#include <functional>
#include <semaphore>
#include <stdexcept>
#include <thread>

namespace Orlix::App {
namespace {

using Flag = std::binary_semaphore;

constexpr int success = 0;

class SignalWatchTest : public testing::TestWithParam<int> {
protected:
    SignalWatchTest() { GTEST_FLAG_SET(death_test_style, "threadsafe"); }

    static void send(int signal) { ::kill(::getpid(), signal); }

    static bool isBlocked(int signal) {
        sigset_t mask;
        pthread_sigmask(SIG_SETMASK, nullptr, &mask);
        return sigismember(&mask, signal) == 1;
    }

    // Nobody has taken it yet.
    static bool isPending(int signal) {
        sigset_t pending;
        ::sigpending(&pending);
        return sigismember(&pending, signal) == 1;
    }

    // Ends the process with success if the function returns true.
    [[noreturn]] static void endWith(bool isGood) { ::_exit(isGood ? success : 1); }
};

TEST_P(SignalWatchTest, FirstSignalCallsTheHandler) {
    const auto body = [] {
        SignalWatch watch;
        Flag called{0};
        const SignalHandler handler(watch, [&] { called.release(); });
        send(GetParam());
        called.acquire();
        endWith(true);
    };
    EXPECT_EXIT(body(), testing::ExitedWithCode(success), "");
}

TEST_P(SignalWatchTest, SecondSignalEndsTheProcessAtOnce) {
    const auto body = [] {
        SignalWatch watch(std::chrono::milliseconds(0));
        Flag called{0};
        const SignalHandler handler(watch, [&] { called.release(); });
        send(GetParam());
        called.acquire();
        send(GetParam());
        for (;;) {
            ::pause();
        }
    };
    EXPECT_EXIT(body(), testing::ExitedWithCode(128 + GetParam()), "");
}

TEST_P(SignalWatchTest, SignalsThatComeTogetherAreOne) {
    const auto body = [] {
        int calls = 0;
        {
            SignalWatch watch(std::chrono::hours(1));
            Flag called{0};
            const SignalHandler handler(watch, [&] {
                ++calls;
                called.release();
            });
            send(GetParam());
            called.acquire();
            send(GetParam());
            while (isPending(GetParam())) {
                std::this_thread::yield();
            }
        }
        endWith(calls == 1);
    };
    EXPECT_EXIT(body(), testing::ExitedWithCode(success), "");
}

INSTANTIATE_TEST_SUITE_P(Signals, SignalWatchTest, testing::Values(SIGINT, SIGTERM, SIGHUP));

using SignalWatchOnce = SignalWatchTest;

TEST_F(SignalWatchOnce, SignalThatCameBeforeTheHandlerCallsItAtOnce) {
    const auto body = [] {
        SignalWatch watch;
        Flag received{0};
        {
            const SignalHandler first(watch, [&] { received.release(); });
            send(SIGINT);
            received.acquire();
        }
        bool called = false;
        const SignalHandler second(watch, [&] { called = true; });
        endWith(called);
    };
    EXPECT_EXIT(body(), testing::ExitedWithCode(success), "");
}

TEST_F(SignalWatchOnce, RunThatThrowsLeavesNoHandlerBehind) {
    const auto body = [] {
        SignalWatch watch;
        bool called = false;
        try {
            const SignalHandler handler(watch, [&] { called = true; });
            throw std::runtime_error("The run failed.");
        } catch (const std::runtime_error&) {
        }
        Flag received{0};
        const SignalHandler next(watch, [&] { received.release(); });
        send(SIGINT);
        received.acquire();
        endWith(!called);
    };
    EXPECT_EXIT(body(), testing::ExitedWithCode(success), "");
}

sem_t interrupted;

void noteInterruption(int) {
    ::sem_post(&interrupted);
}

TEST_F(SignalWatchOnce, InterruptedWaitGoesOn) {
    const auto body = [] {
        ::sem_init(&interrupted, 0, 0);
        struct sigaction action {};
        action.sa_handler = noteInterruption;  // without SA_RESTART
        ::sigaction(SIGUSR1, &action, nullptr);
        SignalWatch watch;
        Flag called{0};
        const SignalHandler handler(watch, [&] { called.release(); });
        // The watch's thread is the only one left that can take it.
        sigset_t signals;
        sigemptyset(&signals);
        sigaddset(&signals, SIGUSR1);
        const SignalBlock block(signals);
        for (int i = 0; i < 100; ++i) {
            send(SIGUSR1);
            while (::sem_wait(&interrupted) != 0) {
            }
        }
        send(SIGINT);
        called.acquire();
        endWith(true);
    };
    EXPECT_EXIT(body(), testing::ExitedWithCode(success), "");
}

TEST_F(SignalWatchOnce, LeavesTheSignalsAsTheyWere) {
    const auto body = [] {
        const bool before = isBlocked(SIGINT);
        bool during = false;
        {
            const SignalWatch watch;
            during = isBlocked(SIGINT) && isBlocked(SIGTERM) && isBlocked(SIGHUP);
        }
        endWith(!before && during && !isBlocked(SIGINT) && !isBlocked(SIGTERM) &&
                !isBlocked(SIGHUP));
    };
    EXPECT_EXIT(body(), testing::ExitedWithCode(success), "");
}

TEST_F(SignalWatchOnce, AHangUpThatIsIgnoredStaysIgnored) {
    const auto body = [] {
        ::signal(SIGHUP, SIG_IGN);
        bool called = false;
        {
            SignalWatch watch;
            const SignalHandler handler(watch, [&] { called = true; });
            send(SIGHUP);
            called = called || isBlocked(SIGHUP);
        }
        endWith(!called);
    };
    EXPECT_EXIT(body(), testing::ExitedWithCode(success), "");
}

}  // namespace
}  // namespace Orlix::App
