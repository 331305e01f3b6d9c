#include "tools/zebdiag/report/Html.h"

#include <algorithm>

namespace zebdiag
{
namespace
{
constexpr wchar_t kReplacement = 0xFFFD;

struct CEscapeRow
{
    wchar_t Character;
    const wchar_t* Written;
};
constexpr CEscapeRow kEscapes[] = {
    {L'&', L"&amp;"}, {L'<', L"&lt;"}, {L'>', L"&gt;"}, {L'"', L"&quot;"}, {L'\'', L"&#39;"}};

bool IsForbidden(wchar_t c)
{
    const bool space = c == L'\n' || c == L'\t';
    return (c < L' ' && !space) || (c >= 0x7F && c < 0xA0) || c >= 0xFFFE || (c >= 0xFDD0 && c <= 0xFDEF);
}

// Lines end in "\n" alone on a page; they may come with "\r\n" or "\r".
std::wstring WithPlainLineEnds(std::wstring_view text)
{
    std::wstring plain;
    for (size_t i = 0; i < text.size(); ++i)
        if (text[i] != L'\r')
            plain += text[i];
        else if (!text.substr(i + 1).starts_with(L'\n'))
            plain += L'\n';
    return plain;
}
} // namespace

std::wstring Escaped(std::wstring_view text)
{
    std::wstring escaped;
    for (const wchar_t c : WithPlainLineEnds(text))
    {
        const auto row = std::ranges::find(kEscapes, c, &CEscapeRow::Character);
        if (row != std::end(kEscapes))
            escaped += row->Written;
        else
            escaped += IsForbidden(c) ? kReplacement : c;
    }
    return escaped;
}

CHtml::CElement CHtml::Element(const wchar_t* tag, Attributes attributes)
{
    Open(tag, attributes);
    return {*this, tag};
}

void CHtml::Add(const wchar_t* tag, std::wstring_view text, Attributes attributes)
{
    const CElement element = Element(tag, attributes);
    AddText(text);
}

void CHtml::AddVoid(const wchar_t* tag, Attributes attributes)
{
    Open(tag, attributes);
    m_page += L"\n";
}

void CHtml::AddText(std::wstring_view text)
{
    m_page += Escaped(text);
}

void CHtml::Open(const wchar_t* tag, Attributes attributes)
{
    m_page += L"<" + std::wstring(tag);
    for (const auto& [name, value] : attributes)
        m_page += L" " + std::wstring(name) + L"=\"" + Escaped(value) + L"\"";
    m_page += L">";
}

void CHtml::Close(const wchar_t* tag)
{
    m_page += L"</" + std::wstring(tag) + L">\n";
}
} // namespace zebdiag
