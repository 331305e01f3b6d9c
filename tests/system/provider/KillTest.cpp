// Providers that are killed while they run tests and while they store results: what was stored before is
// there when the next one starts.
#include "tests/system/provider/ProviderFixture.h"

#include "Common/src/com/Owned.h"

#include <atomic>
#include <future>
#include <gtest/gtest.h>
#include <iostream>
#include <optional>

namespace
{
constexpr wchar_t kProvider[] = L"Drevok.EXE";
constexpr wchar_t kStore[] = L"ZebDiag.bin";
constexpr wchar_t kNewStore[] = L"ZebDiag.bin.new";
constexpr char kStoringBegins[] = "{ --> CDiagMgr::StoreResults";
constexpr char kStoringEnds[] = "} <-- CDiagMgr::StoreResults";
constexpr char kClearingBegins[] = "{ --> CDiagMgr::ClearResults";

// The management service lets an idle provider go at once, and with it store its results.
constexpr DWORD kShortIdleTime = 100;

constexpr unsigned kTests = 50; // so many results that storing them takes some time

std::wstring KeyOf(unsigned test)
{
    wchar_t key[20] = {};
    _snwprintf(key, 19, L"%X@ALPHA", test + 16); // past the sender's and the responder's numbers
    return key;
}

std::string ManyInstantTests()
{
    std::string tests;
    for (unsigned test = 0; test < kTests; ++test)
        tests += std::string(test == 0 ? "" : ", ") + "{ \"TestID\": " + std::to_string(test + 16) + " }";
    return R"({ "Adapters": [ { "Key": "ALPHA", "Tests": [ )" + tests + " ] } ] }";
}

size_t MarksIn(const CProviderMachine& machine, const char* mark)
{
    return CountOf(machine.ReadFileBytes(kTrace), mark);
}

bool WaitForMarks(const CProviderMachine& machine, const char* mark, size_t count)
{
    return machine.WaitForFile(kTrace, [&](const std::string& text) { return CountOf(text, mark) >= count; });
}

TEST(Kill, DuringARunKeepsWhatWasStoredBefore)
{
    const CProviderMachine machine;
    SetAdapters(machine, kTwoAdapters);
    machine.SetIdleTime(kShortIdleTime);
    RunUntilStopped(machine);
    EXPECT_EQ(0u, Zebdiag(L"run --adapter BETA --test 1").ExitCode);
    ASSERT_TRUE(WaitForMarks(machine, kStoringEnds, 1));

    CRunningProgram run(ZebdiagCommand(L"run --adapter ALPHA --test 9"));
    ASSERT_TRUE(WaitForCalls(machine, "9@ALPHA", "RunDiagTest", 1));
    for (const DWORD provider : ProcessesOf(kProvider))
        KillProcess(provider);
    const CRunResult killed = run.Finish();
    EXPECT_EQ(3u, killed.ExitCode) << killed.Output;
    KillServers({L"WmiStandin.exe"});

    const nlohmann::json results = ZebdiagJson(L"results");
    EXPECT_EQ("passed", StateOf(results, "1@BETA"));
    EXPECT_EQ("none", StateOf(results, "9@ALPHA"));
}

TEST(Kill, ProviderIsReplacedForTheNextRequest)
{
    const CProviderMachine machine;
    SetAdapters(machine, kTwoAdapters);
    const CWmiClient client;
    ASSERT_EQ(5u, client.Instances(L"Tolva_DiagTest").size());
    const CHandle first = OpenProcessOf(kProvider);
    ASSERT_TRUE(first);
    KillServers({kProvider});
    EXPECT_EQ(WAIT_OBJECT_0, WaitForSingleObject(first.Get(), 0));

    EXPECT_EQ(5u, client.Instances(L"Tolva_DiagTest").size());
    EXPECT_EQ(1u, ProcessesOf(kProvider).size());
}

ULONGLONG Microseconds()
{
    LARGE_INTEGER now, frequency;
    QueryPerformanceCounter(&now);
    QueryPerformanceFrequency(&frequency);
    return static_cast<ULONGLONG>(now.QuadPart) * 1000000 / static_cast<ULONGLONG>(frequency.QuadPart);
}

class KilledWhileStoring : public testing::Test
{
  protected:
    KilledWhileStoring()
    {
        m_machine.SetIdleTime(kShortIdleTime);
        m_machine.SetScript(ManyInstantTests());
        m_client.emplace(); // starts the management service
    }

    void RunTests(unsigned first, unsigned count)
    {
        for (unsigned i = first; i < first + count; ++i)
            EXPECT_EQ(S_OK, CallTest(*m_client, KeyOf(i % kTests), L"RunTest"));
    }
    CResultTexts Results() { return AllResults(*m_client); }
    // As a virus scanner does: the file can be read, and not be replaced.
    CFileHandle HoldStore() const
    {
        CFileHandle file(CreateFileW((m_machine.Folder() + kStore).c_str(), GENERIC_READ, FILE_SHARE_READ,
                                     nullptr, OPEN_EXISTING, 0, nullptr));
        EXPECT_TRUE(file);
        return file;
    }

