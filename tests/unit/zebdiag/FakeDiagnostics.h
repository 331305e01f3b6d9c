// A namespace that behaves like the provider's as far as the client can tell: tests, results and settings
// with the types of the shipped schema, runs that last as long as the test wants, requests that fail on
// demand.
#pragma once

#include "Common/src/com/Owned.h"
#include "FakeSecurity.h"
#include "tests/support/FakeServices.h"
#include "tools/zebdiag/Model.h"

#include <functional>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <vector>

namespace zebdiag
{
// An enumeration that is complete from the start.
ComPtr<IEnumWbemClassObject> EnumerateObjects(std::vector<ComPtr<IWbemClassObject>> objects,
                                              ComPtr<CFakeSecurity> security = {}, bool neverAnswers = false);

class CFakeDiagnostics final : public CFakeServices
{
  public:
    CFakeDiagnostics() : CFakeServices({}) {}

    struct CFakeTest
    {
        std::wstring Caption;
        bool SendsPackets = false;
        bool InUse = false;
        // What a run of it does, on the thread of the call; gives the state that it ends in.
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
        std::map<std::wstring, std::wstring> Arguments; // null ones are left out
    };
    struct CFailureAnswer
    {
        HRESULT Status = S_OK;
        std::wstring Description; // of the extended status that goes with it; empty: none does
    };

    // By the key of the test. While a call is under way, to be touched under Lock only.
    std::map<std::wstring, CFakeTest> Tests;
    std::map<std::wstring, CFakeResult> Results;
    std::map<std::wstring, CSettingValues> Settings;
    std::vector<CCall> Calls;
    std::vector<CSettingValues> Puts;
    // Requests that answer this in place of their work: "Enum Tolva_DiagTest", "Get Tolva_DiagResult", "Put",
    // "RunTest" and so on.
    std::map<std::wstring, CFailureAnswer> Failures;
    std::set<std::wstring> Missing;           // classes that the namespace lacks
    std::optional<std::wstring> OtherVersion; // of the schema; an empty one is told by nothing
    std::wstring ProviderId;                  // where it is not the shipped one
    bool NeverAnswers = false;                // enumerations deliver nothing and do not end
    ComPtr<CFakeSecurity> Security;           // makes proxies of this and of the enumerations
    std::vector<std::wstring> Locales;        // the "LocaleID" of every request; "-" for none
    // Called with the name of a method before and after its work.
    std::function<void(const std::wstring&)> Before = [](const std::wstring&) {};
    std::function<void(const std::wstring&)> After = [](const std::wstring&) {};

    CCriticalSection& Lock() noexcept { return m_lock; }
    // Signalled when a method call has ended.
    HANDLE CallEnded() const noexcept { return m_callEnded.Get(); }

    // Adds a test with the setting that belongs to it.
    CFakeTest& Add(const wchar_t* key, const wchar_t* caption, bool sendsPackets = false);

    STDMETHODIMP QueryInterface(REFIID riid, void** out) override
    {
        return CFakeSecurity::Answers(Security, riid, out) ? S_OK : CFakeServices::QueryInterface(riid, out);
    }
    STDMETHODIMP GetObject(const BSTR path, LONG flags, IWbemContext* context, IWbemClassObject** object,
                           IWbemCallResult** result) override;
    STDMETHODIMP CreateInstanceEnum(const BSTR className, LONG flags, IWbemContext* context,
                                    IEnumWbemClassObject** objects) override;
    STDMETHODIMP PutInstance(IWbemClassObject* instance, LONG flags, IWbemContext* context,
                             IWbemCallResult** result) override;
    STDMETHODIMP ExecMethod(const BSTR path, const BSTR method, LONG flags, IWbemContext* context,
                            IWbemClassObject* in, IWbemClassObject** out, IWbemCallResult** result) override;

  private:
    HRESULT FailureOf(const std::wstring& request);
    void Note(IWbemContext* context);
    ComPtr<IWbemClassObject> Registration(const std::wstring& path);
    ComPtr<IWbemClassObject> ClassNamed(const std::wstring& name);
    ComPtr<IWbemClassObject> Instance(const std::wstring& className, const std::wstring& key);
    ComPtr<IWbemClassObject> MakeTest(const std::wstring& key);
    ComPtr<IWbemClassObject> MakeResult(const std::wstring& key);
    ComPtr<IWbemClassObject> MakeSetting(const std::wstring& key);
    void Run(const std::wstring& key, IWbemClassObject* out);
    void Stop(const std::wstring& key, IWbemClassObject* out);
    void Clear(const std::wstring& key);

    CCriticalSection m_lock;
    CHandle m_callEnded{CreateEventW(nullptr, TRUE, FALSE, nullptr)};
};
} // namespace zebdiag
