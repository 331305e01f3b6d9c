#include "agent/scripted/Script.h"

#include "agent/AgentCodes.h"
#include "agent/scripted/ScriptValue.h"

#include <algorithm>
#include <iterator>
#include <nlohmann/json.hpp>

namespace
{
constexpr std::pair<Call, const char*> kCalls[] = {
    {Call::Initialize, "Initialize"},
    {Call::EnumAdapters, "EnumAdapters"},
    {Call::EnumDiagTests, "EnumDiagTests"},
    {Call::RunDiagTest, "RunDiagTest"},
    {Call::StopTest, "StopTest"},
    {Call::GetDiagTestStatistics, "GetDiagTestStatistics"},
    {Call::Release, "Release"},
};

// The calls that can be made to fail for one adapter, and for one test.
constexpr Call kFirstOfAdapter = Call::EnumDiagTests;
constexpr Call kFirstOfTest = Call::RunDiagTest;

CFault ReadFault(const CScriptValue& value)
{
    CFault fault;
    value.ReadMembers({
        {"Call",
         [&](const CScriptValue& v)
         {
             fault.OnlyCall = v.Number();
             if (*fault.OnlyCall == 0)
                 v.Fail("calls are counted from 1");
         }},
        {"HangUntil", [&](const CScriptValue& v) { fault.HangUntil = v.Text(); }},
        {"Throw", [&](const CScriptValue& v) { fault.Throw = v.Flag(); }},
        {"Result", [&](const CScriptValue& v) { fault.Result = v.Code(); }},
    });
    if (fault.HangUntil.empty() && !fault.Throw && !fault.Result)
        value.Fail("a fault says at least one of HangUntil, Throw and Result");
    return fault;
}

// `first` and what follows it in the enumeration, except Release, which belongs to no adapter.
CFaults ReadFaults(const CScriptValue& value, Call first)
{
    CFaults faults;
    value.ForEachMember(
        [&](const std::string& name, const CScriptValue& entry)
        {
            const std::optional<Call> call = FindCall(name);
            if (!call)
                entry.Fail("there is no call of this name");
            if (*call < first || (*call == Call::Release && first != Call::Initialize))
                entry.Fail("this call cannot be made to fail here");
            entry.ForEachItemOrSelf([&](const CScriptValue& fault)
                                    { faults[*call].push_back(ReadFault(fault)); });
            if (*call == Call::Release)
                for (const CFault& fault : faults[*call])
                    if (fault.Result)
                        entry.Fail("a release has no result; it can hang or throw");
        });
    return faults;
}

VormTestStatistics ReadStatistics(const CScriptValue& value)
{
    VormTestStatistics statistics = {};
    value.ReadMembers({
        {"Counter",
         [&](const CScriptValue& v)
         {
             size_t next = 0;
             v.ForEachItem(
                 [&](const CScriptValue& counter)
                 {
                     if (next == std::size(statistics.Counter))
                         v.Fail("there are eight counters");
                     statistics.Counter[next++] = counter.Number();
                 });
         }},
        {"Word", [&](const CScriptValue& v) { statistics.Word = static_cast<USHORT>(v.Number(0xFFFF)); }},
        {"ByteA", [&](const CScriptValue& v) { statistics.ByteA = static_cast<BYTE>(v.Number(0xFF)); }},
        {"ByteB", [&](const CScriptValue& v) { statistics.ByteB = static_cast<BYTE>(v.Number(0xFF)); }},
    });
    return statistics;
}

std::optional<DWORD> ReadDuration(const CScriptValue& value)
{
    if (value.IsText("until stopped"))
        return std::nullopt;
    // One less than the wait functions' "for ever".
    return value.Number(0xFFFFFFFE);
}

CScriptedTest ReadTest(const CScriptValue& value)
{
    CScriptedTest test;
    test.Descriptor.TestID = value.Member("TestID").Number();
    test.Descriptor.NameStringID = vorl::NameString(test.Descriptor.TestID);
    if (test.IsSenderResponder())
    {
        test.Duration.reset();
        test.GrowingStatistics = true;
    }
    value.ReadMembers({
        {"TestID", [](const CScriptValue&) {}},
        {"NameStringID", [&](const CScriptValue& v) { test.Descriptor.NameStringID = v.Number(); }},
        {"Reserved", [&](const CScriptValue& v) { test.Descriptor.Reserved = v.Number(); }},
        {"Outcome",
         [&](const CScriptValue& v)
         {
             test.Outcomes.clear();
             v.ForEachItemOrSelf([&](const CScriptValue& outcome)
                                 { test.Outcomes.push_back(outcome.Code()); });
             if (test.Outcomes.empty())
                 v.Fail("a list of outcomes has at least one");
         }},
        {"Duration", [&](const CScriptValue& v) { test.Duration = ReadDuration(v); }},
        {"Statistics",
         [&](const CScriptValue& v)
         {
             test.GrowingStatistics = false;
             v.ForEachItem([&](const CScriptValue& poll)
                           { test.Statistics.push_back(ReadStatistics(poll)); });
         }},
        {"Faults", [&](const CScriptValue& v) { test.Faults = ReadFaults(v, kFirstOfTest); }},
    });
    return test;
}

CScriptedAdapter ReadAdapter(const CScriptValue& value)
{
    CScriptedAdapter adapter;
    adapter.Key = value.Member("Key").Text();
    value.ReadMembers({
        {"Key", [](const CScriptValue&) {}},
        {"Tests", [&](const CScriptValue& v)
         { v.ForEachItem([&](const CScriptValue& test) { adapter.Tests.push_back(ReadTest(test)); }); }},
        {"Faults", [&](const CScriptValue& v) { adapter.Faults = ReadFaults(v, kFirstOfAdapter); }},
    });
    return adapter;
}
} // namespace

const char* CallName(Call call) noexcept
{
    const auto* row =
        std::find_if(std::begin(kCalls), std::end(kCalls), [&](const auto& r) { return r.first == call; });
    return row == std::end(kCalls) ? "" : row->second;
}

std::optional<Call> FindCall(std::string_view name) noexcept
{
    const auto* row =
        std::find_if(std::begin(kCalls), std::end(kCalls), [&](const auto& r) { return r.second == name; });
    return row == std::end(kCalls) ? std::nullopt : std::optional(row->first);
}

CScript ParseScript(std::string_view text)
{
    const nlohmann::json document = ParseScriptText(text);
    CScript script;
    CScriptValue(document, "script")
        .ReadMembers({
            {"CountsFile", [&](const CScriptValue& v) { script.CountsFile = v.Text(); }},
            {"Adapters",
             [&](const CScriptValue& v) {
                 v.ForEachItem([&](const CScriptValue& adapter)
                               { script.Adapters.push_back(ReadAdapter(adapter)); });
             }},
            {"Faults", [&](const CScriptValue& v) { script.Faults = ReadFaults(v, Call::Initialize); }},
        });
    return script;
}
