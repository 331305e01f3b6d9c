#include "CDM/src/engine/EngineStatus.h"
#include "CDM/src/engine/catalogue/DiagSetting.h"
#include "CDM/src/engine/catalogue/DiagTest.h"
#include "CDM/src/engine/results/DiagResult.h"
#include "tests/support/TraceCapture.h"

#include <gtest/gtest.h>

namespace
{
CDiagTest MakeTest(ULONG testId)
{
    return CDiagTest(CBstr(L"1@A").Get(), VormTestDescriptor{testId, 7, 8});
}

TEST(DiagTestObjectTest, OnlyTheLowFourBitsNumberTheStrings)
{
    const CDiagTest test(CBstr(L"10@A").Get(), VormTestDescriptor{16, 0, 0});
    const CTestData data = test.Data();
    EXPECT_EQ(16u, data.TestID);
    EXPECT_EQ(3500u, data.NameStringID);
    EXPECT_EQ(3600u, data.DescriptionStringID);
    EXPECT_EQ(3515u, MakeTest(15).NameStringID());
    EXPECT_EQ(3615u, MakeTest(15).DescriptionStringID());
}

TEST(DiagTestObjectTest, OrdinaryTest)
{
    const CTestData data = MakeTest(1).Data();
    EXPECT_STREQ(L"1@A", data.Key.Text());
    EXPECT_EQ((std::vector<USHORT>{2}), data.Characteristics);
    EXPECT_TRUE(data.ResourcesUsed.empty());
    EXPECT_EQ(0u, data.Value);
    EXPECT_EQ(0u, data.Locked);
    EXPECT_EQ(0u, data.SenderResponder);
    EXPECT_EQ(nullptr, data.Event);
}

TEST(DiagTestObjectTest, SenderAndResponderHaveTheStopEvent)
{
    for (const ULONG testId : {9, 10})
    {
        const CDiagTest test = MakeTest(testId);
        const CTestData data = test.Data();
        EXPECT_EQ((std::vector<USHORT>{2, 7}), data.Characteristics);
        EXPECT_EQ(1u, data.SenderResponder);
        ASSERT_NE(nullptr, data.Event);
        EXPECT_EQ(static_cast<DWORD>(WAIT_TIMEOUT), WaitForSingleObject(data.Event, 0));
        // Manual reset: a wait does not take the signal away.
        SetEvent(data.Event);
        EXPECT_EQ(WAIT_OBJECT_0, WaitForSingleObject(data.Event, 0));
        EXPECT_EQ(WAIT_OBJECT_0, WaitForSingleObject(data.Event, 0));
        ResetEvent(data.Event);
    }
}

TEST(DiagTestObjectTest, StopEventHasItsName)
{
    const CDiagTest test = MakeTest(9);
    const CHandle named(OpenEventW(EVENT_MODIFY_STATE, FALSE, L"SenderResponderEvent"));
    ASSERT_TRUE(named);
    SetEvent(named.Get());
    EXPECT_EQ(WAIT_OBJECT_0, WaitForSingleObject(test.Event(), 0));
    ResetEvent(named.Get());
}

TEST(DiagTestObjectTest, EventThatCannotBeMadeIsTraced)
{
    const CTraceCapture trace;
    // The name is taken by an object of another kind.
    const CHandle other(CreateMutexW(nullptr, FALSE, L"SenderResponderEvent"));
    ASSERT_TRUE(other);
    const CDiagTest test = MakeTest(10);
    EXPECT_EQ(nullptr, test.Event());
    EXPECT_TRUE(trace.Has("CDiagTest::CDiagTest:CreateEvent failed."));
}

TEST(DiagTestObjectTest, LockAndUnlock)
{
    CDiagTest test = MakeTest(1);
    EXPECT_EQ(engine::NotLocked, test.UnlockTest());
    EXPECT_EQ(S_OK, test.LockTest());
    EXPECT_EQ(1u, test.Data().Locked);
    EXPECT_EQ(engine::AlreadyLocked, test.LockTest());
    EXPECT_EQ(S_OK, test.UnlockTest());
    EXPECT_EQ(engine::NotLocked, test.UnlockTest());
}

TEST(DiagObjectTest, NullKeyIsAcceptedAndTraced)
{
    const CTraceCapture trace;
    const CDiagSetting setting(nullptr, false);
    EXPECT_TRUE(trace.Has("CDiagObject::CDiagObject:Null Key Value!!"));
    EXPECT_FALSE(setting.Key());
}

TEST(DiagObjectTest, CopiesItsKey)
{
    CBstr key(L"1@A");
    const CDiagSetting setting(key.Get(), false);
    key.Get()[0] = L'2';
    EXPECT_STREQ(L"1@A", setting.Key().Text());
}

TEST(DiagSettingObjectTest, Defaults)
{
    const CSettingData data = CDiagSetting(CBstr(L"9@A").Get(), true).Data();
    EXPECT_STREQ(L"9@A", data.Key.Text());
    EXPECT_EQ(0, data.TestWarningLevel);
    EXPECT_EQ(0u, data.ReportSoftErrors);
    EXPECT_EQ(1u, data.ReportStatusMessages);
    EXPECT_EQ(100, data.PercentOfTestCoverage);
    EXPECT_EQ(1u, data.QuickMode);
    EXPECT_EQ(0u, data.HaltOnError);
    EXPECT_EQ(1u, data.IsPackage);
    EXPECT_EQ(0u, CDiagSetting(CBstr(L"1@A").Get(), false).Data().IsPackage);
}

TEST(DiagResultObjectTest, Defaults)
{
    const CResultData data = CDiagResult(CBstr(L"1@K1").Get(), 3501, false).Data();
    EXPECT_STREQ(L"1@K1", data.ResultID.Text());
    EXPECT_STREQ(L"Tolva_DiagTest", data.DiagnosticCreationClassName.Text());
    EXPECT_STREQ(L"K1", data.ExecutionID.Text());
    EXPECT_EQ(0u, data.TestWarningLevel);
    EXPECT_EQ(0u, data.ReportSoftErrors);
    EXPECT_EQ(1u, data.ReportStatusMessages);
    EXPECT_EQ(100u, data.PercentOfTestCoverage);
    EXPECT_EQ(1u, data.QuickMode);
    EXPECT_EQ(0u, data.HaltOnError);
    EXPECT_EQ(0u, data.IsPackage);
    EXPECT_FALSE(data.TimeStamp || data.TestStartTime || data.TestCompletionTime);
    EXPECT_EQ(0u, data.TestState);
    EXPECT_EQ(0u, data.OtherStateDescriptionResourceId);
    EXPECT_EQ(0u, data.MessageCount);
    EXPECT_TRUE(data.StringIDs.empty());
    EXPECT_TRUE(data.TestMessages.empty());
    EXPECT_EQ(0u, data.EstimatedTimeOfPerforming);
    EXPECT_EQ(0, data.PercentComplete);
    EXPECT_EQ(3501u, data.DiagnosticNameStringID);
    EXPECT_EQ(0u, data.SenderResponder);
}

TEST(DiagResultObjectTest, SenderResponderResultIsNoPackage)
{
    const CResultData data = CDiagResult(CBstr(L"9@K1").Get(), 1, true).Data();
    EXPECT_EQ(1u, data.SenderResponder);
    EXPECT_EQ(0u, data.IsPackage);
}

TEST(DiagResultObjectTest, StatesAboveFiveAreRefused)
{
    CDiagResult result(CBstr(L"1@K1").Get(), 1, false);
    for (ULONG state = 0; state <= 5; ++state)
    {
        EXPECT_EQ(S_OK, result.SetTestState(static_cast<TestState>(state)));
        EXPECT_EQ(state, result.Data().TestState);
    }
    EXPECT_EQ(E_INVALIDARG, result.SetTestState(static_cast<TestState>(6)));
    EXPECT_EQ(E_INVALIDARG, result.SetTestState(static_cast<TestState>(0xFFFFFFFF)));
    EXPECT_EQ(5u, result.Data().TestState);
}

TEST(DiagResultObjectTest, PercentIsAByte)
{
    CDiagResult result(CBstr(L"1@K1").Get(), 1, false);
    EXPECT_EQ(S_OK, result.SetPercentComplete(120));
    EXPECT_EQ(S_OK, result.SetPercentComplete(255));
    EXPECT_EQ(E_INVALIDARG, result.SetPercentComplete(256));
    EXPECT_EQ(E_INVALIDARG, result.SetPercentComplete(-1));
    EXPECT_EQ(255, result.Data().PercentComplete);
}

TEST(DiagResultObjectTest, MessagesReplaceOneAnother)
{
    CDiagResult result(CBstr(L"1@K1").Get(), 1, false);
    CResultMessages messages;
    messages.Add(3, 33);
    messages.AddStringID(4);
    messages.AddMessageValue(44);
    result.SetMessages(messages);
    CResultData data = result.Data();
    EXPECT_EQ(1u, data.MessageCount); // the second was not committed
    EXPECT_EQ((std::vector<ULONG>{3, 4}), data.StringIDs);
    EXPECT_EQ((std::vector<ULONG>{33, 44}), data.TestMessages);
    result.ClearMessages();
    data = result.Data();
    EXPECT_EQ(0u, data.MessageCount);
    EXPECT_TRUE(data.StringIDs.empty());
    EXPECT_TRUE(data.TestMessages.empty());
}
} // namespace
