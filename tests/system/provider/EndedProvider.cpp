#include "tests/system/provider/EndedProvider.h"

#include "Common/src/com/Variant.h"

namespace
{
constexpr wchar_t kProvider[] = L"Drevok.EXE";

constexpr char kAdapters[] = R"([
    { "Key": "ALPHA", "Tests": [
        { "TestID": 1 },
        { "TestID": 2, "Outcome": "0x80040321" },
        { "TestID": 3, "Duration": "until stopped" },
        { "TestID": 4, "Faults": { "RunDiagTest": { "Throw": true } } },
        { "TestID": 5, "Outcome": "0x80070005" },
        { "TestID": 6 },
        { "TestID": 9 },
        { "TestID": 10 } ] },
    { "Key": "beta", "Tests": [
        { "TestID": 9, "Faults": { "StopTest": { "Result": "0x80040362" } } },
        { "TestID": 10, "Duration": 0, "Outcome": "0x80040311" } ] },
    { "Key": "{GAMMA \\ \"3\"}", "Tests": [
        { "TestID": 9 },
        { "TestID": 10, "Faults": { "GetDiagTestStatistics": { "Result": "0x80040306" } } } ] }
])";

constexpr ExpectedResult kPassed{L"1@ALPHA", L"2", 0};
constexpr ExpectedResult kFailed{L"2@ALPHA", L"3", 2};
constexpr ExpectedResult kStopped{L"3@ALPHA", L"5", 0};
constexpr ExpectedResult kThrown{L"4@ALPHA", L"3", 2};
constexpr ExpectedResult kSystemError{L"5@ALPHA", L"3", 2};
constexpr ExpectedResult kSenderPassed{L"9@ALPHA", L"2", 11};
constexpr ExpectedResult kResponderStopped{L"A@ALPHA", L"5", 11};
constexpr ExpectedResult kTerminated{L"9@BETA", L"3", 2};
constexpr ExpectedResult kEndedTooEarly{L"A@BETA", L"3", 2};
constexpr ExpectedResult kRefused{L"9@{GAMMA \\ \"3\"}", L"3", 2};
constexpr ExpectedResult kPassedWithoutCounters{L"A@{GAMMA \\ \"3\"}", L"2", 0};
// Test 6 of ALPHA is never run.
const std::vector<ExpectedResult> kAll = {
    kPassed,           kFailed,     kStopped,       kThrown,  kSystemError,          kSenderPassed,
    kResponderStopped, kTerminated, kEndedTooEarly, kRefused, kPassedWithoutCounters};

void RunToItsEnd(const CWmiClient& client, const ExpectedResult& expected)
{
    EXPECT_EQ(S_OK, CallTest(client, expected.key, L"RunTest")) << expected.key;
}

// A run of no length is refused.
void RunWithoutCoverage(const CWmiClient& client)
{
    const std::wstring setting = L"Tolva_DiagSetting.SettingID=\"" + EscapedKey(kRefused.key) + L"\"";
    ComPtr<IWbemClassObject> object;
    ASSERT_EQ(S_OK, client.Get(setting, object));
    ASSERT_EQ(S_OK, PutCoverage(client, object.Get(), 0));
    ComPtr<IWbemClassObject> out;
    const std::wstring key = kRefused.key;
    EXPECT_EQ(S_OK, client.Exec(TestPath(key), L"RunTest",
                                {{L"SystemElement", AdapterPath(key.substr(key.find(L'@') + 1))},
                                 {L"Setting", setting}},
                                out));
}

void RunAndStop(const CProviderMachine& machine, const CWmiClient& client, const wchar_t* command,
                const char* test, const ExpectedResult& expected)
{
    CRunningProgram run(ZebdiagCommand(command));
    ASSERT_TRUE(WaitForCalls(machine, test, "RunDiagTest", 1));
    EXPECT_EQ(S_OK, CallTest(client, expected.key, L"DiscontinueTest"));
    EXPECT_EQ(2u, run.Finish().ExitCode);
}

