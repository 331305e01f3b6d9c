#include "CDM/src/engine/runs/ActiveRuns.h"
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
    CActiveRuns runs;
    const std::shared_ptr<CDiagTest> sender = MakeTest(9);
};

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
