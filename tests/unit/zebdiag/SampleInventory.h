// Adapters and tests as `list` finds them, for tests of everything that comes after.
#pragma once

#include "tools/zebdiag/Model.h"

#include <cwchar>

namespace zebdiag
{
inline CTest SampleTest(const wchar_t* number, const wchar_t* adapter, const wchar_t* caption)
{
    CTest test;
    test.Key = std::wstring(number) + L"@" + adapter;
    test.Number = std::wcstoul(number, nullptr, 16);
    test.AdapterKey = adapter;
    test.Caption = caption;
    test.Description = std::wstring(L"What ") + caption + L" looks at.";
    test.Path = L"Tolva_DiagTest.Name=\"" + test.Key + L"\"";
    test.Characteristics = {2};
    return test;
}

inline CTest SamplePacketTest(const wchar_t* number, const wchar_t* adapter, const wchar_t* caption)
{
    CTest test = SampleTest(number, adapter, caption);
    test.Characteristics = {2, 7};
    return test;
}

// "Ethernet" and "Ethernet 2" with a link test each; the second also has a speed test and a sender.
inline CInventory SampleInventory()
{
    CInventory inventory;
    inventory.Computer = L"WS42";
    inventory.Adapters = {
        {L"{AAAA-1111}", L"Ethernet", L"Contoso Gigabit", {SampleTest(L"1", L"{AAAA-1111}", L"Link")}},
        {L"{BBBB-2222}",
         L"Ethernet 2",
         L"Fabrikam 10G",
         {SampleTest(L"1", L"{BBBB-2222}", L"Link"), SampleTest(L"2", L"{BBBB-2222}", L"Link speed"),
          SamplePacketTest(L"9", L"{BBBB-2222}", L"Sender")}}};
    return inventory;
}
} // namespace zebdiag
