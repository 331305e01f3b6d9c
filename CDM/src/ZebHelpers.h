// Small services of the host: hexadecimal text, the choice of the agent, the name of the computer.
#pragma once

#include "Common/src/com/CriticalSection.h"

#include <windows.h>

// The value of a hexadecimal text without a prefix. A character that is no digit counts as 0 and is traced;
// more than eight digits push the oldest ones out.
DWORD ParseHex(const wchar_t* text) noexcept;

// Which agent the registry asks for; 0, the real one, where it does not say.
DWORD ReadAgentSelector() noexcept;

// The name of the local computer, asked for once; "error" where the system would not tell. The text is valid
// as long as the object.
class CComputerName
{
  public:
    // Puts the name into a buffer of `*size` characters; false with the last error set.
    using Ask = BOOL(WINAPI*)(char* buffer, DWORD* size);

    explicit CComputerName(Ask ask) noexcept : m_ask(ask) {}
    const wchar_t* Get() noexcept;

  private:
    Ask m_ask;
    CCriticalSection m_lock;
    wchar_t m_name[MAX_COMPUTERNAME_LENGTH + 1] = {};
};

// The one of this process; any thread may ask.
const wchar_t* ComputerName() noexcept;
