#include "orlixcamera/emulated/chunks.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "gcbase/gcexception.h"
#include "orlixcamera/emulated/cameratools.h"

namespace {

using namespace EmulatedTest;
using Transport::ChunkByteOrder;
using Transport::FrameFate;
using Transport::PayloadKind;
using Transport::StreamBuffer;

const std::vector<std::string> chunkNames = {"FrameID",       "Timestamp", "ExposureTime", "Gain",
                                             "LineStatusAll", "SceneName", "Triggered"};

// A frame's own features: a second map of the description, of which only the chunks are there.
class ChunkMap {
public:
    explicit ChunkMap(const std::string& description)
        : map_(CNodeMapFactory(ContentType_Xml, description.data(), description.size())
                   .CreateNodeMap()) {}

    void attach(const StreamBuffer& buffer) {
        CChunkAdapter& adapter = buffer.chunkByteOrder == ChunkByteOrder::BigEndian
                                     ? static_cast<CChunkAdapter&>(big_)
                                     : static_cast<CChunkAdapter&>(little_);
        adapter.AttachNodeMap(map_._Ptr());
        adapter.AttachBuffer(static_cast<std::uint8_t*>(buffer.data),
                             static_cast<std::int64_t>(buffer.filled), &statistics);
    }
    [[nodiscard]] INode* node(const char* name) const { return map_->GetNode(name); }
    [[nodiscard]] std::int64_t integer(const char* name) const {
        return CIntegerPtr(node(name))->GetValue();
    }
    [[nodiscard]] double real(const char* name) const { return CFloatPtr(node(name))->GetValue(); }

    AttachStatistics_t statistics;

private:
    CNodeMapRef map_;
    CChunkAdapterGEV big_;
    CChunkAdapterU3V little_;
};

class EmulatedChunks : public testing::Test {
protected:
    static void enableAll(const StreamingCamera& camera) {
        camera.features.set("ChunkModeActive", "1");
        for (const std::string& name : chunkNames) {
            camera.features.set("ChunkSelector", name.c_str());
            camera.features.set("ChunkEnable", "1");
        }
    }

