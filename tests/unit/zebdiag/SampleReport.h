// A report with a test in each state, and a sender and a responder whose packets are counted.
#pragma once

#include "SampleInventory.h"
#include "tools/zebdiag/report/Report.h"

namespace zebdiag
{
// The lines of a sender or a responder; the packets stand in the order of the agent's counters.
inline std::vector<std::wstring> SampleCounterLines(const std::vector<unsigned long>& packets)
{
    const auto line = [](const wchar_t* name, unsigned long value)
    { return L"time|Sender|" + std::wstring(name) + L": " + std::to_wstring(value); };
    return {line(L"Role", 1),
            line(L"Link", 1),
            line(L"Median round trip", 240),
            line(L"Received there", packets[0]),
            line(L"Replies sent", packets[1]),
            line(L"Sent", packets[2]),
            line(L"Replies received", packets[4]),
            line(L"Out of order", packets[6]),
            line(L"Lost there", packets[3]),
            line(L"Lost back", packets[5]),
            line(L"Longest round trip", 3)};
}

inline CResult SampleResult(const CTest& test, TestState state, std::vector<std::wstring> lines = {})
{
    CResult result;
    result.TestKey = test.Key;
    result.State = state;
    result.Percent = 45;
    result.Started = L"20240501134510.000000+0";
    if (state != TestState::InProgress)
        result.Completed = L"20240501134512.000000+0";
    result.Lines = std::move(lines);
    return result;
}

inline CReport SampleReport()
{
    constexpr wchar_t kKey[] = L"{AAAA-1111}";
    CReport report;
    report.Computer = L"WS42";
    report.Namespace = L"root\\cimv2";
    report.Made = L"20240501140000";
    report.Processes = {312};
    report.Adapters = {{kKey,
                        L"Ethernet",
                        L"Contoso Gigabit",
                        {SampleTest(L"1", kKey, L"Link"), SampleTest(L"2", kKey, L"Speed"),
                         SampleTest(L"3", kKey, L"Errors"), SampleTest(L"4", kKey, L"Discards"),
                         SampleTest(L"5", kKey, L"Addresses"), SampleTest(L"6", kKey, L"Gateway"),
                         SampleTest(L"7", kKey, L"Names"), SampleTest(L"8", kKey, L"Driver"),
                         SamplePacketTest(L"9", kKey, L"Sender")}}};
    std::vector<CTest>& tests = report.Adapters[0].Tests;
    const auto add = [&](size_t at, TestState state, std::vector<std::wstring> lines = {})
    { report.Results[tests[at].Key] = SampleResult(tests[at], state, std::move(lines)); };
    add(0, TestState::Passed);
    add(1, TestState::Failed, {L"time|Speed|The adapter is slow. Check the cable."});
    add(2, TestState::InProgress);
    add(3, TestState::Stopped, {L"time|Discards|Another program stopped the test."});
    add(4, TestState::Unknown);
    add(5, TestState::Other);
    tests[7].InUse = true; // tests 7 and 8 have no result
    add(8, TestState::Passed, SampleCounterLines({195, 195, 200, 5, 190, 5, 0}));
    report.Results[tests[8].Key].Setting = {false, true, 50};
    report.Settings[tests[8].Key] = {true, true, 100};
    return report;
}
} // namespace zebdiag
