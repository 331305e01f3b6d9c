#include "agent/scripted/ScriptPlay.h"

#include "Common/src/com/Text.h"

#include <algorithm>

namespace
{
// The first fault for a call that is the n-th of its kind.
const CFault* FindFault(const CFaults& faults, Call call, ULONG number)
{
    const auto entry = faults.find(call);
    if (entry == faults.end())
        return nullptr;
    const auto fault = std::find_if(entry->second.begin(), entry->second.end(),
                                    [&](const CFault& f) { return f.OnlyCall.value_or(number) == number; });
    return fault == entry->second.end() ? nullptr : &*fault;
}

// A sender and its responder on a good link: every packet is answered.
VormTestStatistics Growing(ULONG testId, ULONG poll) noexcept
{
    constexpr ULONG kPacketsPerPoll = 25;
    constexpr ULONG kMedian = 240; // microseconds
    const ULONG packets = poll * kPacketsPerPoll;
    VormTestStatistics statistics = {};
    statistics.Counter[0] = packets; // received by the responder
    statistics.Counter[1] = packets; // answered by it
    statistics.Counter[2] = packets; // sent by the sender
    statistics.Counter[4] = packets; // answers that came back
    statistics.Counter[7] = kMedian;
    statistics.Word = 1;                    // milliseconds for the longest round trip
    statistics.ByteA = testId == 9 ? 1 : 2; // sender or responder
    statistics.ByteB = 1;                   // the link is up
    return statistics;
}
} // namespace

CScriptPlay::CScriptPlay(CScript script) : m_script(std::move(script)), m_counts(m_script.CountsFile)
{
    // Of adapters with the same key the first one answers.
    for (const CScriptedAdapter& adapter : m_script.Adapters)
        m_adapters.emplace(UpperCaseAnsi(adapter.Key), &adapter);
}

const CFault* CScriptPlay::Enter(Call call, std::wstring_view adapterKey, std::optional<ULONG> testId)
{
    const CScriptedAdapter* adapter = FindAdapter(adapterKey);
    const CScriptedTest* test = testId ? FindTest(adapterKey, *testId) : nullptr;
    // Calls about adapters and tests that the script does not have count in all only.
    const CCallCounts::CNumbers numbers =
        m_counts.Count(call, adapter ? adapter->Key : std::wstring(), test ? testId : std::nullopt);
    const CFault* fault = test ? FindFault(test->Faults, call, numbers.OfTest) : nullptr;
    if (!fault && adapter)
        fault = FindFault(adapter->Faults, call, numbers.OfAdapter);
    return fault ? fault : FindFault(m_script.Faults, call, numbers.InAll);
}

const CScriptedAdapter* CScriptPlay::FindAdapter(std::wstring_view key) const
{
    const auto adapter = m_adapters.find(UpperCaseAnsi(key));
    return adapter == m_adapters.end() ? nullptr : adapter->second;
}

const CScriptedTest* CScriptPlay::FindTest(std::wstring_view adapterKey, ULONG testId) const
{
    const CScriptedAdapter* adapter = FindAdapter(adapterKey);
    if (!adapter)
        return nullptr;
    const auto test = std::find_if(adapter->Tests.begin(), adapter->Tests.end(),
                                   [&](const CScriptedTest& t) { return t.Descriptor.TestID == testId; });
    return test == adapter->Tests.end() ? nullptr : &*test;
}

HRESULT CScriptPlay::BeginRun(const CScriptedTest& test)
{
    const std::lock_guard lock(m_mutex);
    CProgress& progress = m_progress[&test];
    progress.Polls = 0;
    return test.Outcomes[std::min(progress.Runs++, test.Outcomes.size() - 1)];
}

VormTestStatistics CScriptPlay::Poll(const CScriptedTest& test)
{
    const std::lock_guard lock(m_mutex);
    const ULONG poll = ++m_progress[&test].Polls;
    if (test.GrowingStatistics)
        return Growing(test.Descriptor.TestID, poll);
    return test.Statistics[std::min<size_t>(poll, test.Statistics.size()) - 1];
}
