#include "Common/src/WomSecurity.h"

#include "CDM/src/ZebDebug.h"
#include "CDM/src/ZebTrace.h"
#include "Common/src/com/ComPtr.h"
#include "Common/src/com/Owned.h"

#include <iterator>
#include <objbase.h>

#define SECURITY_WIN32
#include <security.h>

namespace
{
constexpr char kSourceFile[] = "Common/src/WomSecurity";

void TraceUserName() noexcept
{
    ZebDebug().Write("User name");
    char name[257] = {};
    ULONG size = std::size(name);
    if (GetUserNameExA(NameSamCompatible, name, &size))
        ZebDebug().Write("Current user name is %s", name);
    else
        ZebDebug().Write("GetUserName failed");
}

void TraceImpersonationLevel() noexcept
{
    // A thread that does not impersonate has no token of its own: outside a request and after a revert, the
    // trace shows this error.
    CHandle token;
    if (!OpenThreadToken(GetCurrentThread(), TOKEN_QUERY, TRUE, token.Put()))
    {
        ZebDebug().Error(kSourceFile, 248, "Unable to read thread token");
        return;
    }

    DWORD level = 0;
    DWORD size = 0;
    if (!GetTokenInformation(token.Get(), TokenImpersonationLevel, &level, sizeof(level), &size))
    {
        ZebDebug().Error(kSourceFile, 263, "Unable to read impersonation level\n"); // sic
        return;
    }

    constexpr const char* kLevels[] = {"SecurityAnonymous", "SecurityIdentification", "SecurityImpersonation",
                                       "SecurityDelegation"};
    if (level < std::size(kLevels))
        ZebDebug().Write("%s", kLevels[level]);
    else
        ZebDebug().Error(kSourceFile, 287, "Unable to determine impersonation level\n"); // sic
}
} // namespace

bool CWomSecurity::Impersonating() const noexcept
{
    ComPtr<IServerSecurity> call;
    return m_enabled && SUCCEEDED(CoGetCallContext(__uuidof(IServerSecurity), call.PutVoid())) && call &&
           call->IsImpersonating();
}

HRESULT CWomSecurity::Impersonate() const noexcept
{
    if (!m_enabled)
        return S_FALSE;
    const HRESULT hr = CoImpersonateClient();
    if (FAILED(hr))
        ZebDebug().Error(kSourceFile, __LINE__, "CoImpersonateClient failed <%x>", static_cast<unsigned>(hr));
    return hr;
}

void CWomSecurity::OutputSecurityDebug() const noexcept
{
    // Every request comes here twice. Without a trace, the system is not asked.
    if (ZebDebug().Level() < 1)
        return;
    CZebTrace trace("CWomSecurity::OutputSecurityDebug");
    ZebDebug().Write(m_enabled ? "Security has been compiled in" : "Security has NOT been compiled in");
    TraceUserName();
    TraceImpersonationLevel();
}

void CWomSecurity::RevertToSelf() const noexcept
{
    CZebTrace trace("CWomSecurity::RevertToSelf");
    if (!m_enabled)
    {
        ZebDebug().Write("Security not enabled");
        return;
    }
    OutputSecurityDebug();
    CoRevertToSelf();
}
