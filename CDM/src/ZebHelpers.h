// Small services of the host: hexadecimal text, the choice of the agent, texts of the configuration, the name
// of the computer, the process's identity and its paths.
#pragma once

#include "Common/src/com/CriticalSection.h"
#include "Common/src/com/Owned.h"

#include <string>
#include <windows.h>

// The value of a hexadecimal text without a prefix. A character that is no digit counts as 0 and is traced;
// more than eight digits push the oldest ones out.
DWORD ParseHex(const wchar_t* text) noexcept;

// Which agent the registry asks for; 0, the real one, if it does not say.
DWORD ReadAgentSelector() noexcept;

// Reads a text of the configuration (see ZebRegistry.h) into a buffer of `size` bytes, always terminated.
// Traces why it could not.
bool ReadRegistryString(const char* subkey, const char* name, char* buffer, DWORD size);

// The name of the local computer, asked for once; "error" if the system refuses it. The text is valid as long
// as the object.
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

// While an object of this lives, its thread works as the process and not as the client whose request it
// serves: for what the server does on its own account. The thread that made it destroys it.
class CProcessIdentity
{
  public:
    CProcessIdentity() noexcept
    {
        if (OpenThreadToken(GetCurrentThread(), TOKEN_IMPERSONATE, TRUE, m_client.Put()))
            SetThreadToken(nullptr, nullptr);
    }
    ~CProcessIdentity()
    {
        if (m_client)
            SetThreadToken(nullptr, m_client.Get());
    }
    CProcessIdentity(const CProcessIdentity&) = delete;
    CProcessIdentity& operator=(const CProcessIdentity&) = delete;

  private:
    CHandle m_client; // none if the thread worked as the process before
};

// Where the server keeps its files. Filled by the server process at start-up and handed down.
struct CHostPaths
{
    std::string InstallDir;       // carries its own trailing backslash: file names are appended as they are
    std::wstring ResultStorePath; // the file that results are kept in between two runs of the process
};
