// A namespace that behaves like the provider's as far as the client can tell: tests, results and settings with
// the types of the shipped schema, runs that last as long as the test wants, and requests that fail on demand.
#pragma once

#include "Common/src/com/Owned.h"
#include "tests/support/FakeServices.h"
#include "tools/zebdiag/Model.h"

#include <functional>
#include <map>
#include <optional>
#include <string>

namespace zebdiag
{
class CFakeDiagnostics final : public CFakeServices
{
  public:
    CFakeDiagnostics();

    struct CFakeTest
    {
        std::wstring Caption;
        bool SendsPackets = false;
        bool InUse = false;
        // What a run of it does; gives the state that it ends in. On the thread of the call.
        std::function<TestState()> Run = [] { return TestState::Passed; };
        // Whether a stop is taken.
        std::function<bool()> Stop = [] { return true; };
    };
    struct CFakeResult
    {
        TestState State = TestState::Passed;
        long Percent = 100;
        std::vector<std::wstring> Lines;
        CSettingValues Setting;
    };
    struct CCall
    {
        std::wstring Path;
        std::wstring Method;
        std::map<std::wstring, std::wstring> Arguments; // null ones are not there
    };

    // All by the key of the test. Guarded by Lock where a run goes on.
    std::map<std::wstring, CFakeTest> Tests;
    std::map<std::wstring, CFakeResult> Results;
    std::map<std::wstring, CSettingValues> Settings;
    std::vector<CCall> Calls;
    std::vector<CSettingValues> Puts;
    // What these requests answer in place of their work: "Enum Tolva_DiagTest", "Get Tolva_DiagResult", "Put",
    // "RunTest" and so on.
    std::map<std::wstring, HRESULT> Failures;
    // What runs and stops leave as the thread's error object.
    std::map<std::wstring, std::wstring> Details;

    CCriticalSection& Lock() noexcept { return m_lock; }

    STDMETHODIMP GetObject(const BSTR path, LONG flags, IWbemContext* context, IWbemClassObject** object,
                           IWbemCallResult** result) override;
    STDMETHODIMP CreateInstanceEnum(const BSTR className, LONG flags, IWbemContext* context,
                                    IEnumWbemClassObject** objects) override;
    STDMETHODIMP PutInstance(IWbemClassObject* instance, LONG flags, IWbemContext* context,
                             IWbemCallResult** result) override;
    STDMETHODIMP ExecMethod(const BSTR path, const BSTR method, LONG flags, IWbemContext* context,
                            IWbemClassObject* in, IWbemClassObject** out, IWbemCallResult** result) override;

  private:
    std::optional<HRESULT> FailureOf(const std::wstring& request);
    ComPtr<IWbemClassObject> MakeTest(const std::wstring& key);
    ComPtr<IWbemClassObject> MakeResult(const std::wstring& key);
    ComPtr<IWbemClassObject> MakeSetting(const std::wstring& key);
    HRESULT Run(const std::wstring& key, IWbemClassObject* out);
    HRESULT Stop(const std::wstring& key, IWbemClassObject* out);
    HRESULT Clear(const std::wstring& key);

    CCriticalSection m_lock;
};
} // namespace zebdiag
