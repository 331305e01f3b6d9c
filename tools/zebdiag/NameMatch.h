// Finds what somebody means by a part of a name.
#pragma once

#include "tools/zebdiag/Model.h"

#include <string>
#include <vector>

namespace zebdiag
{
// What one thing is called: names that a part of is enough, and codes that must be given whole.
struct CNames
{
    std::vector<std::wstring> Names;
    std::vector<std::wstring> Codes;
};

// The things that `text` may mean, as indices, without regard to case: those that bear it as a whole name or
// code, or else those with a name that it is a part of.
std::vector<size_t> MatchNames(const std::wstring& text, const std::vector<CNames>& things);

// A test together with the adapter that it is for.
struct CTestChoice
{
    const CAdapter* Adapter;
    const CTest* Test;
};

// The adapters that `text` names; all of them where it is empty. Throws CFailure (NotFound) where it names
// none or more than one.
std::vector<const CAdapter*> ChooseAdapters(const CInventory& inventory, const std::wstring& text);

// The test that `text` names, on each of the adapters that has it; all their tests where it is empty. Throws
// CFailure (NotFound) where it names none, or tests of more than one kind.
std::vector<CTestChoice> ChooseTests(const std::vector<const CAdapter*>& adapters, const std::wstring& text);
} // namespace zebdiag
