// The statuses that the diagnostics engine gives beside those of the platform, and how it reports that memory
// ran out.
#pragma once

#include "CDM/src/ZebTrace.h"
#include "Common/src/com/Bstr.h"
#include "Common/src/com/WmiStatus.h"

#include <memory>
#include <new>
#include <windows.h>

namespace engine
{
constexpr HRESULT AlreadyLocked = static_cast<HRESULT>(0x80042000); // a run of the test is in progress
constexpr HRESULT NotLocked = static_cast<HRESULT>(0x80042001);
constexpr HRESULT Stopped = static_cast<HRESULT>(0x80042002); // or: asked to stop, but not running
constexpr HRESULT ClearWhileRunning = static_cast<HRESULT>(0x80042003);
constexpr HRESULT NotFound = static_cast<HRESULT>(0x80042005);
constexpr HRESULT AlreadyPresent = static_cast<HRESULT>(0x80042006);
constexpr HRESULT UnusableTiming = static_cast<HRESULT>(0x80042007); // the run timing cannot be computed with
} // namespace engine

// Traces what there was no memory for.
inline HRESULT OutOfMemory(const char* text) noexcept
{
    Failed(wmi::OutOfMemory, text);
    return wmi::OutOfMemory;
}

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

// A text; a null BSTR if memory ran out.
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

// A new shared object; null if memory ran out.
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
