#include "tests/component/faults/FaultFixture.h"

#include "CDM/src/ZebRegistry.h"

DWORD CPollingEnvironment::WaitForEither(HANDLE event, HANDLE worker, DWORD milliseconds)
{
    const HANDLE work[] = {worker, m_atWork};
    if (WaitForMultipleObjects(2, work, FALSE, INFINITE) == WAIT_OBJECT_0)
        return WAIT_OBJECT_0 + 1;
    const HANDLE stop[] = {event, m_letGo.Get()};
    if (WaitForMultipleObjects(2, stop, FALSE, INFINITE) == WAIT_OBJECT_0)
        return WAIT_OBJECT_0;
    SetClock(ProcessMilliseconds() + milliseconds);
    return WAIT_TIMEOUT;
}

DWORD CPollingEnvironment::Wait(HANDLE object, DWORD milliseconds)
{
    constexpr DWORD kLook = 20;
    return WaitForSingleObject(object, milliseconds == INFINITE ? INFINITE : kLook);
}

FaultFixture::FaultFixture() : ComponentTest({&m_environment, &m_store})
{
    LiveComBlocks();
    m_environment.FollowAgent(m_host.Agent->Blocked());
    // Three polls for a whole run.
    m_host.Registry.SetNumber(kZebDiagKey, "TimeoutSndRsp", 10);
    m_host.Registry.SetNumber(kZebDiagKey, "CheckTime", 4);
}

FaultFixture::~FaultFixture()
{
    EndRun();
    m_store.FailCall(0, S_OK);
}

void FaultFixture::StartWithStoredResults()
{
    Start();
    for (const wchar_t* name : {L"1@A", L"1@B", L"9@B"})
        ASSERT_EQ(RunTest(name).Status, S_OK);
    Restart();
    ASSERT_EQ(Enumerate(L"Tolva_DiagResult").Objects.size(), 3u);
    m_stored = ResultOf(L"1@B");
}

void FaultFixture::ExpectStoredResult()
{
    const CAnswer answer = Get(ResultPath(L"1@B"));
    ASSERT_EQ(answer.Objects.size(), 1u);
    EXPECT_EQ(answer.Objects[0]->CompareTo(0, m_stored.Get()), WBEM_S_NO_ERROR);
}

void FaultFixture::RestartClean()
{
    m_store.FailCall(0, S_OK);
    Restart();
}

ComPtr<CFakeSink> FaultFixture::MakeSink()
{
    ComPtr<CFakeSink> sink = MakeCom<CFakeSink>();
    if (m_plantInSink)
        std::exchange(m_plantInSink, {})(*sink.Get());
    m_sink = sink;
    return sink;
}

HRESULT FaultFixture::Make(const std::function<HRESULT()>& request)
{
    if (m_failAllocation == 0)
        return request();
    const CFailingAllocation failing(std::exchange(m_failAllocation, 0));
    return request();
}

FaultFixture::CAnswer FaultFixture::Perform(const COperation& operation, const Plant& plant)
{
    m_environment.SetClock(0);
    operation.prepare(*this);
    if (plant)
        plant();
    CAnswer answer = operation.make(*this);
    operation.finish(*this);
    return answer;
}

FaultFixture::CUsage FaultFixture::Usage()
{
    m_sink.Reset();
    m_host.Plan->ForgetPuts();
    m_host.Services->Forget();
    m_host.Agent->Forget();
    m_environment.ForgetTimeOuts();
    m_store.FailCall(0, S_OK);
    CUsage usage;
    usage.Objects = g_liveComObjects;
    usage.Blocks = LiveBlocks();
    usage.ComBlocks = LiveComBlocks();
    usage.AgentReferences = m_host.Agent->AddRef();
    m_host.Agent->Release();
    return usage;
}

bool FaultFixture::SameObjects(const CAnswer& a, const CAnswer& b)
{
    return std::equal(a.Objects.begin(), a.Objects.end(), b.Objects.begin(), b.Objects.end(),
                      [](const Instance& one, const Instance& other)
                      { return one->CompareTo(0, other.Get()) == WBEM_S_NO_ERROR; });
}

void FaultFixture::LearnTheAnswer(const COperation& operation)
{
    m_right = Perform(operation);
    for (int i = 0; i < 2; ++i)
    {
        Perform(operation);
        ExpectStoredResult();
    }
    m_usage = Usage();
}

void FaultFixture::PerformWithFault(const COperation& operation, const Plant& plant, const Check& check)
{
    const auto cycle = [&]
    {
        {
            const CTraceCapture trace;
            const CAnswer answer = Perform(operation, plant);
            check(answer, trace);
        }
        {
            const CAnswer again = Perform(operation);
            EXPECT_EQ(again.Returned, m_right.Returned) << "the next request";
            EXPECT_EQ(again.Status, m_right.Status) << "the next request";
            EXPECT_TRUE(SameObjects(again, m_right)) << "the next request";
            EXPECT_FALSE(again.StatusObject) << "the next request";
        }
        ExpectStoredResult();
    };
    cycle();
    CUsage usage = Usage();
    if (usage != m_usage)
    {
        // What failed may have made something that is made once; a second time it makes nothing.
        m_usage = usage;
        cycle();
        usage = Usage();
    }
    EXPECT_EQ(usage.Objects, m_usage.Objects);
    EXPECT_EQ(usage.Blocks, m_usage.Blocks);
    EXPECT_EQ(usage.ComBlocks, m_usage.ComBlocks);
    EXPECT_EQ(usage.AgentReferences, m_usage.AgentReferences);
}

void FaultFixture::BeginRun(const wchar_t* name)
{
    m_environment.WaitForStop(true);
    m_host.Agent->BlockRuns();
    m_client = std::thread([this, name] { RunTest(name); });
    m_agentEndsRun = *name != L'9';
    WaitForSingleObject(m_host.Agent->Blocked(), INFINITE);
}

void FaultFixture::EndRun()
{
    if (!m_client.joinable())
        return;
    m_environment.WaitForStop(false);
    if (m_agentEndsRun)
        m_host.Agent->EndRuns();
    m_client.join();
    m_host.Agent->BlockRuns(false);
}

std::string TraceLine(const char* format, HRESULT status)
{
    char line[300];
    _snprintf(line, sizeof(line), format, static_cast<unsigned>(status));
    return line;
}
