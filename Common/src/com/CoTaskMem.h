// Memory from the COM task allocator.
#pragma once

#include "Common/src/com/Owned.h"

#include <objbase.h>

template <class T>
struct CoTaskMemTraits
{
    using Type = T*;
    static Type Empty() noexcept { return nullptr; }
    static void Close(Type p) noexcept { CoTaskMemFree(p); }
};

template <class T>
using CCoTaskMem = COwned<CoTaskMemTraits<T>>;
