// What the doctor asks of the computer that it runs on, besides its management service. A test replaces it.
// Nothing here changes anything.
#pragma once

#include "tools/zebdiag/doctor/AgentAnswer.h"

#include <optional>
#include <string>
#include <vector>
#include <windows.h>

namespace zebdiag
{
// One network interface of the system.
struct CInterface
{
    std::wstring Key;  // as AdapterNameKey
    std::wstring Name; // of the connection
    // Why it is no wired adapter, such as "wireless"; empty for one that looks like it.
    std::wstring LeftOut;
};

enum class FileState
{
    There,
    Missing,
    NotTold // out of reach of who asks
};

enum class Right
{
    Yes,
    No,
    NotTold
};

class IMachine
{
  public:
    virtual ~IMachine() = default;

    // Values of HKEY_LOCAL_MACHINE; an empty name is the key's own value. Absent where there is none of that
    // type.
    virtual std::optional<std::wstring> Text(const std::wstring& key, const wchar_t* name) const = 0;
    virtual std::optional<DWORD> Number(const std::wstring& key, const wchar_t* name) const = 0;
    virtual std::optional<std::vector<BYTE>> Bytes(const std::wstring& key, const wchar_t* name) const = 0;

    // A file or a folder.
    virtual FileState Look(const std::wstring& path) const = 0;
    // "1.0.0"; empty for a file that has none.
    virtual std::wstring VersionOf(const std::wstring& path) const = 0;

    // Whether there is such an account.
    virtual Right Exists(const std::wstring& account) const = 0;
    // Whether the account, or whoever runs the program if it is empty, may add files to a folder.
    virtual Right MayWrite(const std::wstring& folder, const std::wstring& account) const = 0;

    virtual std::vector<CInterface> Interfaces() const = 0;

    // A string of a library's resources; empty for one that is not there.
    virtual std::wstring StringIn(const std::wstring& library, UINT id) const = 0;
    virtual CAgentAnswer Agent() const = 0;
};

// The real one.
const IMachine& ThisMachine();
} // namespace zebdiag
