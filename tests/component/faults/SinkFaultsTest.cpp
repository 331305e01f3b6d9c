// Every call of the response sink fails at its n-th time in every operation.
#include "tests/component/faults/FaultFixture.h"

namespace
{
using Operation = FaultFixture::COperation;

constexpr HRESULT kGone = RPC_E_DISCONNECTED;

// What the trace says where an object could not be sent, beside what is said of every operation.
struct CSinkRow
{
    const char* operation;
    int objects; // that the operation sends
    const char* trace = nullptr;
    size_t otherFailures = 0; // that the operation meets in any case
};

const CSinkRow kRows[] = {
    {"EnumerateTests", 4, "Tolva_DiagTest:CreateInstanceEnumAsync:SendInstance failed, hr = <%x>"},
    {"EnumerateSettings", 4},
    {"EnumerateResults", 3},
    {"EnumerateTestForMSE", 4},
    {"EnumerateResultForMSE", 3},
    {"EnumerateResultForTest", 3},
    {"EnumerateSettingForTest", 4},
    {"GetTest", 1, "Tolva_DiagTest:GetObjectAsync:SendInstance failed, hr = <%x>"},
    {"GetSetting", 1, "Tolva_DiagSetting::GetObjectAsync:SendInstance failed, hr = <%x>"},
    {"GetResult", 1, "Tolva_DiagResult::GetObjectAsync:SendInstance failed, hr = <%x>"},
    // Speaks of the result's association; support knows the text as it is.
    {"GetTestForMSE", 1, "CTolva_DiagResultMSEAssoc::GetObjectAsync::SendInstance failed, hr = <%x>"},
    {"GetResultForMSE", 1, "CTolva_DiagResultMSEAssoc::GetObjectAsync::SendInstance failed, hr = <%x>"},
    {"GetResultForTest", 1, "CTolva_DiagResultTestAssoc::GetObjectAsync::SendInstance failed, hr = <%x>"},
    {"GetSettingForTest", 1, "CTolva_DiagSettingTestAssoc::GetObjectAsync::SendInstance failed, hr = <%x>"},
    {"RunOrdinary", 1},
    {"RunByOtherCase", 1},
    {"RunSender", 1},
    {"StopOrdinary", 1},
    {"StopSender", 1},
    // Sets a result in out-parameters that have none.
    {"StopIdleOrdinary", 1, nullptr, 1},
    {"StopIdleSender", 1},
    {"Clear", 1},
    {"PutSetting", 0},
    {"Query", 0},
};

class SinkFaultsTest : public FaultFixture, public testing::WithParamInterface<Operation>
{
  protected:
    static const CSinkRow& Row()
    {
        for (const CSinkRow& row : kRows)
            if (row.operation == std::string(GetParam().name))
                return row;
        throw std::logic_error("an operation that the table does not know");
    }
};

TEST_P(SinkFaultsTest, IndicateThatFailsEndsTheRequestWithItsCode)
{
    StartWithStoredResults();
    LearnTheAnswer(GetParam());
    const CSinkRow& row = Row();
    for (int n = 1; n <= row.objects; ++n)
    {
        SCOPED_TRACE(n);
        PerformWithFault(
            GetParam(), [&] { m_plantInSink = [n](CFakeSink& sink) { sink.FailIndicate(n, kGone); }; },
            [&](const CAnswer& answer, const CTraceCapture& trace)
            {
                EXPECT_EQ(answer.Returned, kGone);
                EXPECT_EQ(answer.Status, kGone);
                EXPECT_FALSE(answer.StatusObject);
                EXPECT_EQ(answer.Objects.size(), static_cast<size_t>(n) - 1);
                EXPECT_EQ(m_sink->Indications().size(), static_cast<size_t>(n)) << "none is tried after it";
                EXPECT_EQ(trace.Count("Exception not thrown:"), 1 + row.otherFailures);
                EXPECT_EQ(trace.Count("Info: 0x80040907 "), 1u);
                if (row.trace)
                {
                    EXPECT_EQ(trace.Count(TraceLine(row.trace, kGone)), 1u);
                }
            });
    }
    EXPECT_EQ(RightAnswer().Objects.size(), static_cast<size_t>(row.objects));
    RestartClean();
    ExpectStoredResult();
}

TEST_P(SinkFaultsTest, SetStatusThatFailsChangesNothing)
{
    StartWithStoredResults();
    LearnTheAnswer(GetParam());
    PerformWithFault(
        GetParam(), [&] { m_plantInSink = [](CFakeSink& sink) { sink.FailSetStatus(kGone); }; },
        [&](const CAnswer& answer, const CTraceCapture&)
        {
            EXPECT_EQ(answer.Returned, RightAnswer().Returned);
            EXPECT_EQ(answer.Status, RightAnswer().Status);
            EXPECT_FALSE(answer.StatusObject);
            EXPECT_EQ(answer.Objects.size(), RightAnswer().Objects.size());
        });
}

// A client that vanished gets nothing, and what it asked for is done.
TEST_P(SinkFaultsTest, ASinkThatIsGoneAltogetherIsLetGo)
{
    StartWithStoredResults();
    LearnTheAnswer(GetParam());
    PerformWithFault(
        GetParam(),
        [&]
        {
            m_plantInSink = [](CFakeSink& sink)
            {
                sink.FailIndicate(1, kGone);
                sink.FailSetStatus(kGone);
            };
        },
        [&](const CAnswer& answer, const CTraceCapture&)
        {
            EXPECT_EQ(answer.Returned, Row().objects ? kGone : RightAnswer().Returned);
            EXPECT_TRUE(answer.Objects.empty());
            EXPECT_EQ(m_sink->AddRef(), 2u) << "nobody but the test holds the sink";
            m_sink->Release();
        });
}

INSTANTIATE_TEST_SUITE_P(Operations, SinkFaultsTest, testing::ValuesIn(FaultFixture::Operations()),
                         [](const auto& info) { return info.param.name; });

TEST_F(FaultFixture, SinkOfTheInitialisationThatFailsLosesNothing)
{
    StartWithStoredResults();
    class CGoneSink final : public CComObject<IWbemProviderInitSink>
    {
      public:
        STDMETHODIMP SetStatus(LONG, LONG) override { return kGone; }
    };
    m_host.Restart();
    const auto sink = MakeCom<CGoneSink>();
    EXPECT_EQ(
        m_host.Provider->Initialize(nullptr, 0, nullptr, nullptr, m_host.Services.Get(), nullptr, sink.Get()),
        WBEM_S_NO_ERROR);
    EXPECT_EQ(sink->AddRef(), 2u);
    sink->Release();
    ExpectStoredResult();
    EXPECT_EQ(Enumerate(L"Tolva_DiagTest").Objects.size(), 4u);
}
} // namespace
