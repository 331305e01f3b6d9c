#include "tools/zebdiag/doctor/Examination.h"

#include "tools/zebdiag/doctor/Places.h"
#include "tools/zebdiag/languages/Said.h"

#include <algorithm>
#include <cwctype>

namespace zebdiag
{
const wchar_t* const kOwnVersion = L"" ZEB_VERSION;

CFinding Good(std::wstring text)
{
    return {PointState::Good, std::move(text), {}};
}

CFinding Wrong(std::wstring text, std::wstring nextStep)
{
    return {PointState::Wrong, std::move(text), std::move(nextStep)};
}

CFinding Wrong(const CFailure& failure)
{
    std::wstring text = failure.Cause;
    if (!failure.Detail.empty())
        text += L" " + Said(L"The provider says: {1}", {failure.Detail});
    if (failure.Status != S_OK)
        text += L" " + Said(L"(Status {1}.)", {StatusText(failure.Status)});
    return Wrong(std::move(text), failure.NextStep);
}

CFinding Unknown(std::wstring text, std::wstring nextStep)
{
    return {PointState::Unknown, std::move(text), std::move(nextStep)};
}

CFinding AfterFault(std::wstring text)
{
    return Unknown(std::move(text), Said(L"Mend what is wrong above, then run this again."));
}

CFinding OnlyThere(const CExamination& exam)
{
    return Unknown(Said(L"This can be seen only on {1} itself.", {exam.Target.ComputerInWords()}),
                   Said(L"Run \"zebdiag doctor\" there."));
}

std::wstring Joined(const std::vector<std::wstring>& parts)
{
    std::wstring text;
    for (const std::wstring& part : parts)
        text += (text.empty() ? L"" : L", ") + part;
    return text;
}

std::wstring ClassKey(const wchar_t* id)
{
    return std::wstring(L"SOFTWARE\\Classes\\CLSID\\") + id;
}

std::wstring AppIdKey(const wchar_t* id)
{
    return std::wstring(L"SOFTWARE\\Classes\\AppID\\") + id;
}

std::wstring DataFolder(const IMachine& machine)
{
    return machine.Text(kZebDiagKey, L"InstalledDir").value_or(L"C:\\Program Files\\Veltrane\\ZEB\\");
}

std::wstring ProgramOf(const std::wstring& commandLine)
{
    if (commandLine.starts_with(L'"'))
        return commandLine.substr(1, commandLine.find(L'"', 1) - 1);
    std::wstring lower = commandLine;
    std::ranges::transform(lower, lower.begin(), [](wchar_t c) { return static_cast<wchar_t>(towlower(c)); });
    const size_t end = lower.find(L".exe");
    return end == std::wstring::npos ? commandLine : commandLine.substr(0, end + 4);
}

std::wstring TextLibrary(unsigned long locale)
{
    wchar_t name[16] = {};
    GetLocaleInfoW(locale, LOCALE_SABBREVLANGNAME, name, 16);
    return name + std::wstring(L"_8023.dll");
}

std::wstring FolderOf(const std::wstring& path)
{
    return path.substr(0, path.find_last_of(L"\\/") + 1);
}
} // namespace zebdiag
