// The n-th allocation of every operation fails, for every n: of the heap, of a BSTR, of an array, of a block
// that crosses an interface.
#include "Common/src/WomClassCache.h"
#include "tests/component/faults/FaultFixture.h"

#include <algorithm>
#include <set>

namespace
{
using Operation = FaultFixture::COperation;

constexpr LONG kInProgress = 4;
constexpr LONG kUnhandled = static_cast<LONG>(0x8004091A);

// Whichever step finds no memory, this is what the client can see.
struct COutcome
{
    HRESULT returned;
    std::optional<HRESULT> status;
    LONG statusCode; // of the extended status; 0: there is none
    auto operator<=>(const COutcome&) const = default;

    friend void PrintTo(const COutcome& outcome, std::ostream* out)
    {
        *out << std::hex << outcome.returned << " " << outcome.status.value_or(0) << " "
             << outcome.statusCode;
    }
};

const std::set<COutcome> kOutcomes = {
    // It can be lived with, or the result tells.
    {S_OK, S_OK, 0},
    // Where not even the request could be begun, there is nothing to report with.
    {E_OUTOFMEMORY, std::nullopt, 0},
    {wmi::Failed, std::nullopt, 0},
    {wmi::Failed, wmi::Failed, kUnhandled},
    {wmi::OutOfMemory, wmi::OutOfMemory, 0},
    // A localised text could not be widened.
    {E_FAIL, E_FAIL, 0},
    // A text that could not be copied goes to the property as an error code.
    {wmi::TypeMismatch, wmi::TypeMismatch, 0},
};

class AllocationFaultsTest : public FaultFixture, public testing::WithParamInterface<Operation>
{
  protected:
    // Without dumps, most allocations are those of the operation.
    AllocationFaultsTest() { CTraceCapture::SetLevel(3); }
    ~AllocationFaultsTest() override { CTraceCapture::SetLevel(2); }

