#include "aravis/glib.h"

#include <gtest/gtest.h>

#include <future>
#include <thread>

namespace Orlix::Aravis {
namespace {

// As GLib has an object while it tells of a signal.
TEST(EndHere, ObjectEndsOnThisThreadThoughAnotherHasItForAMoment) {
    for (int round = 0; round < 100; ++round) {
        ObjectPtr<GObject> object(G_OBJECT(g_object_new(G_TYPE_OBJECT, nullptr)));
        std::thread::id endedOn;
        g_object_weak_ref(
            object.get(),
            +[](gpointer id, GObject*) {
                *static_cast<std::thread::id*>(id) = std::this_thread::get_id();
            },
            &endedOn);
        // Nothing is told any more as soon as the end has begun.
        std::promise<void> begun;
        g_signal_connect_data(
            object.get(), "notify", reinterpret_cast<GCallback>(+[] {}), &begun,
            +[](gpointer told, GClosure*) { static_cast<std::promise<void>*>(told)->set_value(); },
            static_cast<GConnectFlags>(0));
        std::thread other([&, held = g_object_ref(object.get())] {
            begun.get_future().wait();
            std::this_thread::yield();
            g_object_unref(held);
        });
        EndHere(std::move(object));
        other.join();
        ASSERT_EQ(endedOn, std::this_thread::get_id());
    }
}

}  // namespace
}  // namespace Orlix::Aravis
