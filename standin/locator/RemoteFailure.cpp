#include "standin/locator/RemoteFailure.h"

namespace standin
{
bool IsServerGone(HRESULT hr) noexcept
{
    static const HRESULT codes[] = {
        HRESULT_FROM_WIN32(RPC_S_SERVER_UNAVAILABLE),
        HRESULT_FROM_WIN32(RPC_S_CALL_FAILED),
        HRESULT_FROM_WIN32(RPC_S_CALL_FAILED_DNE),
        HRESULT_FROM_WIN32(ERROR_BROKEN_PIPE),
        RPC_E_DISCONNECTED,
        RPC_E_SERVER_DIED,
        RPC_E_SERVER_DIED_DNE,
        CO_E_OBJNOTCONNECTED,
        CO_E_SERVER_STOPPING,
    };
    for (const HRESULT code : codes)
        if (hr == code)
            return true;
    return false;
}
} // namespace standin
