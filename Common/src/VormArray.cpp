#include "Common/src/VormArray.h"

#include "CDM/src/ZebTrace.h"

#include <oleauto.h>

void VormDeleteData(VormArray<BSTR>& list) noexcept
{
    CZebTrace trace("VormDeleteData for BSTR");
    if (list.items)
        for (ULONG i = 0; i < list.count; ++i)
            SysFreeString(list.items[i]);
    CoTaskMemFree(list.items);
    list = {};
}

void VormDeleteRecords(void* items) noexcept
{
    CZebTrace trace("VormDeleteData for VormArray<T>");
    CoTaskMemFree(items);
}
