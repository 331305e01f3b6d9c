#include "tools/zebdiag/SenderValues.h"

#include "Common/src/com/Owned.h"
#include "tools/zebdiag/doctor/Places.h"
#include "tools/zebdiag/languages/Said.h"

#include <algorithm>

namespace zebdiag
{
namespace
{
struct CNumberRow
{
    const wchar_t* Name;
    std::optional<unsigned> CSenderOptions::*Member;
};
constexpr CNumberRow kSenderNumbers[] = {{L"PeerPort", &CSenderOptions::Port},
                                         {L"PacketsPerSecond", &CSenderOptions::Rate},
                                         {L"PacketSize", &CSenderOptions::Size},
                                         {L"Dscp", &CSenderOptions::Dscp}};

struct CNamedValue
{
    const wchar_t* Name;
    CRegistryValue Value;
    std::wstring InWords;
};

CRegistryValue ValueOf(DWORD type, const void* data, size_t size)
{
    const auto* bytes = static_cast<const BYTE*>(data);
    return {type, std::vector<BYTE>(bytes, bytes + size)};
}

std::vector<CNamedValue> ValuesOf(const CSenderOptions& options)
{
    std::vector<CNamedValue> values;
    values.push_back({L"Peer",
                      ValueOf(REG_SZ, options.Peer.c_str(), (options.Peer.size() + 1) * sizeof(wchar_t)),
                      L"Peer (REG_SZ) = " + options.Peer});
    for (const CNumberRow& row : kSenderNumbers)
    {
        if (!(options.*row.Member))
            continue;
        const DWORD number = *(options.*row.Member);
        values.push_back({row.Name, ValueOf(REG_DWORD, &number, sizeof number),
                          std::wstring(row.Name) + L" (REG_DWORD) = " + std::to_wstring(number)});
    }
    return values;
}

class CThisRegistry final : public IRegistryValues
{
  public:
    LSTATUS Read(const wchar_t* name, std::optional<CRegistryValue>& value) override
    {
        value.reset();
        CRegKey key;
        LSTATUS status = RegOpenKeyExW(HKEY_LOCAL_MACHINE, kZebDiagKey, 0, KEY_QUERY_VALUE, key.Put());
        CRegistryValue read;
        DWORD size = 256;
        if (status == ERROR_SUCCESS)
            do
            {
                read.Bytes.resize(size);
                status = RegQueryValueExW(key.Get(), name, nullptr, &read.Type, read.Bytes.data(), &size);
            } while (status == ERROR_MORE_DATA);
        if (status == ERROR_FILE_NOT_FOUND)
            return ERROR_SUCCESS;
        if (status != ERROR_SUCCESS)
            return status;
        read.Bytes.resize(size);
        value = std::move(read);
        return ERROR_SUCCESS;
    }

    LSTATUS Write(const wchar_t* name, const std::optional<CRegistryValue>& value) override
    {
        CRegKey key;
        const LSTATUS status = RegCreateKeyExW(HKEY_LOCAL_MACHINE, kZebDiagKey, 0, nullptr, 0, KEY_SET_VALUE,
                                               nullptr, key.Put(), nullptr);
        if (status != ERROR_SUCCESS)
            return status;
        return value ? RegSetValueExW(key.Get(), name, 0, value->Type, value->Bytes.data(),
                                      static_cast<DWORD>(value->Bytes.size()))
                     : RegDeleteValueW(key.Get(), name);
    }
};
} // namespace

IRegistryValues& ThisRegistry()
{
    static CThisRegistry registry;
    return registry;
}

CFailure CannotSet(const CSenderOptions& options, std::wstring cause, HRESULT status)
{
    std::wstring step =
        Said(L"An administrator of that computer can set these values under HKEY_LOCAL_MACHINE\\{1}:",
             {kZebDiagKey}) +
        L"\n";
    for (const CNamedValue& value : ValuesOf(options))
        step += L"  " + value.InWords + L"\n";
    return CFailure(ExitCode::CouldNotRun, std::move(cause),
                    step + Said(L"Then run the test without --peer and the options that go with it."),
                    status);
}

void CSenderValues::Set(const CSenderOptions& options)
{
    for (CNamedValue& value : ValuesOf(options))
    {
        CChange change = {value.Name, std::nullopt, std::move(value.Value)};
        LSTATUS status = m_registry.Read(change.Name, change.Before);
        if (status == ERROR_SUCCESS && change.Before == change.Given)
            continue;
        if (status == ERROR_SUCCESS)
        {
            m_changes.push_back(std::move(change));
            status = m_registry.Write(m_changes.back().Name, m_changes.back().Given);
            if (status == ERROR_SUCCESS)
                continue;
            m_changes.pop_back();
        }
        Restore();
        throw CannotSet(options,
                        status == ERROR_ACCESS_DENIED
                            ? Said(L"The peer was not set: on this computer only administrators may do that.")
                            : Said(L"The peer was not set: the registry of this computer does not take it."),
                        HRESULT_FROM_WIN32(status));
    }
}

PutBack CSenderValues::RestoreOne(const CChange& change) noexcept
{
    try
    {
        std::optional<CRegistryValue> now;
        if (m_registry.Read(change.Name, now) != ERROR_SUCCESS)
            return PutBack::Failed;
        if (now != change.Given)
            return PutBack::NotAll;
        return m_registry.Write(change.Name, change.Before) == ERROR_SUCCESS ? PutBack::All : PutBack::Failed;
    }
    catch (...)
    {
        return PutBack::Failed;
    }
}

PutBack CSenderValues::Restore() noexcept
{
    PutBack worst = PutBack::All;
    for (; !m_changes.empty(); m_changes.pop_back())
        worst = std::max(worst, RestoreOne(m_changes.back()));
    return worst;
}
} // namespace zebdiag
