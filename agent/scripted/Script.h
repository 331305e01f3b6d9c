// What a script says: adapters, their tests, and how each call ends. docs/scripted-agent.md describes the
// file.
#pragma once

#include "agent/Vorl.h"

#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

enum class Call
{
    Initialize,
    EnumAdapters,
    EnumDiagTests,
    RunDiagTest,
    StopTest,
    GetDiagTestStatistics,
    Release
};
// The name of a call in scripts and in counts files.
const char* CallName(Call call) noexcept;
std::optional<Call> FindCall(std::string_view name) noexcept;

// What happens instead of, or before, the scripted behaviour of a call.
struct CFault
{
    std::optional<ULONG> OnlyCall; // counted from 1 in the fault's own scope; every call if absent
    std::wstring HangUntil;        // name of an event to wait for first; empty: no wait
    bool Throw = false;            // then an exception leaves the call
    std::optional<HRESULT> Result; // or the call ends with this code and does nothing else
};
using CFaults = std::map<Call, std::vector<CFault>>;

struct CScriptedTest
{
    VormTestDescriptor Descriptor = {};
    std::vector<HRESULT> Outcomes = {S_OK};     // used in turn, the last one for all further runs
    std::optional<DWORD> Duration = 0;          // milliseconds; absent: until the test is stopped
    std::vector<VormTestStatistics> Statistics; // one per poll, the last one for all further polls
    bool GrowingStatistics = false;             // counters that grow with every poll instead
    CFaults Faults;

    // To be stopped is how runs of these two tests end.
    bool IsSenderResponder() const noexcept { return Descriptor.TestID == 9 || Descriptor.TestID == 10; }
};

struct CScriptedAdapter
{
    std::wstring Key;
    std::vector<CScriptedTest> Tests;
    CFaults Faults;
};

struct CScript
{
    std::wstring CountsFile; // empty: the calls are not counted in a file
    std::vector<CScriptedAdapter> Adapters;
    CFaults Faults;
};

// Reads a script from JSON text (UTF-8, comments allowed). Members that it does not know are errors, so that
// a misspelt one does not go unnoticed. Throws CScriptError.
CScript ParseScript(std::string_view text);
