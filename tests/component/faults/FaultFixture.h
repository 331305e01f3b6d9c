// The provider with everything around it under the test's control: tests make each call of an operation fail
// in turn and look at what the client sees, at what is left behind, and at whether the provider serves on.
#pragma once

#include "tests/component/provider/ComponentTest.h"
#include "tests/support/Allocations.h"
#include "tests/support/FakeRunEnvironment.h"
#include "tests/support/FaultStore.h"

#include <functional>
#include <thread>

// Lets no time pass: an interval of a sender/responder run is over as soon as the agent is at work.
class CPollingEnvironment final : public CFakeRunEnvironment
{
  public:
    // Signalled while the agent is in a run.
    void FollowAgent(HANDLE atWork) { m_atWork = atWork; }
    // Whether a run goes on until somebody asks it to stop; off lets a waiting run go on.
    void WaitForStop(bool on) { on ? ResetEvent(m_letGo.Get()) : SetEvent(m_letGo.Get()); }

    DWORD WaitForEither(HANDLE event, HANDLE worker, DWORD milliseconds) override;
    // Whoever waits for a run to end looks again soon.
    DWORD Wait(HANDLE object, DWORD milliseconds) override;

  private:
    HANDLE m_atWork = nullptr;
    CHandle m_letGo{CreateEventW(nullptr, TRUE, TRUE, nullptr)};
};

// Made before the provider that works with it.
struct CFaultWorld
{
    CPollingEnvironment m_environment;
    CFaultStore m_store;
};

class FaultFixture : protected CFaultWorld, public ComponentTest
{
  public:
    using Answer = CAnswer;
    using ComponentTest::AdapterPath;
    using ComponentTest::Ask;
    using ComponentTest::Enumerate;
    using ComponentTest::Get;
    using ComponentTest::Invoke;
    using ComponentTest::m_host;
    using ComponentTest::Put;
    using ComponentTest::Quoted;
    using ComponentTest::ResultPath;
    using ComponentTest::RunTest;
    using ComponentTest::SettingPath;
    using ComponentTest::TestPath;

    using Plant = std::function<void()>;
    using Check = std::function<void(const CAnswer& answer, const CTraceCapture& trace)>;

    // Something that a client does.
    struct COperation
    {
        const char* name;
        std::function<Answer(FaultFixture&)> make;
        std::function<void(FaultFixture&)> prepare = [](FaultFixture&) {}; // what must be the case before
        std::function<void(FaultFixture&)> finish = [](FaultFixture&) {};  // when the answer is there
        const wchar_t* operationName = L"";                                // in an extended status

        friend void PrintTo(const COperation& operation, std::ostream* out) { *out << operation.name; }
    };
    static const std::vector<COperation>& Operations();

    // What exists in the process.
    struct CUsage
    {
        long Objects = 0;
        long Blocks = 0;
        long ComBlocks = 0;
        ULONG AgentReferences = 0;
        bool operator==(const CUsage&) const = default;
    };

    FaultFixture();
    ~FaultFixture() override;

    // Starts a provider that finds results of the tests 1@A, 1@B and 9@B in the store.
    void StartWithStoredResults();
    // Performs the operation without a fault until everything that is made once is made.
    void LearnTheAnswer(const COperation& operation);

    // Performs the operation with the fault that `plant` puts in place, lets `check` look at the answer, and
    // performs it once more without: the answer is the right one, nothing is left over, and what was stored
    // is there.
    void PerformWithFault(const COperation& operation, const Plant& plant, const Check& check);

    // A run on a thread of its own, up to where the agent is busy with it, and to its end.
    void BeginRun(const wchar_t* name);
    void EndRun();

    // The 1@B result, which no operation changes, is as it was stored.
    void ExpectStoredResult();
    // As after an end of the process: without any fault.
    void RestartClean();

    CAnswer Perform(const COperation& operation, const Plant& plant = {});
    CUsage Usage();

    // Whether the client was sent the same objects in the same order.
    static bool SameObjects(const CAnswer& a, const CAnswer& b);
    Instance ResultOf(const wchar_t* name) { return Get(ResultPath(name)).Objects.at(0); }

  protected:
    ComPtr<CFakeSink> MakeSink() override;
    HRESULT Make(const std::function<HRESULT()>& request) override;

    const CAnswer& RightAnswer() const { return m_right; }

    // For the next request.
    std::function<void(CFakeSink&)> m_plantInSink;
    int m_failAllocation = 0;
    ComPtr<CFakeSink> m_sink; // of the last request

  private:
    CAnswer m_right;
    CUsage m_usage;
    Instance m_stored;
    std::thread m_client;
    bool m_agentEndsRun = false; // a sender/responder run ends by its environment
};

// A line of the trace with a status in it.
std::string TraceLine(const char* format, HRESULT status);
