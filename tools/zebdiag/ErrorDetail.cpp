#include "tools/zebdiag/ErrorDetail.h"

#include "Common/src/com/ComPtr.h"
#include "tools/zebdiag/Failure.h"
#include "tools/zebdiag/WmiValue.h"
#include "tools/zebdiag/languages/Said.h"

#include <oleauto.h>

namespace zebdiag
{
namespace
{
void AddPart(std::wstring& parts, const wchar_t* label, const std::wstring& value)
{
    if (!value.empty())
        parts += (parts.empty() ? L"" : L", ") + Said(label, {value});
}

std::wstring InWords(IWbemClassObject* status)
{
    const auto text = [status](const wchar_t* name) { return ReadText(status, name).value_or(L""); };
    std::wstring place;
    AddPart(place, Marked(L"operation {1}"), text(L"Operation"));
    AddPart(place, Marked(L"on {1}"), text(L"ParameterInfo"));
    if (const auto code = ReadNumber(status, L"StatusCode"))
        AddPart(place, Marked(L"status {1}"), StatusText(static_cast<HRESULT>(*code)));
    if (const std::wstring file = text(L"File"); !file.empty())
        AddPart(place, Marked(L"at {1}"),
                file + L":" + std::to_wstring(ReadNumber(status, L"Line").value_or(0)));
    std::wstring words = text(L"Description");
    if (words.empty())
        words = place;
    else if (!place.empty())
        words += L" (" + place + L")";
    for (const std::wstring& reason : ReadTexts(status, L"RuleFailureReasons"))
        words += L"\n" + reason;
    return words;
}
} // namespace

void ClearErrorDetail() noexcept
{
    SetErrorInfo(0, nullptr);
}

std::wstring TakeErrorDetail()
{
    ComPtr<IErrorInfo> error;
    ComPtr<IWbemClassObject> status;
    if (GetErrorInfo(0, error.Put()) != S_OK || FAILED(error.As(status)))
        return {};
    return InWords(status.Get());
}
} // namespace zebdiag
