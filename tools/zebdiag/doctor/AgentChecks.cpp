// The adapter agent: whether COM knows it, and what it answers.
#include "Common/src/com/Owned.h"
#include "tools/zebdiag/LocaleName.h"
#include "tools/zebdiag/doctor/Checks.h"
#include "tools/zebdiag/doctor/Places.h"
#include "tools/zebdiag/languages/Said.h"

#include <iterator>

namespace zebdiag
{
namespace
{
struct CAgentKind
{
    DWORD Selector;
    const wchar_t* Good; // {1}: its file
    const wchar_t* Unknown;
    const wchar_t* Class;
    const wchar_t* Servers[2]; // the second may be null
    const wchar_t* Register;
};

// The last one is that of every other selector.
constexpr CAgentKind kAgents[] = {
    {1,
     Marked(L"{1}, the test agent (TestVorl is 1; it plays adapters from a file)"),
     Marked(L"COM does not know the test agent (TestVorl is 1; it plays adapters from a file)."),
     kTestAgentClass,
     {L"InprocServer32", L"LocalServer32"},
     Marked(L"Delete the value TestVorl, or register the test agent: \"regsvr32 VorlTest.dll\".")},
    {2,
     Marked(L"{1}, an agent in a process of its own (TestVorl is 2)"),
     Marked(L"COM does not know an agent in a process of its own (TestVorl is 2)."),
     kAgentClass,
     {L"LocalServer32", nullptr},
     Marked(L"Delete the value TestVorl, or register that agent: \"VorlProxy.exe /RegServer\".")},
    {0,
     Marked(L"{1}, the adapter agent"),
     Marked(L"COM does not know the adapter agent."),
     kAgentClass,
     {L"InprocServer32", L"LocalServer32"},
     Marked(L"Register the agent as an administrator: \"regsvr32 Vorl.dll\".")},
};

const CAgentKind& AgentOf(DWORD selector)
{
    for (const CAgentKind& agent : kAgents)
        if (agent.Selector == selector)
            return agent;
    return *std::prev(std::end(kAgents));
}

// Agents mark their codes with these bits; a wrapped code of the system has them too, but the system's text.
bool IsAgentCode(HRESULT status)
{
    return (static_cast<DWORD>(status) & 0x80040000) == 0x80040000 &&
           HRESULT_FACILITY(status) != FACILITY_WIN32;
}

std::wstring SystemText(HRESULT status)
{
    wchar_t* text = nullptr;
    const DWORD length = FormatMessageW(
        FORMAT_MESSAGE_ALLOCATE_BUFFER | FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS, nullptr,
        static_cast<DWORD>(status), 0, reinterpret_cast<wchar_t*>(&text), 0, nullptr);
    std::wstring words(text ? text : L"", length);
    LocalFree(text);
    words.erase(words.find_last_not_of(L"\r\n ") + 1);
    return words;
}

// In the language that was asked for, or in English.
std::wstring AgentText(const CExamination& exam, HRESULT status)
{
    const UINT id = (static_cast<UINT>(status) & 0x7FFF) | 0x8000;
    const LCID english = 0x409;
    for (const LCID locale : {LCID{NumberOfLocale(CallerLocale(exam.Target.Locale))}, english})
        if (std::wstring text = exam.Machine->StringIn(FolderOf(exam.Server) + TextLibrary(locale), id);
            !text.empty())
            return text;
    return {};
}
} // namespace

CFinding CheckAgent(CExamination& exam)
{
    if (!exam.Machine)
        return OnlyThere(exam);
    const CAgentKind& agent = AgentOf(exam.Machine->Number(kProvidersKey, L"TestVorl").value_or(0));
    for (const wchar_t* server : agent.Servers)
    {
        const auto command =
            server ? exam.Machine->Text(ClassKey(agent.Class) + L"\\" + server, L"") : std::nullopt;
        if (!command || command->empty())
            continue;
        const std::wstring file = ProgramOf(*command);
        if (exam.Machine->Look(file) == FileState::Missing)
            return Wrong(Said(L"It is registered as {1}, which is not there.", {file}), Said(agent.Register));
        return Good(Said(agent.Good, {file}));
    }
    return Wrong(Said(agent.Unknown), Said(agent.Register));
}

std::optional<CFinding> FaultOfAgentsAnswer(const CExamination& exam)
{
    const CAgentAnswer answer = exam.Machine->Agent();
    switch (answer.Says)
    {
    case AgentSays::HasTests:
        return std::nullopt;
    case AgentSays::NoAdapter:
        return Wrong(
            Said(L"The adapter agent finds no wired adapter, and without one the provider does not start."),
            Said(L"Connect one, or see in the device manager why an adapter that is there does not show."));
    case AgentSays::NoTests:
        return Wrong(
            Said(
                L"The adapter agent has no test for any adapter, and without one the provider does not start."),
            Said(L"See in the device manager whether the wired adapters work, or ask the agent's maker."));
    case AgentSays::Crashed:
        return Wrong(Said(L"The adapter agent crashes when it is asked for its adapters."),
                     Said(L"Install its files anew; if it goes on crashing, tell the agent's maker."));
    case AgentSays::Nothing:
        return Wrong(Said(L"The adapter agent does not answer when it is asked for its adapters."),
                     Said(L"Restart the computer; if that does not help, tell the agent's maker."));
    case AgentSays::Failed:
        break;
    }
    const std::wstring text =
        IsAgentCode(answer.Status) ? AgentText(exam, answer.Status) : SystemText(answer.Status);
    return Wrong(Said(text.empty() ? Marked(L"The adapter agent fails with status {1}.")
                                   : Marked(L"The adapter agent fails with status {1}: {2}"),
                      {StatusText(answer.Status), text}),
                 Said(L"Mend what the agent names, then try again."));
}
} // namespace zebdiag
