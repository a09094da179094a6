#include "aravis/streamevents.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <vector>

#include "aravis/support/criticals.h"

namespace Orlix::Aravis {
namespace {

TEST(StreamEvents, LiveAsLongAsTheStreamThatWasMadeWithThem) {
    auto events = std::make_shared<StreamEvents>();
    const std::weak_ptr<StreamEvents> weak = events;
    void* own = nullptr;
    ArvStream* const stream = reinterpret_cast<ArvStream*>(&own);  // that there is one is enough
    EXPECT_EQ(events->CreateStream([&](void* given) {
        own = given;
        return stream;
    }),
              stream);
    events = nullptr;
    ASSERT_FALSE(weak.expired());
    StreamEvents::Forget(own);
    EXPECT_TRUE(weak.expired());
}

// Aravis forgets a stream only if it has begun to make it.
TEST(StreamEvents, AreFreedThoughAravisHasMadeNoStream) {
    for (const bool isBegun : {false, true}) {
        auto events = std::make_shared<StreamEvents>();
        const std::weak_ptr<StreamEvents> weak = events;
        EXPECT_EQ(events->CreateStream([&](void* own) -> ArvStream* {
            if (isBegun) {
                StreamEvents::Forget(own);
            }
            return nullptr;
        }),
                  nullptr);
        events = nullptr;
        EXPECT_TRUE(weak.expired());
    }
}

// Aravis' own camera without a network stands for those on USB: neither has packets to count.
TEST(StreamEvents, AskAStreamWithoutPacketsForNone) {
    constexpr guint64 patience = 20'000'000;  // microseconds
    const Testing::Criticals criticals;
    const ObjectPtr<ArvDevice> device(arv_fake_device_new("F1", nullptr));
    ASSERT_NE(device, nullptr);
    // Aravis hands a frame out before it tells of its end, and uses the buffer for that.
    std::vector<ObjectPtr<ArvBuffer>> buffers;
    const auto events = std::make_shared<StreamEvents>();
    const ObjectPtr<ArvStream> stream(events->CreateStream([&](void* own) {
        return arv_device_create_stream_full(device.get(), &StreamEvents::OnEvent, own,
                                             &StreamEvents::Forget, nullptr);
    }));
    ASSERT_NE(stream, nullptr);
    events->Watch(stream.get(), nullptr, 1);
    const gint64 payload =
        arv_device_get_integer_feature_value(device.get(), "PayloadSize", nullptr);
    // The last one has no room for a frame, so that one fails, too.
    const std::vector<std::size_t> sizes = {static_cast<std::size_t>(payload),
                                            static_cast<std::size_t>(payload), 16};
    for (const std::size_t size : sizes) {
        buffers.emplace_back(arv_buffer_new_allocate(size));
        events->Push(*buffers.back());
    }
    arv_device_execute_command(device.get(), "AcquisitionStart", nullptr);
    std::vector<ArvBufferStatus> fates;
    for (std::size_t frame = 0; frame < sizes.size(); ++frame) {
        const ObjectPtr<ArvBuffer> buffer(arv_stream_timeout_pop_buffer(stream.get(), patience));
        ASSERT_NE(buffer, nullptr);
        fates.push_back(arv_buffer_get_status(buffer.get()));
        EXPECT_EQ(events->TakeLack(*buffer), 0U);
    }
    EXPECT_EQ(std::count(fates.begin(), fates.end(), ARV_BUFFER_STATUS_SUCCESS), 2);
    EXPECT_EQ(events->GetMissingPackets(), 0U);
    EXPECT_EQ(criticals.Count(), 0);
    events->Watch(nullptr, nullptr, 1);
}

}  // namespace
}  // namespace Orlix::Aravis