    // But for one whose setting could not be read.
    void ExpectNoRunInProgress(const CTraceCapture& trace)
    {
        for (const wchar_t* name : {L"1@A", L"9@B"})
        {
            EXPECT_TRUE(Number(ResultOf(name), L"TestState") != kInProgress ||
                        trace.Has("CDiagMgr::RunTest:GetSettingData failed, hr = <80041006>"));
        }
    }
};

TEST_P(AllocationFaultsTest, EachAllocationFailsOnce)
{
    StartWithStoredResults();
    LearnTheAnswer(GetParam());
    bool failed = true;
    int n = 1;
    for (; failed; ++n)
    {
        SCOPED_TRACE(n);
        PerformWithFault(
            GetParam(), [&] { m_failAllocation = n; },
            [&](const CAnswer& answer, const CTraceCapture& trace)
            {
                failed = CFailingAllocation::Failed();
                const COutcome outcome = {answer.Returned, answer.Status,
                                          answer.StatusObject ? Number(answer.StatusObject, L"StatusCode")
                                                              : 0};
                EXPECT_TRUE(kOutcomes.contains(outcome) || !failed) << testing::PrintToString(outcome);
                EXPECT_LE(answer.Objects.size(), RightAnswer().Objects.size());
                if (std::string(GetParam().name).starts_with("Run"))
                    ExpectNoRunInProgress(trace);
            });
    }
    EXPECT_EQ(n == 2, std::string(GetParam().name) == "Query") << "a query alone is refused at once";
    RestartClean();
    ExpectStoredResult();
}

INSTANTIATE_TEST_SUITE_P(Operations, AllocationFaultsTest, testing::ValuesIn(FaultFixture::Operations()),
                         [](const auto& info) { return info.param.name; });

class AllocationStartTest : public FaultFixture
{
  protected:
    // What the init sink learns where the n-th allocation fails.
    LONG Initialize(int n)
    {
        const auto sink = MakeCom<CInitSink>();
        const CFailingAllocation failing(n);
        EXPECT_EQ(m_host.Provider->Initialize(nullptr, 0, nullptr, nullptr, m_host.Services.Get(), nullptr,
                                              sink.Get()),
                  WBEM_S_NO_ERROR);
        return sink->Statuses.at(0);
    }
    // A start that failed serves no class at all, another one all that a handler could be made for.
    void ExpectAllClassesOrNone(bool initialized, const CTraceCapture& trace)
    {
        const std::pair<const wchar_t*, const char*> kClasses[] = {
            {L"Tolva_DiagTest", "CTolva_DiagTest"},
            {L"Tolva_DiagSetting", "create Tolva_DiagSetting"},
            {L"Tolva_DiagResult", "CTolva_DiagResult"},
            {L"Tolva_DiagTestForMSE", "CTolva_DiagTestMSEAssoc"},
            {L"Tolva_DiagResultForMSE", "CTolva_DiagResultMSEAssoc"},
            {L"Tolva_DiagResultForTest", "CTolva_DiagResultTestAssoc"},
            {L"Tolva_DiagSettingForTest", "CTolva_DiagSettingTestAssoc"},
        };
        const std::vector<std::string> lines = trace.Lines();
        for (const auto& [name, handler] : kClasses)
        {
            const std::string missing = handler;
            const bool made =
                std::none_of(lines.begin(), lines.end(),
                             [&](const std::string& line) {
                                 return line.find("ClassesInit:Failed to create") != std::string::npos &&
                                        line.ends_with(missing);
                             });
            const HRESULT expected = initialized && made ? S_OK : wmi::Failed;
            EXPECT_EQ(Enumerate(name).Returned, expected) << handler;
        }
    }
    // Starts with the first, the second, ... allocation failing, until none fails.
    void FailEach()
    {
        bool failed = true;
        int n = 1;
        for (; failed; ++n)
        {
            SCOPED_TRACE(n);
            EndWithoutStoring();
            m_host.Restart();
            const CTraceCapture trace;
            const LONG reported = Initialize(n);
            failed = CFailingAllocation::Failed();
            EXPECT_TRUE(reported == WBEM_S_INITIALIZED || reported == wmi::Failed);
            EXPECT_TRUE(failed || reported == WBEM_S_INITIALIZED);
            // A handler that could not be made leaves its class unserved.
            const bool served =
                reported == WBEM_S_INITIALIZED && !trace.Has("Failed to create CTolva_DiagTest");
            const CAnswer tests = Enumerate(L"Tolva_DiagTest");
            EXPECT_TRUE(tests.Status == S_OK || (!served && tests.Returned == wmi::Failed));
            EXPECT_TRUE(!tests.Objects.empty() || !served);
            ExpectAllClassesOrNone(reported == WBEM_S_INITIALIZED, trace);
        }
        EXPECT_GT(n, 100);
        EndWithoutStoring();
        WomClassCache::Drop();
    }

  private:
    // Nothing has changed since the start, and writing takes its time.
    void EndWithoutStoring()
    {
        m_store.FailCall(1, STG_E_ACCESSDENIED);
        m_host.Release();
        m_store.FailCall(0, S_OK);
    }
};

TEST_F(AllocationStartTest, EachAllocationFailsOnceAndNoStoredResultIsLost)
{
    StartWithStoredResults();
    FailEach();
    // The second time makes nothing that is made once.
    const CUsage before = Usage();
    FailEach();
    const CUsage after = Usage();
    EXPECT_EQ(after.Objects, before.Objects);
    EXPECT_EQ(after.AgentReferences, before.AgentReferences);
    EXPECT_EQ(after.Blocks, before.Blocks);
    EXPECT_EQ(after.ComBlocks, before.ComBlocks);

    RestartClean();
    EXPECT_EQ(Enumerate(L"Tolva_DiagResult").Objects.size(), 3u);
    ExpectStoredResult();
}
} // namespace
