// The edge of every COM method and thread procedure: the body runs inside one function that turns any
// exception into a code. Nothing else in a method catches, except the provider's own barrier.
#pragma once

#include <new>
#include <windows.h>

template <class Body>
HRESULT AtComBoundary(Body&& body) noexcept
{
    try
    {
        return body();
    }
    catch (const std::bad_alloc&)
    {
        return E_OUTOFMEMORY;
    }
    catch (...)
    {
        return E_UNEXPECTED;
    }
}
