#include "aravis/streamevents.h"

#include <gtest/gtest.h>

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

}  // namespace
}  // namespace Orlix::Aravis