    // Runs some tests and waits until the provider, which is then m_provider, begins to store. Gives the
    // results to be stored.
    CResultTexts RunUntilStoringBegins(unsigned first, unsigned count)
    {
        RunTests(first, count);
        const size_t before = MarksIn(m_machine, kStoringBegins);
        CResultTexts results = Results();
        m_provider = OpenProcessOf(kProvider);
        EXPECT_TRUE(m_provider);
        EXPECT_TRUE(WaitForMarks(m_machine, kStoringBegins, before + 1));
        return results;
    }

    const CProviderMachine m_machine;
    std::optional<CWmiClient> m_client;
    CHandle m_provider;
};

TEST_F(KilledWhileStoring, NeverCostsAResultThatWasStoredBefore)
{
    constexpr unsigned kKills = 9;
    constexpr unsigned kRunsEach = 3;

    CResultTexts stored = RunUntilStoringBegins(0, kTests);
    const ULONGLONG begin = Microseconds();
    ASSERT_EQ(kTests, stored.size());
    ASSERT_TRUE(WaitForMarks(m_machine, kStoringEnds, 1));
    const ULONGLONG length = Microseconds() - begin;

    // Every second kill comes at its own time: later and later, and earlier again once the file had been
    // replaced, so that they gather about that moment. The others come while the new file waits for its
    // place, which another program holds.
    ULONGLONG delay = 0;
    unsigned interrupted = 0;
    for (unsigned kill = 0; kill < kKills; ++kill)
    {
        const bool held = kill % 2 == 1;
        const CFileHandle holder = held ? HoldStore() : CFileHandle();
        const CResultTexts changed = RunUntilStoringBegins(kill * kRunsEach, kRunsEach);
        if (held)
        {
            EXPECT_TRUE(
                m_machine.WaitForFile(kNewStore, [](const std::string& bytes) { return !bytes.empty(); }));
        }
        for (const ULONGLONG seen = Microseconds(); !held && Microseconds() - seen < delay;)
            YieldProcessor();
        TerminateProcess(m_provider.Get(), 9);
        WaitForSingleObject(m_provider.Get(), INFINITE);
        RestartComService();
        const std::string trace = m_machine.ReadFileBytes(kTrace); // of this provider alone
        const bool whole = CountOf(trace, kStoringBegins) == CountOf(trace, kStoringEnds);
        interrupted += !whole;
        if (!held)
            delay = whole ? delay / 2 : delay + length / 8;

        const CResultTexts after = Results();
        EXPECT_EQ(stored.size(), after.size()) << "kill " << kill;
        for (const auto& [key, properties] : after)
            EXPECT_TRUE(properties == changed.at(key) || (!whole && properties == stored.at(key)))
                << "kill " << kill;
        stored = after;
    }
    std::cout << interrupted << " of " << kKills << " kills came while results were being stored\n";
    EXPECT_GT(interrupted, 0u);
}

// A client that runs and clears one test in turn until it is told to end, whatever becomes of its calls.
class CRunAndClearLoop
{
  public:
    explicit CRunAndClearLoop(std::wstring key)
        : m_end(std::async(std::launch::async, [this, key = std::move(key)] { Perform(key); }))
    {
    }
    ~CRunAndClearLoop() { TellToEnd(); } // the future waits for the end
    void TellToEnd() { m_ended = true; }
    // Throws what ended the loop early.
    void WaitForEnd() { m_end.get(); }

  private:
    void Perform(const std::wstring& key) const
    {
        const CWmiClient client;
        for (bool run = true; !m_ended; run = !run)
            CallTest(client, key, run ? L"RunTest" : L"ClearResults");
    }

    std::atomic<bool> m_ended{false};
    std::future<void> m_end;
};

TEST_F(KilledWhileStoring, OfAClearingCostsNoOtherResult)
{
    constexpr unsigned kKills = 4;

    const CResultTexts stored = RunUntilStoringBegins(0, kTests);
    ASSERT_TRUE(WaitForMarks(m_machine, kStoringEnds, 1));
    for (unsigned kill = 0; kill < kKills; ++kill)
    {
        const size_t cleared = MarksIn(m_machine, kClearingBegins);
        {
            CRunAndClearLoop loop(KeyOf(0));
            ASSERT_TRUE(WaitForMarks(m_machine, kClearingBegins, cleared + 1 + kill));
            loop.TellToEnd();
            KillServers({kProvider});
            EXPECT_NO_THROW(loop.WaitForEnd());
        }
        CResultTexts after = Results();
        after.erase(KeyOf(0));
        EXPECT_EQ(kTests - 1, after.size()) << "kill " << kill;
        for (const auto& [key, properties] : after)
            EXPECT_TRUE(stored.at(key) == properties) << "kill " << kill;
    }
}
} // namespace
