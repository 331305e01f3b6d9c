// Frames through a pipe whose both ends are in this process.
#include "tests/unit/standin_pipe/PipeEnds.h"

#include <gtest/gtest.h>
#include <thread>

namespace
{
using standin::CPipe;
using Received = CPipe::Received;
using Frame = std::vector<BYTE>;

class Pipe : public testing::Test
{
  protected:
    void SetUp() override
    {
        CPipeEnds ends = MakePipe();
        ASSERT_TRUE(ends.Client);
        m_server = std::move(ends.Server);
        m_client = std::move(ends.Client);
    }

    std::unique_ptr<CPipe> m_server;
    std::unique_ptr<CPipe> m_client;
};

TEST_F(Pipe, CarriesFramesInTheirOrder)
{
    EXPECT_TRUE(m_client->Send(Frame{1, 2, 3}));
    EXPECT_TRUE(m_client->Send(Frame{}));
    EXPECT_TRUE(m_client->Send(Frame{4}));
    for (const Frame& expected : {Frame{1, 2, 3}, Frame{}, Frame{4}})
    {
        Frame frame;
        ASSERT_EQ(m_server->Receive(frame, INFINITE), Received::Frame);
        EXPECT_EQ(frame, expected);
    }
}

TEST_F(Pipe, CarriesAFrameThatIsLargerThanItsBuffers)
{
    Frame large(1000000);
    for (size_t i = 0; i < large.size(); ++i)
        large[i] = static_cast<BYTE>(i * 7);
    std::thread sender([&] { EXPECT_TRUE(m_client->Send(large)); });
    Frame frame;
    EXPECT_EQ(m_server->Receive(frame, INFINITE), Received::Frame);
    sender.join();
    EXPECT_EQ(frame, large);
}

TEST_F(Pipe, CarriesTheLargestFrame)
{
    const Frame large(standin::kLargestFrame, 3);
    std::thread sender([&] { EXPECT_TRUE(m_client->Send(large)); });
    Frame frame;
    EXPECT_EQ(m_server->Receive(frame, INFINITE), Received::Frame);
    sender.join();
    EXPECT_EQ(frame, large);
}

// The announced bytes need not come.
TEST_F(Pipe, RefusesAFrameThatIsLonger)
{
    const CPipeEnds ends = MakePipe(standin::kLargestFrame + 1);
    ASSERT_TRUE(ends.Client);
    Frame frame;
    EXPECT_EQ(ends.Client->Receive(frame, INFINITE), Received::TooLong);
    EXPECT_EQ(ends.Client->Receive(frame, INFINITE), Received::TooLong);
}

TEST_F(Pipe, LosesNothingWhenAWaitIsOver)
{
    Frame frame;
    EXPECT_EQ(m_server->Receive(frame, 0), Received::Nothing);
    EXPECT_TRUE(m_client->Send(Frame{5}));
    ASSERT_EQ(m_server->Receive(frame, INFINITE), Received::Frame);
    EXPECT_EQ(frame, Frame{5});
}

TEST_F(Pipe, GoesOnAfterTheThreadThatBeganToWaitHasEnded)
{
    Frame frame;
    std::thread([&] { EXPECT_EQ(m_server->Receive(frame, 0), Received::Nothing); }).join();
    EXPECT_TRUE(m_client->Send(Frame{6}));
    ASSERT_EQ(m_server->Receive(frame, INFINITE), Received::Frame);
    EXPECT_EQ(frame, Frame{6});
}

TEST_F(Pipe, TellsWhenTheOtherEndIsGone)
{
    EXPECT_TRUE(m_client->Send(Frame{7}));
    m_client.reset();
    Frame frame;
    ASSERT_EQ(m_server->Receive(frame, INFINITE), Received::Frame);
    EXPECT_EQ(m_server->Receive(frame, INFINITE), Received::TheEnd);
    EXPECT_EQ(m_server->Receive(frame, INFINITE), Received::TheEnd);
    EXPECT_FALSE(m_server->Send(Frame{8}));
}

TEST_F(Pipe, SetsItsEventForAFrameAndForTheEnd)
{
    EXPECT_EQ(WaitForSingleObject(m_server->Incoming(), 0), DWORD{WAIT_TIMEOUT});
    EXPECT_TRUE(m_client->Send(Frame{9}));
    EXPECT_EQ(WaitForSingleObject(m_server->Incoming(), INFINITE), WAIT_OBJECT_0);
    Frame frame;
    EXPECT_EQ(m_server->Receive(frame, 0), Received::Frame);
    m_client.reset();
    EXPECT_EQ(WaitForSingleObject(m_server->Incoming(), INFINITE), WAIT_OBJECT_0);
    EXPECT_EQ(m_server->Receive(frame, 0), Received::TheEnd);
    EXPECT_EQ(WaitForSingleObject(m_server->Incoming(), 0), WAIT_OBJECT_0);
}

TEST(Deadline, LeavesWhatItWasGivenAndNothingAfterwards)
{
    EXPECT_EQ(standin::CDeadline(INFINITE).Left(), INFINITE);
    EXPECT_EQ(standin::CDeadline(0).Left(), 0u);
    EXPECT_LE(standin::CDeadline(5000).Left(), 5000u);
    EXPECT_GT(standin::CDeadline(INFINITE - 1).Left(), 0u);
}
} // namespace
