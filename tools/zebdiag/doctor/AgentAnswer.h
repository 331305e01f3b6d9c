// What the adapter agent answers when it is asked for its adapters and tests, as the provider asks it when it
// starts.
#pragma once

#include <windows.h>

namespace zebdiag
{
enum class AgentSays
{
    HasTests,
    NoAdapter,
    NoTests,
    Failed,
    Crashed,
    Nothing // within the time that it is given
};

struct CAgentAnswer
{
    AgentSays Says = AgentSays::HasTests;
    HRESULT Status = S_OK; // with Failed
};

// Asks the agent of this computer, in a process of its own: one that crashes or hangs does no harm here.
CAgentAnswer AskAgent();

// What that process is started with, and all that it does; the result is its exit code.
inline constexpr wchar_t kAskAgentArgument[] = L"ask-agent";
DWORD AskAgentHere() noexcept;

// What an exit code of that process means.
CAgentAnswer AgentAnswerOf(DWORD exitCode) noexcept;
} // namespace zebdiag
