// A script while it is performed: what was called so far decides what comes next. Free-threaded.
#pragma once

#include "agent/scripted/CallCounts.h"

class CScriptPlay
{
  public:
    explicit CScriptPlay(CScript script);

    // Counts a call and gives the fault that the script has for it, the most particular first: the test's,
    // the adapter's, the script's. Null if the call does what it is for. The fault lives as long as the play.
    const CFault* Enter(Call call, std::wstring_view adapterKey = {}, std::optional<ULONG> testId = {});

    const CScript& Script() const noexcept { return m_script; }
    // Null if the script has no such adapter or test. Keys are compared without case.
    const CScriptedAdapter* FindAdapter(std::wstring_view key) const;
    const CScriptedTest* FindTest(std::wstring_view adapterKey, ULONG testId) const;

    // A run of the test begins: its polls are counted from 1 again. Gives the outcome that it will have.
    HRESULT BeginRun(const CScriptedTest& test);
    VormTestStatistics Poll(const CScriptedTest& test);

  private:
    struct CProgress
    {
        size_t Runs = 0;
        ULONG Polls = 0;
    };

    const CScript m_script;
    std::map<std::wstring, const CScriptedAdapter*> m_adapters; // by upper-case key
    CCallCounts m_counts;
    std::mutex m_mutex;
    std::map<const CScriptedTest*, CProgress> m_progress;
};
