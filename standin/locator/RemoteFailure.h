// Calls to other processes: telling "it is not there" from what it answered.
#pragma once

#include <windows.h>

namespace standin
{
// The call failed because the process that serves the object has ended or is ending.
bool IsServerGone(HRESULT hr) noexcept;

// The call did not reach the other process.
inline bool IsNeverExecuted(HRESULT hr) noexcept
{
    return hr == HRESULT_FROM_WIN32(RPC_S_CALL_FAILED_DNE);
}

// Makes a call to another process, and makes it again where it did not get there: process numbers come again,
// and Wine may use a connection that it has kept from an earlier process of that number. Each one that fails
// is gone after that; `kStaleConnections` are taken to be enough.
template <class Call>
HRESULT CallProcess(Call call)
{
    constexpr int kStaleConnections = 8;
    HRESULT hr = call();
    for (int i = 0; i < kStaleConnections && IsNeverExecuted(hr); ++i)
        hr = call();
    return hr;
}
} // namespace standin
