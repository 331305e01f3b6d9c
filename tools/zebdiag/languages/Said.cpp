#include "tools/zebdiag/languages/Said.h"

#include "tools/zebdiag/Filled.h"

#include <algorithm>
#include <string_view>
#include <windows.h>

namespace zebdiag
{
namespace
{
const CLanguage* spoken = nullptr; // null: English
} // namespace

void SpeakLanguageOf(unsigned long locale)
{
    wchar_t name[16] = {};
    GetLocaleInfoW(locale, LOCALE_SISO639LANGNAME, name, 16);
    const auto languages = Languages();
    const auto found = std::ranges::find_if(languages, [&](const CLanguage& one)
                                            { return std::wstring_view(one.Name) == name; });
    spoken = found == languages.end() ? nullptr : &*found;
}

bool SaidInEnglish() noexcept
{
    return !spoken;
}

std::wstring Said(const wchar_t* english)
{
    if (!spoken)
        return english;
    const auto found = std::ranges::find_if(spoken->Texts, [&](const CTranslation& one)
                                            { return std::wstring_view(one.English) == english; });
    return found == spoken->Texts.end() ? english : found->Text;
}

std::wstring Said(const wchar_t* english, std::initializer_list<std::wstring> values)
{
    return Filled(Said(english), values);
}
} // namespace zebdiag
