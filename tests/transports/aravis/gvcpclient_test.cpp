// What counts as a sign of life.
#include "aravis/gvcpclient.h"

#include <gtest/gtest.h>
#include <sys/resource.h>

#include "aravis/bigendian.h"
#include "aravis/support/cameraport.h"
#include "aravis/support/fewdescriptors.h"
#include "aravis/support/network.h"

namespace Orlix::Aravis {
namespace {

using Answer = GvcpClient::Answer;
using std::chrono::milliseconds;

class Client : public testing::Test {
protected:
    void SetUp() override { ORLIX_REQUIRE_NETWORK(); }

    [[nodiscard]] static Answer Ask(GvcpClient& client, unsigned int attempts = 1) {
        std::uint32_t value = 0;
        return client.ReadRegister(0x0A00, value, {attempts, milliseconds(20)});
    }
    // A question that finds no answer; who asked it, for one that comes too late.
    void AskInVain(GvcpClient& client) {
        EXPECT_EQ(Ask(client), Answer::None);
        question_ = camera_.Take(milliseconds(1000), asker_);
        ASSERT_GE(question_.size(), 8U);
    }
    void Send(std::uint64_t kind, std::uint64_t requestId, std::uint32_t value) const {
        std::array<std::uint8_t, 12> answer{};
        PutNumber(answer.data() + 2, 2, kind);
        PutNumber(answer.data() + 4, 2, 4);
        PutNumber(answer.data() + 6, 2, requestId);
        PutNumber(answer.data() + 8, 4, value);
        camera_.Answer(answer, asker_);
    }
    // Commands that have come and that nobody has taken.
    [[nodiscard]] int TakeCommands() {
        int count = 0;
        while (!camera_.Take(milliseconds(0), asker_).empty()) {
            ++count;
        }
        return count;
    }
    [[nodiscard]] std::uint64_t RequestId() const { return GetNumber(question_.data() + 6, 2); }

private:
    const Testing::CameraPort camera_;
    std::vector<std::uint8_t> question_;
    sockaddr_in asker_{};
};

TEST_F(Client, AnswerToAnEarlierQuestionIsASignOfLife) {
    GvcpClient client(ParseAddress("127.0.0.1"));
    AskInVain(client);
    Send(0x0081, RequestId(), 2);
    EXPECT_EQ(Ask(client), Answer::Refused);
    EXPECT_EQ(Ask(client), Answer::None);
}

// A device that is at work on a command is not to get it again.
TEST_F(Client, RequestForMoreTimeIsASignOfLife) {
    GvcpClient client(ParseAddress("127.0.0.1"));
    AskInVain(client);
    Send(0x0089, RequestId() + 1, 30);
    EXPECT_EQ(Ask(client, 2), Answer::Refused);
    EXPECT_EQ(TakeCommands(), 1);
    EXPECT_EQ(Ask(client), Answer::None);
}

TEST_F(Client, WithoutADescriptorNothingIsAskedUntilThereIsOne) {
    const auto address = ParseAddress("127.0.0.1");
    std::optional<GvcpClient> client;
    {
        const Testing::FewDescriptors none;
        client.emplace(address);
        EXPECT_EQ(Ask(*client), Answer::NotAsked);
    }
    AskInVain(*client);
}

}  // namespace
}  // namespace Orlix::Aravis
