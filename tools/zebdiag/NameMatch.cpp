#include "tools/zebdiag/NameMatch.h"

#include "tools/zebdiag/Failure.h"
#include "tools/zebdiag/languages/Said.h"

#include <algorithm>
#include <map>
#include <windows.h>

namespace zebdiag
{
namespace
{
constexpr const wchar_t* kSeeList = Marked(L"See what there is with \"zebdiag list\".");

std::wstring Folded(std::wstring text)
{
    CharUpperBuffW(text.data(), static_cast<DWORD>(text.size()));
    return text;
}

// Tests with the same number are the same kind, whichever adapter they are for.
struct CKind
{
    CNames Names;
    std::wstring Shown;
    std::vector<CTestChoice> Tests;
};

std::vector<CKind> KindsOf(const std::vector<const CAdapter*>& adapters)
{
    std::map<unsigned long, CKind> kinds;
    for (const CAdapter* adapter : adapters)
        for (const CTest& test : adapter->Tests)
        {
            CKind& kind = kinds[test.Number];
            kind.Names.Names.push_back(test.Caption);
            kind.Names.Codes.push_back(std::to_wstring(test.Number));
            kind.Shown = Said(L"{1} (number {2})", {test.Caption, std::to_wstring(test.Number)});
            kind.Tests.push_back({adapter, &test});
        }
    std::vector<CKind> list;
    list.reserve(kinds.size());
    for (auto& [number, kind] : kinds)
        list.push_back(std::move(kind));
    return list;
}

std::wstring Listed(const std::vector<std::wstring>& names)
{
    std::wstring text;
    for (const std::wstring& name : names)
        text += L"\n  " + name;
    return text;
}

// How a choice that fails is told: {1} is what was asked for.
struct CChoiceWords
{
    const wchar_t* None;
    const wchar_t* Several;
};
constexpr CChoiceWords kAdapterWords = {Marked(L"No adapter is called \"{1}\"."),
                                        Marked(L"\"{1}\" fits more than one adapter:")};
constexpr CChoiceWords kTestWords = {Marked(L"No test is called \"{1}\"."),
                                     Marked(L"\"{1}\" fits more than one test:")};

// The one thing that is meant; every other outcome is a failure that names the candidates.
size_t OneOf(const CChoiceWords& words, const std::wstring& text, const std::vector<CNames>& things,
             const std::vector<std::wstring>& shown)
{
    const std::vector<size_t> found = MatchNames(text, things);
    if (found.size() == 1)
        return found.front();
    if (found.empty())
        throw CFailure(ExitCode::NotFound,
                       Said(words.None, {text}) +
                           (shown.empty() ? L"" : L" " + Said(L"There is:") + Listed(shown)),
                       Said(kSeeList));
    std::vector<std::wstring> candidates;
    candidates.reserve(found.size());
    for (const size_t index : found)
        candidates.push_back(shown[index]);
    throw CFailure(ExitCode::NotFound, Said(words.Several, {text}) + Listed(candidates),
                   Said(L"Give more of the name."));
}
} // namespace

std::vector<size_t> MatchNames(const std::wstring& text, const std::vector<CNames>& things)
{
    const std::wstring wanted = Folded(text);
    std::vector<size_t> whole;
    std::vector<size_t> parts;
    for (size_t i = 0; i < things.size(); ++i)
    {
        const auto isWhole = [&](const std::wstring& name) { return Folded(name) == wanted; };
        const auto hasPart = [&](const std::wstring& name)
        { return Folded(name).find(wanted) != std::wstring::npos; };
        if (std::ranges::any_of(things[i].Names, isWhole) || std::ranges::any_of(things[i].Codes, isWhole))
            whole.push_back(i);
        if (std::ranges::any_of(things[i].Names, hasPart))
            parts.push_back(i);
    }
    return whole.empty() ? parts : whole;
}

std::vector<const CAdapter*> ChooseAdapters(const CInventory& inventory, const std::wstring& text)
{
    std::vector<const CAdapter*> all;
    std::vector<CNames> names;
    std::vector<std::wstring> shown;
    for (const CAdapter& adapter : inventory.Adapters)
    {
        all.push_back(&adapter);
        names.push_back({{adapter.Name, adapter.Description, adapter.Key}, {}});
        shown.push_back(adapter.Description.empty() ? adapter.Name
                                                    : adapter.Name + L" (" + adapter.Description + L")");
    }
    if (text.empty())
        return all;
    return {all[OneOf(kAdapterWords, text, names, shown)]};
}

std::vector<CTestChoice> ChooseTests(const std::vector<const CAdapter*>& adapters, const std::wstring& text)
{
    if (text.empty())
    {
        std::vector<CTestChoice> all;
        for (const CAdapter* adapter : adapters)
            for (const CTest& test : adapter->Tests)
                all.push_back({adapter, &test});
        return all;
    }
    std::vector<CKind> kinds = KindsOf(adapters);
    std::vector<CNames> names;
    std::vector<std::wstring> shown;
    for (const CKind& kind : kinds)
    {
        names.push_back(kind.Names);
        shown.push_back(kind.Shown);
    }
    return std::move(kinds[OneOf(kTestWords, text, names, shown)].Tests);
}
} // namespace zebdiag
