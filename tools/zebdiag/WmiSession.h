// The requests that the client makes of one namespace. Every failed one is a CFailure. All of them may be
// made from any thread of the multithreaded apartment.
#pragma once

#include "Common/src/com/ComPtr.h"
#include "Common/src/com/Variant.h"
#include "tools/zebdiag/Failure.h"
#include "tools/zebdiag/Options.h"

#include <functional>
#include <string>
#include <utility>
#include <vector>
#include <wbemcli.h>

namespace zebdiag
{
using WmiObject = ComPtr<IWbemClassObject>;

class CWmiSession
{
  public:
    // Sets the identity and the protection of calls through an interface of the service.
    using SecureInterface = std::function<HRESULT(IUnknown*)>;

    // `context` goes with every call. Both may be left out.
    CWmiSession(ComPtr<IWbemServices> services, CTarget target, SecureInterface secure = {},
                ComPtr<IWbemContext> context = {});

    const CTarget& Target() const noexcept { return m_target; }

    // Fails with WBEM_S_TIMEDOUT if nothing comes for that long.
    std::vector<WmiObject> InstancesOf(const wchar_t* className,
                                       LONG patienceMilliseconds = WBEM_INFINITE) const;
    // `subject` is the class that the query asks for.
    std::vector<WmiObject> Query(const std::wstring& wql, const wchar_t* subject) const;
    // Null where there is no such instance or, if the path is a name, no such class.
    WmiObject TryGet(const std::wstring& path, const wchar_t* className) const;
    void Update(IWbemClassObject* instance, const wchar_t* className) const;

    struct CArgument
    {
        const wchar_t* Name;
        std::wstring Text;
    };
    // Calls a method with texts (which object paths are) as parameters; those left out stay null. Gives the
    // out-parameters, or null where the method has none.
    WmiObject Call(const std::wstring& path, const wchar_t* className, const wchar_t* method,
                   const std::vector<CArgument>& arguments) const;

  private:
    [[noreturn]] void Fail(HRESULT status, Step step, const wchar_t* className) const;
    void Check(HRESULT status, Step step, const wchar_t* className) const;
    std::vector<WmiObject> ReadAll(IEnumWbemClassObject* objects, const wchar_t* className,
                                   LONG patienceMilliseconds) const;

    ComPtr<IWbemServices> m_services;
    CTarget m_target;
    SecureInterface m_secure;
    ComPtr<IWbemContext> m_context;
};
} // namespace zebdiag
