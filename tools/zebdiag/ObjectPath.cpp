#include "tools/zebdiag/ObjectPath.h"

namespace zebdiag
{
namespace
{
std::wstring Quoted(const std::wstring& value)
{
    std::wstring quoted = L"\"";
    for (const wchar_t c : value)
    {
        if (c == L'"' || c == L'\\')
            quoted += L'\\';
        quoted += c;
    }
    return quoted + L"\"";
}
} // namespace

std::wstring TestPath(const std::wstring& testKey)
{
    return L"Tolva_DiagTest.Name=" + Quoted(testKey);
}

std::wstring SettingPath(const std::wstring& testKey)
{
    return L"Tolva_DiagSetting.SettingID=" + Quoted(testKey);
}

std::wstring ResultPath(const std::wstring& testKey, const std::wstring& adapterKey)
{
    return L"Tolva_DiagResult.DiagnosticCreationClassName=\"Tolva_DiagTest\",DiagnosticName=" +
           Quoted(testKey) + L",ExecutionID=" + Quoted(adapterKey);
}

std::wstring AdapterPath(const std::wstring& adapterKey, const std::wstring& computer)
{
    return L"Tolva_EthernetAdapter.DeviceID=" + Quoted(adapterKey) +
           L",CreationClassName=\"Tolva_EthernetAdapter\",SystemCreationClassName=\"Win32_ComputerSystem\","
           L"SystemName=" +
           Quoted(computer);
}
} // namespace zebdiag
