// The edge of COM methods and of every call into an agent: the body runs inside one function that turns any
// exception into a code. CONTRIBUTING.md says what else catches.
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
