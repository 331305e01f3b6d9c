// What the provider delivers.
#include "tools/zebdiag/Inventory.h"
#include "tools/zebdiag/LocaleName.h"
#include "tools/zebdiag/Words.h"
#include "tools/zebdiag/doctor/Checks.h"
#include "tools/zebdiag/doctor/Places.h"
#include "tools/zebdiag/doctor/StartFault.h"

#include <algorithm>

namespace zebdiag
{
namespace
{
constexpr LONG kPatience = 60000; // milliseconds
constexpr wchar_t kNoText[] = L"No string found";

std::wstring Seconds(unsigned long long milliseconds)
{
    wchar_t text[32] = {};
    _snwprintf(text, 31, L"%llu.%llu s", milliseconds / 1000, milliseconds % 1000 / 100);
    return text;
}

// True where the system is known to have no wired adapter.
bool HasNoWiredAdapter(const CExamination& exam)
{
    if (!exam.Machine)
        return false;
    const std::vector<CInterface> all = exam.Machine->Interfaces();
    return !all.empty() &&
           std::ranges::none_of(all, [](const CInterface& one) { return one.LeftOut.empty(); });
}

bool IsServed(const CInventory& inventory, const CInterface& one)
{
    return std::ranges::any_of(inventory.Adapters, [&](const CAdapter& adapter)
                               { return AdapterNameKey(adapter.Key) == one.Key; });
}

// The interfaces that have no tests, each with the reason.
std::wstring LeftOut(const CExamination& exam)
{
    if (!exam.Machine)
        return L" Why others are left out can be seen only on " + exam.Target.ComputerInWords() + L" itself.";
    std::vector<std::wstring> others;
    for (const CInterface& one : exam.Machine->Interfaces())
        if (!exam.Inventory || !IsServed(*exam.Inventory, one))
            others.push_back(one.Name + L" (" +
                             (one.LeftOut.empty() ? L"the adapter agent does not offer it" : one.LeftOut) +
                             L")");
    return others.empty() ? L"" : L" Left out: " + Joined(others) + L".";
}

std::wstring LanguageInWords(LCID locale)
{
    wchar_t name[128] = {};
    GetLocaleInfoW(locale, LOCALE_SENGLISHLANGUAGENAME, name, 128);
    return name;
}
} // namespace

CFinding CheckAnswer(CExamination& exam)
{
    if (!exam.SchemaGood)
        return AfterFault(L"Without its classes the provider cannot be asked.");
    const unsigned long long begin = exam.Now();
    try
    {
        exam.Inventory.emplace(LoadInventory(*exam.Session, exam.Names(*exam.Session), kPatience));
    }
    catch (const CFailure& failure)
    {
        if (exam.Blocked)
            return AfterFault(L"It does not answer, as is to be expected. " + failure.Cause);
        if (HasNoWiredAdapter(exam))
            return Unknown(L"It does not answer. " + failure.Cause, L"See under \"Wired adapters\".");
        return Wrong(exam.Machine ? WithReason(failure, exam.Target, *exam.Machine) : failure);
    }
    return Good(L"It named " + Count(exam.Inventory->TestCount(), L"test") + L" within " +
                Seconds(exam.Now() - begin) + L".");
}

CFinding CheckTexts(CExamination& exam)
{
    if (!exam.Inventory || exam.Inventory->TestCount() == 0)
        return AfterFault(L"There is no test whose texts could be read.");
    for (const CAdapter& adapter : exam.Inventory->Adapters)
        for (const CTest& test : adapter.Tests)
            for (const std::wstring& text : {test.Caption, test.Description})
                if (text.empty() || text.starts_with(kNoText))
                    return Wrong(L"Test " + test.Key + L" lacks a text" +
                                     (text.empty() ? L"." : L": " + text),
                                 L"Put the text libraries (ENU_NWR.dll, ENU_8023.dll, ENUDiag.dll) into the "
                                 L"provider's folder, and look at the values ResourcePath.");
    const LCID locale = NumberOfLocale(CallerLocale(exam.Target.Locale));
    const std::wstring language = LanguageInWords(locale);
    if (!exam.Machine || exam.Server.empty())
        return Good(L"All tests have texts; " + language + L" was asked for.");
    return exam.Machine->Look(FolderOf(exam.Server) + TextLibrary(locale)) == FileState::There
               ? Good(L"All tests have texts, in " + language + L".")
               : Good(L"All tests have texts. There are none in " + language +
                      L", so another language stands in.");
}

CFinding CheckAdapters(CExamination& exam)
{
    if (exam.Inventory && !exam.Inventory->Adapters.empty())
    {
        std::vector<std::wstring> names;
        for (const CAdapter& adapter : exam.Inventory->Adapters)
            names.push_back(adapter.Name);
        return Good(L"With tests: " + Joined(names) + L"." + LeftOut(exam));
    }
    if (HasNoWiredAdapter(exam))
        return Wrong(
            L"This computer has no wired adapter, and without one the provider does not start." +
                LeftOut(exam),
            L"Connect one, or see in the device manager why an adapter that is there does not show.");
    if (exam.Inventory)
        return Wrong(L"The provider has tests for no adapter." + LeftOut(exam),
                     L"See in the device manager whether the wired adapters work.");
    return AfterFault(L"The provider cannot be asked which have tests.");
}
} // namespace zebdiag
