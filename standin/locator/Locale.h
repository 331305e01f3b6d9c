// Locales as clients name them: "MS_" and a language identifier in hexadecimal.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <wbemcli.h>
#include <windows.h>

namespace standin
{
// "MS_409" gives 0x409; nothing where the text is of another form.
std::optional<LCID> ParseLocale(std::wstring_view text) noexcept;
// The other way.
std::wstring LocaleText(LCID locale);

// The language in which a client wants the texts of amended qualifiers: that of its context's "LocaleID", or the
// machine's. 0 where its flags do not ask for them.
LCID AmendedLocale(long flags, IWbemContext* context);
} // namespace standin
