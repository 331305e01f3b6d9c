// Owners for SAFEARRAYs: the array itself, and a scope that holds its data locked.
#pragma once

#include "Common/src/com/Owned.h"

#include <oleauto.h>
#include <span>
#include <utility>

struct SafeArrayTraits
{
    using Type = SAFEARRAY*;
    static Type Empty() noexcept { return nullptr; }
    static void Close(Type a) noexcept { SafeArrayDestroy(a); }
};
using CSafeArray = COwned<SafeArrayTraits>;

// Holds the data of a one-dimensional array of `T` for reading. If the array is null, has another element
// type, more dimensions, bounds that contradict each other or no data, the view is empty and Valid() is
// false.
template <class T>
class CSafeArrayView
{
  public:
    CSafeArrayView(SAFEARRAY* array, VARTYPE expected) noexcept
    {
        VARTYPE type = VT_EMPTY;
        LONG lower = 0;
        LONG upper = -1;
        if (!array || SafeArrayGetDim(array) != 1 || FAILED(SafeArrayGetVartype(array, &type)) ||
            type != expected || FAILED(SafeArrayGetLBound(array, 1, &lower)) ||
            FAILED(SafeArrayGetUBound(array, 1, &upper)))
            return;
        const LONGLONG count = LONGLONG{upper} - lower + 1;
        void* data = nullptr;
        if (count < 0 || FAILED(SafeArrayAccessData(array, &data)))
            return;
        m_array = array;
        if (data)
            m_items = {static_cast<T*>(data), static_cast<size_t>(count)};
        else if (count > 0)
            Unaccess();
    }
    CSafeArrayView(const CSafeArrayView&) = delete;
    CSafeArrayView& operator=(const CSafeArrayView&) = delete;
    ~CSafeArrayView() { Unaccess(); }

    bool Valid() const noexcept { return m_array != nullptr; }
    std::span<T> Items() const noexcept { return m_items; }

  private:
    void Unaccess() noexcept
    {
        if (m_array)
            SafeArrayUnaccessData(std::exchange(m_array, nullptr));
    }

    SAFEARRAY* m_array = nullptr;
    std::span<T> m_items;
};
