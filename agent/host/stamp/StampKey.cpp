#include "agent/host/stamp/StampKey.h"

#include "Common/src/com/Owned.h"
#include "agent/AgentCodes.h"

#include <array>

namespace
{
constexpr size_t kLargestFile = 4096;

int DigitOf(char c) noexcept
{
    constexpr std::string_view kDigits = "0123456789abcdef";
    const size_t digit = kDigits.find(c >= 'A' && c <= 'F' ? static_cast<char>(c - 'A' + 'a') : c);
    return digit == kDigits.npos ? -1 : static_cast<int>(digit);
}
} // namespace

bool ParseStampKey(std::string_view text, std::vector<BYTE>& key)
{
    key.clear();
    int high = -1;
    for (const char c : text)
    {
        if (c == ' ' || c == '\t' || c == '\r' || c == '\n')
            continue;
        const int digit = DigitOf(c);
        if (digit < 0)
            return false;
        if (high >= 0)
            key.push_back(static_cast<BYTE>(high << 4 | digit));
        high = high < 0 ? digit : -1;
    }
    return high < 0 && key.size() >= kStampKeySmallest && key.size() <= kStampKeyLargest;
}

HRESULT ReadStampKey(const std::wstring& path, std::vector<BYTE>& key)
{
    const CFileHandle file(
        CreateFileW(path.c_str(), GENERIC_READ, FILE_SHARE_READ, nullptr, OPEN_EXISTING, 0, nullptr));
    std::array<char, kLargestFile + 1> text = {};
    DWORD size = 0;
    if (!file || !ReadFile(file.Get(), text.data(), static_cast<DWORD>(text.size()), &size, nullptr))
        return vorl::setting::KeyUnreadable;
    const bool good = size <= kLargestFile && ParseStampKey({text.data(), size}, key);
    SecureZeroMemory(text.data(), text.size());
    return good ? S_OK : vorl::setting::BadKey;
}
