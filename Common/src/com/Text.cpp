#include "Common/src/com/Text.h"

#include <windows.h>

namespace
{
std::wstring FromCodePage(UINT codePage, std::string_view text)
{
    const int length = static_cast<int>(text.size());
    if (length == 0)
        return {};
    const int size = MultiByteToWideChar(codePage, 0, text.data(), length, nullptr, 0);
    std::wstring wide(static_cast<size_t>(size), L'\0');
    MultiByteToWideChar(codePage, 0, text.data(), length, wide.data(), size);
    return wide;
}

wchar_t FoldAscii(wchar_t c) noexcept
{
    return c >= L'A' && c <= L'Z' ? static_cast<wchar_t>(c - L'A' + L'a') : c;
}
} // namespace

std::string NarrowText(std::wstring_view text, unsigned codePage)
{
    const int length = static_cast<int>(text.size());
    if (length == 0)
        return {};
    const int size = WideCharToMultiByte(codePage, 0, text.data(), length, nullptr, 0, nullptr, nullptr);
    std::string narrow(static_cast<size_t>(size), '\0');
    WideCharToMultiByte(codePage, 0, text.data(), length, narrow.data(), size, nullptr, nullptr);
    return narrow;
}

std::string NarrowText(std::wstring_view text)
{
    return NarrowText(text, CP_ACP);
}

std::wstring WidenText(std::string_view text)
{
    return FromCodePage(CP_ACP, text);
}

std::string Utf8Text(std::wstring_view text)
{
    return NarrowText(text, CP_UTF8);
}

std::wstring WidenUtf8(std::string_view text)
{
    return FromCodePage(CP_UTF8, text);
}

std::wstring UpperCaseAnsi(std::wstring_view text)
{
    std::string narrow = NarrowText(text);
    CharUpperBuffA(narrow.data(), static_cast<DWORD>(narrow.size()));
    return WidenText(narrow);
}

bool EqualNoCaseAscii(std::wstring_view a, std::wstring_view b) noexcept
{
    if (a.size() != b.size())
        return false;
    for (size_t i = 0; i < a.size(); ++i)
        if (FoldAscii(a[i]) != FoldAscii(b[i]))
            return false;
    return true;
}
