// How the engine reports that memory ran out.
#pragma once

#include "Common/src/com/Bstr.h"
#include "Common/src/com/WmiStatus.h"

#include <memory>
#include <new>

template <class Body>
HRESULT WithinMemory(Body&& body)
{
    try
    {
        return body();
    }
    catch (const std::bad_alloc&)
    {
        return wmi::OutOfMemory;
    }
}

// A text; a null BSTR where memory ran out.
template <class Make>
CBstr TryMakeText(Make&& make)
{
    try
    {
        return make();
    }
    catch (const std::bad_alloc&)
    {
        return CBstr();
    }
}

// A new shared object; null where memory ran out.
template <class T, class... Arguments>
std::shared_ptr<T> TryMake(Arguments&&... arguments)
{
    try
    {
        return std::make_shared<T>(std::forward<Arguments>(arguments)...);
    }
    catch (const std::bad_alloc&)
    {
        return nullptr;
    }
}
