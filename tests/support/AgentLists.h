// Enumerations of an agent as plain values. The lists are freed as every client frees them: the strings with
// SysFreeString, the block with CoTaskMemFree.
#pragma once

#include "Common/src/com/Bstr.h"
#include "agent/Vorl.h"

#include <string>
#include <vector>

inline HRESULT ListAdapters(IVormDiag& agent, std::vector<std::wstring>& keys)
{
    ULONG count = 77;
    BSTR* items = reinterpret_cast<BSTR*>(&count);
    const HRESULT hr = agent.EnumAdapters(&count, &items);
    keys.clear();
    for (ULONG i = 0; i < count; ++i)
        keys.emplace_back(CBstr::Attach(items[i]).View());
    CoTaskMemFree(items);
    return hr;
}

inline HRESULT ListTests(IVormDiag& agent, const wchar_t* key, std::vector<VormTestDescriptor>& tests)
{
    ULONG count = 77;
    VormTestDescriptor* items = reinterpret_cast<VormTestDescriptor*>(&count);
    const HRESULT hr = agent.EnumDiagTests(CBstr(key).Get(), &count, &items);
    tests.assign(items, items + count);
    CoTaskMemFree(items);
    return hr;
}

inline std::vector<ULONG> Ids(const std::vector<VormTestDescriptor>& tests)
{
    std::vector<ULONG> ids;
    ids.reserve(tests.size());
    for (const VormTestDescriptor& test : tests)
        ids.push_back(test.TestID);
    return ids;
}
