// A list of names as a SAFEARRAY of BSTR, lower bound 0.
#pragma once

#include "Common/src/com/Bstr.h"
#include "Common/src/com/SafeArray.h"

#include <string_view>
#include <vector>

namespace standin
{
// Throws std::bad_alloc.
inline CSafeArray NameArray(const std::vector<std::wstring_view>& names)
{
    CSafeArray array(SafeArrayCreateVector(VT_BSTR, 0, static_cast<ULONG>(names.size())));
    if (!array)
        throw std::bad_alloc();
    const CSafeArrayView<BSTR> items(array.Get(), VT_BSTR);
    for (size_t i = 0; i < names.size(); ++i)
        items.Items()[i] = CBstr(names[i]).Detach();
    return array;
}
} // namespace standin
