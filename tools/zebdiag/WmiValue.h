// Properties of management objects as plain values. Absent, null and wrongly typed properties all read as
// "no value": a client shows what it gets and never fails over one property.
#pragma once

#include <optional>
#include <string>
#include <vector>
#include <wbemcli.h>

namespace zebdiag
{
std::optional<std::wstring> ReadText(IWbemClassObject* object, const wchar_t* name);
std::optional<long> ReadNumber(IWbemClassObject* object, const wchar_t* name);
std::optional<bool> ReadFlag(IWbemClassObject* object, const wchar_t* name);
std::vector<std::wstring> ReadTexts(IWbemClassObject* object, const wchar_t* name);
std::vector<long> ReadNumbers(IWbemClassObject* object, const wchar_t* name);
} // namespace zebdiag
