// The runs that are going on, and the stop event that those of senders and responders share.
#include "CDM/src/engine/ActiveRuns.h"
#include "Common/src/com/Bstr.h"

#include <gtest/gtest.h>

namespace
{
std::shared_ptr<CDiagTest> MakeTest(ULONG id)
{
    return std::make_shared<CDiagTest>(CBstr(L"9@{AAA}").Get(), VormTestDescriptor{id, 0, 0});
}

bool IsSignalled(HANDLE event)
{
    return WaitForSingleObject(event, 0) == WAIT_OBJECT_0;
}

class ActiveRunsTest : public testing::Test
{
  protected:
    ~ActiveRunsTest() override { ResetEvent(sender->Event()); }

    CActiveRuns runs;
    const std::shared_ptr<CDiagTest> sender = MakeTest(9);
    const std::shared_ptr<CDiagTest> responder = MakeTest(10);
    const std::shared_ptr<CDiagTest> ordinary = MakeTest(1);
};

TEST_F(ActiveRunsTest, RequestToStopThatCameTooLateDoesNotOutliveTheLastRun)
{
    const CActiveRun other(runs, ordinary);
    {
        const CActiveRun run(runs, sender);
        SetEvent(sender->Event());
    }
    EXPECT_FALSE(IsSignalled(sender->Event()));
}

TEST_F(ActiveRunsTest, RequestToStopIsLeftToAnotherRunThatSharesTheEvent)
{
    {
        const CActiveRun run(runs, sender);
        {
            const CActiveRun other(runs, responder);
            SetEvent(sender->Event());
        }
        EXPECT_TRUE(IsSignalled(sender->Event()));
    }
    EXPECT_FALSE(IsSignalled(sender->Event()));
}

TEST_F(ActiveRunsTest, OrdinaryRunTakesNoRequestAway)
{
    const CActiveRun run(runs, sender);
    {
        const CActiveRun other(runs, ordinary);
        SetEvent(sender->Event());
    }
    EXPECT_TRUE(IsSignalled(sender->Event()));
}

TEST_F(ActiveRunsTest, IdleIsSignalledWhileNoRunIsGoingOn)
{
    EXPECT_TRUE(IsSignalled(runs.Idle()));
    {
        const CActiveRun run(runs, sender);
        EXPECT_FALSE(IsSignalled(runs.Idle()));
        EXPECT_EQ(runs.Running().size(), 1u);
    }
    EXPECT_TRUE(IsSignalled(runs.Idle()));
}

TEST_F(ActiveRunsTest, NoRunBeginsAfterTheEnd)
{
    runs.Close();
    EXPECT_FALSE(CActiveRun(runs, sender).Entered());
    EXPECT_TRUE(runs.Running().empty());
}
} // namespace
