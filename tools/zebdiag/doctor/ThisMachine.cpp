#include "Common/src/com/Owned.h"
#include "Common/src/com/Text.h"

#include <winsock2.h>

#include <ws2ipdef.h>

#include <iphlpapi.h>

#include "tools/zebdiag/AdapterNames.h"
#include "tools/zebdiag/doctor/InterfaceKind.h"
#include "tools/zebdiag/doctor/Machine.h"

#include <aclapi.h>
#include <objbase.h>

namespace zebdiag
{
namespace
{
struct InterfaceTableTraits
{
    using Type = MIB_IF_TABLE2*;
    static Type Empty() noexcept { return nullptr; }
    static void Close(Type table) noexcept { FreeMibTable(table); }
};

struct DescriptorTraits
{
    using Type = PSECURITY_DESCRIPTOR;
    static Type Empty() noexcept { return nullptr; }
    static void Close(Type descriptor) noexcept { LocalFree(descriptor); }
};

std::optional<std::vector<BYTE>> ReadValue(const std::wstring& key, const wchar_t* name, DWORD type)
{
    std::vector<BYTE> bytes;
    LSTATUS status = ERROR_MORE_DATA;
    for (DWORD size = 256; status == ERROR_MORE_DATA && size < 1024 * 1024; size *= 2)
    {
        bytes.resize(size);
        DWORD got = size;
        status = RegGetValueW(HKEY_LOCAL_MACHINE, key.c_str(), name, type, nullptr, bytes.data(), &got);
        if (status == ERROR_SUCCESS)
            bytes.resize(got);
    }
    return status == ERROR_SUCCESS ? std::optional(std::move(bytes)) : std::nullopt;
}

struct CServiceAccount
{
    const wchar_t* Name;
    WELL_KNOWN_SID_TYPE Sid;
};
// COM takes these names, which the system's own look-up does not know everywhere.
constexpr CServiceAccount kServiceAccounts[] = {{L"nt authority\\localservice", WinLocalServiceSid},
                                                {L"nt authority\\networkservice", WinNetworkServiceSid},
                                                {L"nt authority\\system", WinLocalSystemSid},
                                                {L"interactive user", WinInteractiveSid}};

// Empty where there is no such account; absent where that could not be found out.
std::optional<std::vector<BYTE>> SidOf(const std::wstring& account)
{
    std::vector<BYTE> sid(SECURITY_MAX_SID_SIZE);
    DWORD size = SECURITY_MAX_SID_SIZE;
    for (const CServiceAccount& known : kServiceAccounts)
        if (_wcsicmp(known.Name, account.c_str()) == 0)
            return CreateWellKnownSid(known.Sid, nullptr, sid.data(), &size) ? std::optional(sid)
                                                                             : std::nullopt;
    // Of this computer, as COM reads it.
    const std::wstring name = account.starts_with(L".\\") ? account.substr(2) : account;
    wchar_t domain[256] = {};
    DWORD domainSize = 256;
    SID_NAME_USE use = SidTypeUnknown;
    if (LookupAccountNameW(nullptr, name.c_str(), sid.data(), &size, domain, &domainSize, &use))
        return sid;
    return GetLastError() == ERROR_NONE_MAPPED ? std::optional(std::vector<BYTE>()) : std::nullopt;
}

Right MayCallerWrite(const std::wstring& folder)
{
    // Asks for the right and uses it for nothing.
    const CFileHandle opened(CreateFileW(folder.c_str(), FILE_ADD_FILE,
                                         FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                                         OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS, nullptr));
    if (opened)
        return Right::Yes;
    return GetLastError() == ERROR_ACCESS_DENIED ? Right::No : Right::NotTold;
}

class CThisMachine final : public IMachine
{
  public:
    std::optional<std::wstring> Text(const std::wstring& key, const wchar_t* name) const override
    {
        const auto bytes = ReadValue(key, name, RRF_RT_REG_SZ);
        return bytes ? std::optional<std::wstring>(reinterpret_cast<const wchar_t*>(bytes->data()))
                     : std::nullopt;
    }
    std::optional<DWORD> Number(const std::wstring& key, const wchar_t* name) const override
    {
        const auto bytes = ReadValue(key, name, RRF_RT_REG_DWORD);
        return bytes ? std::optional<DWORD>(*reinterpret_cast<const DWORD*>(bytes->data())) : std::nullopt;
    }
    std::optional<std::vector<BYTE>> Bytes(const std::wstring& key, const wchar_t* name) const override
    {
        return ReadValue(key, name, RRF_RT_REG_BINARY);
    }
    FileState Look(const std::wstring& path) const override
    {
        if (GetFileAttributesW(path.c_str()) != INVALID_FILE_ATTRIBUTES)
            return FileState::There;
        return GetLastError() == ERROR_ACCESS_DENIED ? FileState::NotTold : FileState::Missing;
    }
    std::wstring VersionOf(const std::wstring& path) const override
    {
        DWORD unused = 0;
        std::vector<BYTE> block(GetFileVersionInfoSizeW(path.c_str(), &unused));
        void* fixed = nullptr;
        UINT size = 0;
        if (block.empty() ||
            !GetFileVersionInfoW(path.c_str(), 0, static_cast<DWORD>(block.size()), block.data()) ||
            !VerQueryValueW(block.data(), L"\\", &fixed, &size) || size < sizeof(VS_FIXEDFILEINFO))
            return {};
        const auto& info = *static_cast<const VS_FIXEDFILEINFO*>(fixed);
        wchar_t text[48] = {};
        _snwprintf(text, 47, L"%u.%u.%u", HIWORD(info.dwFileVersionMS), LOWORD(info.dwFileVersionMS),
                   HIWORD(info.dwFileVersionLS));
        return text;
    }
    Right Exists(const std::wstring& account) const override
    {
        const auto sid = SidOf(account);
        return !sid ? Right::NotTold : sid->empty() ? Right::No : Right::Yes;
    }
    Right MayWrite(const std::wstring& folder, const std::wstring& account) const override
    {
        if (account.empty())
            return MayCallerWrite(folder);
        auto sid = SidOf(account);
        COwned<DescriptorTraits> descriptor;
        PACL list = nullptr;
        if (!sid || sid->empty() ||
            GetNamedSecurityInfoW(folder.c_str(), SE_FILE_OBJECT, DACL_SECURITY_INFORMATION, nullptr, nullptr,
                                  &list, nullptr, descriptor.Put()) != ERROR_SUCCESS)
            return Right::NotTold;
        if (!list)
            return Right::Yes;
        TRUSTEE_W trustee = {};
        BuildTrusteeWithSidW(&trustee, sid->data());
        ACCESS_MASK rights = 0;
        if (GetEffectiveRightsFromAclW(list, &trustee, &rights) != ERROR_SUCCESS)
            return Right::NotTold;
        return (rights & FILE_ADD_FILE) != 0 ? Right::Yes : Right::No;
    }
    std::vector<CInterface> Interfaces() const override
    {
        COwned<InterfaceTableTraits> table;
        std::vector<CInterface> interfaces;
        if (GetIfTable2(table.Put()) != NO_ERROR)
            return interfaces;
        for (ULONG i = 0; i < table.Get()->NumEntries; ++i)
        {
            const MIB_IF_ROW2& row = table.Get()->Table[i];
            wchar_t key[39] = {};
            StringFromGUID2(row.InterfaceGuid, key, 39);
            // Windows lists each filter of its own under an adapter as an interface.
            if (!row.InterfaceAndOperStatusFlags.FilterInterface)
                interfaces.push_back({AdapterNameKey(key), row.Alias, WhyNotWired(row)});
        }
        return interfaces;
    }
    std::wstring StringIn(const std::wstring& library, UINT id) const override
    {
        const CModule module(LoadLibraryExW(library.c_str(), nullptr, LOAD_LIBRARY_AS_DATAFILE));
        // Without a buffer it gives the place of the string, which ends with the library.
        const wchar_t* text = nullptr;
        const int length = module ? LoadStringW(module.Get(), id, reinterpret_cast<wchar_t*>(&text), 0) : 0;
        return std::wstring(text ? text : L"", static_cast<size_t>(length));
    }
    CAgentAnswer Agent() const override { return AskAgent(); }
};
} // namespace

const IMachine& ThisMachine()
{
    static const CThisMachine machine;
    return machine;
}
} // namespace zebdiag
