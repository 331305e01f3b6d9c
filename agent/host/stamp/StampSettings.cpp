#include "agent/host/stamp/StampSettings.h"

#include "agent/AgentCodes.h"

#include <algorithm>
#include <optional>

namespace
{
constexpr wchar_t kKey[] = L"SOFTWARE\\Veltrane\\Halvern\\ZEB\\ZebDiag";
constexpr DWORD kLargestPacket = 1452; // passes every Ethernet whole, over IPv6 as well

struct CNumberValue
{
    const wchar_t* Name;
    DWORD CStampSettings::*Member;
    DWORD Smallest;
    DWORD Largest;
    HRESULT Otherwise;
};
constexpr CNumberValue kNumbers[] = {
    {L"PeerPort", &CStampSettings::PeerPort, 1, 65535, vorl::setting::BadPort},
    {L"ResponderPort", &CStampSettings::ResponderPort, 1, 65535, vorl::setting::BadPort},
    {L"PacketsPerSecond", &CStampSettings::PacketsPerSecond, 1, 1000, vorl::setting::BadRate},
    {L"Dscp", &CStampSettings::Dscp, 0, 63, vorl::setting::BadDscp},
    {L"WaitForSender", &CStampSettings::WaitForSender, 0, 3600, vorl::setting::BadWait},
};

std::optional<DWORD> ReadNumberValue(const wchar_t* name) noexcept
{
    DWORD value = 0;
    DWORD size = sizeof value;
    const LSTATUS status =
        RegGetValueW(HKEY_LOCAL_MACHINE, kKey, name, RRF_RT_REG_DWORD, nullptr, &value, &size);
    return status == ERROR_SUCCESS ? std::optional(value) : std::nullopt;
}

std::wstring ReadTextValue(const wchar_t* name)
{
    wchar_t text[1024] = {};
    DWORD size = sizeof text;
    const LSTATUS status = RegGetValueW(HKEY_LOCAL_MACHINE, kKey, name, RRF_RT_REG_SZ, nullptr, text, &size);
    return status == ERROR_SUCCESS ? text : L"";
}

HRESULT ReadMode(CStampSettings& settings)
{
    settings.KeyFile = ReadTextValue(L"KeyFile");
    const bool wanted = ReadNumberValue(L"Authenticate").value_or(!settings.KeyFile.empty()) != 0;
    settings.Mode = wanted ? StampMode::Authenticated : StampMode::Open;
    return wanted && settings.KeyFile.empty() ? vorl::setting::NoKeyFile : S_OK;
}
} // namespace

HRESULT ReadStampSettings(CStampSettings& settings)
{
    settings = {};
    settings.Peer = ReadTextValue(L"Peer");
    for (const CNumberValue& row : kNumbers)
    {
        DWORD& member = settings.*row.Member;
        member = ReadNumberValue(row.Name).value_or(member);
        if (member < row.Smallest || member > row.Largest)
            return row.Otherwise;
    }
    settings.Loss.LimitPercent = ReadNumberValue(L"LossLimit").value_or(settings.Loss.LimitPercent);
    if (settings.Loss.LimitPercent > 100)
        return vorl::setting::BadLossLimit;
    // The provider ends a quick run with so many.
    settings.Loss.EnoughPackets =
        std::max<DWORD>(ReadNumberValue(L"MaxPktsRcvd").value_or(settings.Loss.EnoughPackets), 1);
    const HRESULT hr = ReadMode(settings);
    if (FAILED(hr))
        return hr;
    const auto smallest = static_cast<DWORD>(StampSize(settings.Mode));
    settings.PacketSize = ReadNumberValue(L"PacketSize").value_or(smallest);
    return settings.PacketSize < smallest || settings.PacketSize > kLargestPacket ? vorl::setting::BadSize
                                                                                  : S_OK;
}
