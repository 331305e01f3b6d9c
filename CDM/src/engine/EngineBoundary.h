// How the manager's operations report that memory ran out.
#pragma once

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
