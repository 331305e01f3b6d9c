// What the provider delivers.
#include "tools/zebdiag/Inventory.h"
#include "tools/zebdiag/LocaleName.h"
#include "tools/zebdiag/Words.h"
#include "tools/zebdiag/doctor/Checks.h"
#include "tools/zebdiag/doctor/Places.h"
#include "tools/zebdiag/doctor/StartFault.h"
#include "tools/zebdiag/languages/Said.h"

#include <algorithm>

namespace zebdiag
{
namespace
{
constexpr LONG kPatience = 60000; // milliseconds
constexpr wchar_t kNoText[] = L"No string found";

std::wstring Seconds(unsigned long long milliseconds)
{
    return Said(L"{1}.{2} s",
                {std::to_wstring(milliseconds / 1000), std::to_wstring(milliseconds % 1000 / 100)});
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

// True where a later point names the fault, and none before it does.
bool LiesWithAdapters(const CExamination& exam)
{
    return exam.Inventory ? exam.Inventory->TestCount() == 0 : !exam.Blocked && HasNoWiredAdapter(exam);
}

CFinding SeeAdapters(std::wstring text)
{
    return Unknown(std::move(text), Said(L"See under \"Wired adapters\"."));
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
        return L" " + Said(L"Why others are left out can be seen only on {1} itself.",
                           {exam.Target.ComputerInWords()});
    std::vector<std::wstring> others;
    for (const CInterface& one : exam.Machine->Interfaces())
        if (!exam.Inventory || !IsServed(*exam.Inventory, one))
            others.push_back(one.Name + L" (" +
                             (one.LeftOut.empty() ? Said(L"the adapter agent does not offer it")
                                                  : Said(one.LeftOut.c_str())) +
                             L")");
    return others.empty() ? L"" : L" " + Said(L"Left out: {1}.", {Joined(others)});
}

std::wstring LanguageInWords(LCID locale)
{
    wchar_t name[128] = {};
    GetLocaleInfoW(locale, SaidInEnglish() ? LOCALE_SENGLISHLANGUAGENAME : LOCALE_SNATIVELANGUAGENAME, name,
                   128);
    return name;
}
} // namespace

CFinding CheckAnswer(CExamination& exam)
{
    if (!exam.SchemaGood)
        return AfterFault(Said(L"Without its classes the provider cannot be asked."));
    const unsigned long long begin = exam.Now();
    try
    {
        exam.Inventory.emplace(LoadInventory(*exam.Session, exam.Names(*exam.Session), kPatience));
    }
    catch (const CFailure& failure)
    {
        if (exam.Blocked)
            return AfterFault(Said(L"It does not answer, as is to be expected.") + L" " + failure.Cause);
        if (LiesWithAdapters(exam))
            return SeeAdapters(Said(L"It does not answer.") + L" " + failure.Cause);
        return Wrong(exam.Machine ? WithReason(failure, exam.Target, *exam.Machine) : failure);
    }
    return Good(
        Said(L"It named {1} within {2}.", {Tests(exam.Inventory->TestCount()), Seconds(exam.Now() - begin)}));
}

CFinding CheckTexts(CExamination& exam)
{
    if (!exam.Inventory || exam.Inventory->TestCount() == 0)
    {
        const std::wstring text = Said(L"There is no test whose texts could be read.");
        return LiesWithAdapters(exam) ? SeeAdapters(text) : AfterFault(text);
    }
    for (const CAdapter& adapter : exam.Inventory->Adapters)
        for (const CTest& test : adapter.Tests)
            for (const std::wstring& text : {test.Caption, test.Description})
                if (text.empty() || text.starts_with(kNoText))
                    return Wrong(
                        text.empty() ? Said(L"Test {1} lacks a text.", {test.Key})
                                     : Said(L"Test {1} lacks a text: {2}", {test.Key, text}),
                        Said(
                            L"Put the text libraries (ENU_NWR.dll, ENU_8023.dll, ENUDiag.dll) into the provider's folder, and look at the values ResourcePath."));
    const LCID locale = NumberOfLocale(CallerLocale(exam.Target.Locale));
    const std::wstring language = LanguageInWords(locale);
    if (!exam.Machine || exam.Server.empty())
        return Good(Said(L"All tests have texts; {1} was asked for.", {language}));
    return exam.Machine->Look(FolderOf(exam.Server) + TextLibrary(locale)) == FileState::There
               ? Good(Said(L"All tests have texts, in {1}.", {language}))
               : Good(Said(L"All tests have texts. There are none in {1}, so another language stands in.",
                           {language}));
}

CFinding CheckAdapters(CExamination& exam)
{
    if (exam.Inventory && !exam.Inventory->Adapters.empty())
    {
        std::vector<std::wstring> names;
        for (const CAdapter& adapter : exam.Inventory->Adapters)
            names.push_back(adapter.Name);
        return Good(Said(L"With tests: {1}.", {Joined(names)}) + LeftOut(exam));
    }
    if (HasNoWiredAdapter(exam))
        return Wrong(
            Said(L"This computer has no wired adapter, and without one the provider does not start.") +
                LeftOut(exam),
            Said(L"Connect one, or see in the device manager why an adapter that is there does not show."));
    if (exam.Inventory)
        return Wrong(Said(L"The provider has tests for no adapter.") + LeftOut(exam),
                     Said(L"See in the device manager whether the wired adapters work."));
    return AfterFault(Said(L"The provider cannot be asked which have tests."));
}
} // namespace zebdiag
