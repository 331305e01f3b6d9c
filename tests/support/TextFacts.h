// What a text and its translation have in common: what is put in when it is used, numbers, and names of
// settings, properties and classes. Told as text, so that a test shows the difference.
#pragma once

#include "Common/src/com/Text.h"

#include <regex>
#include <set>
#include <string>

inline std::string FactsOf(const std::wstring& text)
{
    // Of a printf format or of the system's own message formats. "1 % of" is neither.
    static const std::wregex kPlaceholder(
        LR"(%(?:[-+#0]*\d*(?:\.\d+)?(?:hh?|ll?|I64)?[A-Za-z%]|\d+(?:![^!]*!)?))");
    // Languages separate thousands each in their way.
    static const std::wregex kNumber(L"\\d+(?:[.,'\u00A0\u202F]\\d+)*");
    static const std::wregex kSeparator(L"[.,'\u00A0\u202F]");
    static const std::wregex kName(LR"(\w*[a-z0-9][A-Z_]\w*)");

    std::wstring facts;
    const auto all = [&](const std::wregex& what, const std::wstring& in, auto&& add)
    {
        for (std::wsregex_iterator at(in.begin(), in.end(), what), end; at != end; ++at)
            add(at->str());
    };
    // Their order matters: it is that of the arguments.
    all(kPlaceholder, text, [&](const std::wstring& found) { facts += found + L' '; });
    const std::wstring rest = std::regex_replace(text, kPlaceholder, L"");
    std::set<std::wstring> others;
    all(kNumber, rest,
        [&](const std::wstring& found) { others.insert(std::regex_replace(found, kSeparator, L"")); });
    all(kName, rest, [&](const std::wstring& found) { others.insert(found); });
    for (const std::wstring& found : others)
        facts += found + L' ';
    return Utf8Text(facts);
}