// The agent refuses to stop the run, until the provider gives up and ends its thread. Between its attempts
// the provider waits for the stop signal, so a second one spares the time.
void RunUntilTerminated(const CProviderMachine& machine, const CWmiClient& client)
{
    CRunningProgram run(ZebdiagCommand(L"run --adapter BETA --test 9"));
    ASSERT_TRUE(WaitForCalls(machine, "9@beta", "RunDiagTest", 1));
    EXPECT_EQ(S_OK, CallTest(client, kTerminated.key, L"DiscontinueTest"));
    ASSERT_TRUE(WaitForCalls(machine, "9@beta", "StopTest", 1));
    EXPECT_EQ(S_OK, CallTest(client, kTerminated.key, L"DiscontinueTest"));
    EXPECT_EQ(1u, run.Finish().ExitCode);
    EXPECT_TRUE(WaitForCalls(machine, "9@beta", "StopTest", 4));
}

size_t LinesOf(IWbemClassObject* result)
{
    CVariant lines;
    if (FAILED(result->Get(L"TestResults", 0, &lines, nullptr, nullptr)) || lines.vt != (VT_ARRAY | VT_BSTR))
        return static_cast<size_t>(-1);
    LONG last = -1;
    SafeArrayGetUBound(lines.parray, 1, &last);
    return static_cast<size_t>(last + 1);
}

CServedResults Results(const CWmiClient& client)
{
    CServedResults results;
    results.Properties = AllResults(client);
    for (const auto& result : client.Instances(L"Tolva_DiagResult"))
        results.Lines.emplace(PropertyText(result.Get(), L"DiagnosticName").value(), LinesOf(result.Get()));
    results.Console = ZebdiagJson(L"results").at("results");
    return results;
}

void LeaveEveryResult(const CProviderMachine& machine, const CWmiClient& client)
{
    machine.SetNumber(L"ZebDiag", L"CheckTime", 1);
    machine.SetNumber(L"ZebDiag", L"TimeoutSndRsp", 1);
    for (const ExpectedResult& expected :
         {kPassed, kFailed, kThrown, kSystemError, kSenderPassed, kEndedTooEarly, kPassedWithoutCounters})
        RunToItsEnd(client, expected);
    RunWithoutCoverage(client);
    RunUntilStopped(machine);
    RunAndStop(machine, client, L"run --adapter ALPHA --test 3", "3@ALPHA", kStopped);
    RunAndStop(machine, client, L"run --adapter ALPHA --test 10", "A@ALPHA", kResponderStopped);
    RunUntilTerminated(machine, client);
}
} // namespace

void EndedProvider::SetUpTestSuite()
{
    const CProviderMachine& machine = MakeMachine();
    SetAdapters(machine, kAdapters);
    CEndedStory story;
    {
        const CWmiClient client;
        story.Listed = TestKeys(ZebdiagJson(L"list"));
        LeaveEveryResult(machine, client);
        story.Before = Results(client);
        const CHandle provider = OpenProcessOf(kProvider);
        story.WasOneProcess = static_cast<bool>(provider);
    }
    story.ProviderEnded = WaitForNoProcess(kProvider);
    story.AllEnded = machine.WaitUntilAllEnded();
    story.Trace = machine.ReadFileBytes(kTrace);
    story.Stored = machine.HasFile(L"ZebDiag.bin");

    constexpr DWORD kShortIdleTime = 100; // for who waits for the next provider's end, too
    machine.SetIdleTime(kShortIdleTime);
    story.After = Results(CWmiClient());
    s_story = std::make_unique<const CEndedStory>(std::move(story));
}

void EndedProvider::TearDownTestSuite()
{
    s_story.reset();
    CSharedMachine::TearDownTestSuite();
}

const std::vector<ExpectedResult>& EndedProvider::Expected()
{
    return kAll;
}