    Layer layer{2};
    StreamingCamera camera{layer};
    ChunkMap chunks{*camera.device->GetDescription()};
};

TEST_F(EmulatedChunks, FrameTellsOfItselfInEveryChunk) {
    enableAll(camera);
    camera.features.set("Gain", "3");
    camera.features.set("GainSelector", "Green");
    camera.features.set("Gain", "1.5");
    camera.features.set("TestPattern", "GreyDiagonalRamp");
    camera.start(2);
    for (std::int64_t frame = 1; frame <= 2; ++frame) {
        const StreamBuffer* const buffer = camera.wait();
        ASSERT_NE(buffer, nullptr);
        EXPECT_EQ(buffer->kind, PayloadKind::ImageWithChunks);
        chunks.attach(*buffer);
        EXPECT_EQ(chunks.integer("ChunkFrameID"), frame);
        EXPECT_EQ(chunks.integer("ChunkTimestamp"), static_cast<std::int64_t>(buffer->timestamp));
        EXPECT_DOUBLE_EQ(chunks.real("ChunkExposureTime"), 50);
        EXPECT_EQ(chunks.integer("ChunkLineStatusAll"), frame == 1 ? 1 : 3);
        EXPECT_EQ(CStringPtr(chunks.node("ChunkSceneName"))->GetValue(), "GreyDiagonalRamp");
        EXPECT_FALSE(CBooleanPtr(chunks.node("ChunkTriggered"))->GetValue());
        const CEnumerationPtr selector(chunks.node("ChunkGainSelector"));
        selector->FromString("All");
        EXPECT_DOUBLE_EQ(chunks.real("ChunkGain"), 3);
        selector->FromString("Green");
        EXPECT_DOUBLE_EQ(chunks.real("ChunkGain"), 1.5);
    }
    EXPECT_EQ(chunks.statistics.NumChunkPorts, 7);
    EXPECT_EQ(chunks.statistics.NumChunks, 8) << "the picture is one, too";
    EXPECT_EQ(chunks.statistics.NumAttachedChunks, 7);
}

TEST_F(EmulatedChunks, PayloadGrowsByChunksAndTrailers) {
    const std::size_t picture = camera.payload();
    camera.features.set("ChunkModeActive", "1");
    EXPECT_EQ(camera.payload(), picture + 8);
    enableAll(camera);
    EXPECT_EQ(camera.payload(), picture + 8 + (8 + 8 + 8 + 32 + 8 + 64 + 4) + 7 * 8);
    camera.start(1);
    EXPECT_EQ(camera.wait()->filled, camera.payload());
    camera.stream->Stop();
    camera.features.execute("AcquisitionStop");
    camera.features.set("ChunkModeActive", "0");
    EXPECT_EQ(camera.payload(), picture);
}

TEST_F(EmulatedChunks, PictureStaysAsItIsInFrontOfTheChunks) {
    camera.features.set("TestPattern", "GreyHorizontalRamp");
    enableAll(camera);
    camera.start(1);
    const auto* const data = static_cast<const std::uint8_t*>(camera.wait()->data);
    for (std::size_t place = 0; place < 64 * 48; ++place) {
        ASSERT_EQ(data[place], place % 64);
    }
}

TEST_F(EmulatedChunks, FrameHasOnlyTheChunksThatAreEnabled) {
    camera.features.set("ChunkModeActive", "1");
    camera.features.set("ChunkSelector", "ExposureTime");
    camera.features.set("ChunkEnable", "1");
    camera.start(1);
    chunks.attach(*camera.wait());
    EXPECT_EQ(chunks.statistics.NumChunks, 2);
    EXPECT_TRUE(IsReadable(chunks.node("ChunkExposureTime")->GetAccessMode()));
    EXPECT_FALSE(IsReadable(chunks.node("ChunkFrameID")->GetAccessMode()));
}

TEST_F(EmulatedChunks, CamerasDifferInTheByteOrderOfTheirTrailers) {
    StreamingCamera other(layer, 1);
    for (StreamingCamera* const each : {&camera, &other}) {
        enableAll(*each);
        each->start(1);
        const StreamBuffer* const buffer = each->wait();
        EXPECT_EQ(buffer->chunkByteOrder,
                  each == &camera ? ChunkByteOrder::BigEndian : ChunkByteOrder::LittleEndian);
        chunks.attach(*buffer);
        EXPECT_EQ(chunks.integer("ChunkFrameID"), 1);
        EXPECT_DOUBLE_EQ(chunks.real("ChunkExposureTime"), 50);
    }
}

TEST_F(EmulatedChunks, TriggeredFrameSaysSo) {
    enableAll(camera);
    camera.features.set("TriggerMode", "On");
    camera.start(1);
    camera.features.execute("TriggerSoftware");
    chunks.attach(*camera.wait());
    EXPECT_TRUE(CBooleanPtr(chunks.node("ChunkTriggered"))->GetValue());
}

TEST_F(EmulatedChunks, ChunksAreChosenBeforeTheAcquisition) {
    camera.features.set("ChunkSelector", "Image");
    EXPECT_EQ(camera.features.mode("ChunkEnable"), RO);
    EXPECT_EQ(camera.features.get("ChunkEnable"), "1");
    camera.features.set("ChunkSelector", "Gain");
    EXPECT_EQ(camera.features.mode("ChunkEnable"), RW);
    camera.features.execute("AcquisitionStart");
    EXPECT_EQ(camera.features.mode("ChunkEnable"), RO);
    EXPECT_EQ(camera.features.mode("ChunkModeActive"), RO);
    const std::int64_t on = 1;
    EXPECT_THROW(camera.device->Write(0x1500, &on, sizeof on), GenICam::AccessException);
    const std::int64_t off = 0;
    camera.features.execute("AcquisitionStop");
    EXPECT_THROW(camera.device->Write(0x1508, &off, sizeof off), GenICam::OutOfRangeException);
}

TEST_F(EmulatedChunks, BufferForThePictureAloneIsTooSmall) {
    const std::size_t picture = camera.payload();
    enableAll(camera);
    camera.queue(1, picture);
    camera.start(0);
    const StreamBuffer* const buffer = camera.wait();
    EXPECT_EQ(buffer->fate, FrameFate::WrongSize);
    EXPECT_EQ(buffer->filled, 0U);
}

}  // namespace
