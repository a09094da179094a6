// Chunk maps are made once and used again.
#include <set>

#include "orlixcamera/instantcamera/cameratest.h"

namespace CameraTest {
namespace {

class ChunkNodeMaps : public CameraFixture {
protected:
    static Frame frameWithChunk(std::int64_t value) {
        Frame frame;
        frame.kind = Transport::PayloadKind::ImageWithChunks;
        append(frame.chunks, imageChunk);
        append(frame.chunks, std::uint32_t{32});
        append(frame.chunks, value);
        append(frame.chunks, frameIdChunk);
        append(frame.chunks, std::uint32_t{8});
        return frame;
    }
    CGrabResultPtr next(std::int64_t value) {
        EXPECT_TRUE(device->Send(frameWithChunk(value)));
        CGrabResultPtr result;
        EXPECT_TRUE(camera.RetrieveResult(30000, result));
        return result;
    }
};

TEST_F(ChunkNodeMaps, AreAsManyAsThereAreBuffersHoweverManyFramesCome) {
    camera.MaxNumBuffer.SetValue(2);
    open();
    camera.StartGrabbing();
    std::set<const GenApi::INodeMap*> maps;
    for (std::int64_t value = 0; value < 50; ++value) {
        const CGrabResultPtr result = next(value);
        GenApi::INodeMap& map = result->GetChunkDataNodeMap();
        EXPECT_EQ(&map, &result->GetChunkDataNodeMap());
        EXPECT_EQ(CIntegerParameter(map, "ChunkFrameID").GetValue(), value);
        maps.insert(&map);
    }
    EXPECT_EQ(maps.size(), 2U);
}

TEST_F(ChunkNodeMaps, AreUsedAgainByBuffersOfAnotherSize) {
    camera.MaxNumBuffer.SetValue(1);
    open();
    camera.StartGrabbing();
    const GenApi::INodeMap* const first = &next(1)->GetChunkDataNodeMap();
    camera.StopGrabbing();
    device->SetPayload(128);
    camera.StartGrabbing();
    EXPECT_EQ(&next(2)->GetChunkDataNodeMap(), first);
}

TEST_F(ChunkNodeMaps, OfTwoResultsAreIndependent) {
    open();
    camera.StartGrabbing();
    const CGrabResultPtr one = next(1);
    const CGrabResultPtr two = next(2);
    EXPECT_EQ(CIntegerParameter(one->GetChunkDataNodeMap(), "ChunkFrameID").GetValue(), 1);
    EXPECT_EQ(CIntegerParameter(two->GetChunkDataNodeMap(), "ChunkFrameID").GetValue(), 2);
    EXPECT_EQ(CIntegerParameter(one->GetChunkDataNodeMap(), "ChunkFrameID").GetValue(), 1);
}

TEST_F(ChunkNodeMaps, KeepTheirValuesAfterTheCameraWasClosed) {
    open();
    camera.StartGrabbing();
    const CGrabResultPtr result = next(77);
    static_cast<void>(camera.DetachDevice());
    EXPECT_EQ(CIntegerParameter(result->GetChunkDataNodeMap(), "ChunkFrameID").GetValue(), 77);
}

// Any bytes behind the image: a value or an error, never a crash.
TEST_F(ChunkNodeMaps, WithstandAnyTrailer) {
    open();
    camera.StartGrabbing();
    std::uint32_t noise = 1;
    for (int round = 0; round < 2000; ++round) {
        Frame frame;
        frame.kind = Transport::PayloadKind::ImageWithChunks;
        for (unsigned int byte = 0; byte < 8 + noise % 24; ++byte) {
            noise = noise * 1664525 + 1013904223;
            frame.chunks.push_back(static_cast<std::uint8_t>(noise % 3 == 0 ? noise >> 24U : 0));
        }
        ASSERT_TRUE(device->Send(frame));
        CGrabResultPtr result;
        ASSERT_TRUE(camera.RetrieveResult(30000, result));
        EXPECT_EQ(result->IsChunkDataAvailable(), result->GrabSucceeded());
        if (result->IsChunkDataAvailable()) {
            static_cast<void>(CIntegerParameter(result->GetChunkDataNodeMap(), "ChunkFrameID")
                                  .GetValueOrDefault(0));
        }
    }
}

}  // namespace
}  // namespace CameraTest
