#include "bench/CountingSink.h"
#include "bench/Figures.h"
#include "bench/Measure.h"
#include "bench/MinimalServerIds.h"
#include "bench/Must.h"
#include "bench/ServedProvider.h"

#include "Common/src/com/CriticalSection.h"
#include "Common/src/com/Text.h"
#include "tests/system/support/Process.h"

namespace
{
constexpr CFigureTexts kTexts = {
    .Letter = 'b',
    .Title = "Enumeration across processes",
    .Measured = "the same request to Drevok.EXE, as the management service makes it",
    .Against = "a minimal local server that has the same objects ready, over the same marshalling",
    .Goal = "at most 1.10",
    .FirstColumn = "class",
};

constexpr double kGoal = 1.10;
constexpr size_t kTests = 50;
constexpr CEffort kEffort = {25, 5.0};

// Lets COM find the minimal server, for as long as it lives.
class CMinimalServerRegistration
{
  public:
    CMinimalServerRegistration()
    {
        wchar_t clsid[64] = {};
        StringFromGUID2(kClsidMinimalServer, clsid, std::size(clsid));
        m_key = std::wstring(L"SOFTWARE\\Classes\\CLSID\\") + clsid;
        const std::wstring program = BinFolder() + L"MinimalServer.exe";
        Must(RegSetKeyValueW(HKEY_LOCAL_MACHINE, (m_key + L"\\LocalServer32").c_str(), nullptr, REG_SZ,
                             program.c_str(),
                             static_cast<DWORD>((program.size() + 1) * sizeof(wchar_t))) == ERROR_SUCCESS,
             "registering the minimal server");
    }
    ~CMinimalServerRegistration() { RegDeleteTreeW(HKEY_LOCAL_MACHINE, m_key.c_str()); }
    CMinimalServerRegistration(const CMinimalServerRegistration&) = delete;
    CMinimalServerRegistration& operator=(const CMinimalServerRegistration&) = delete;

  private:
    std::wstring m_key;
};

// Keeps what an enumeration delivers.
class CKeepingSink final : public CComObject<IWbemObjectSink>
{
  public:
    STDMETHODIMP Indicate(LONG count, IWbemClassObject** objects) override
    {
        const CLockScope lock(m_section);
        m_objects.insert(m_objects.end(), objects, objects + count);
        return WBEM_S_NO_ERROR;
    }
    STDMETHODIMP SetStatus(LONG, HRESULT, BSTR, IWbemClassObject*) override { return WBEM_S_NO_ERROR; }

    std::vector<ComPtr<IWbemClassObject>> Take()
    {
        const CLockScope lock(m_section);
        return std::move(m_objects);
    }

  private:
    CCriticalSection m_section;
    std::vector<ComPtr<IWbemClassObject>> m_objects;
};

void Enumerate(IWbemServices& services, const CBstr& className, IWbemContext* context, IWbemObjectSink& sink)
{
    Must(services.CreateInstanceEnumAsync(className.Get(), 0, context, &sink), "an enumeration");
}

// Gives the minimal server the objects that the provider delivers.
size_t Furnish(IWbemServices& minimal, CServedProvider& provider, const CBstr& className)
{
    const ComPtr<CKeepingSink> sink = MakeCom<CKeepingSink>();
    Enumerate(provider.Services(), className, provider.Context(), *sink.Get());
    const std::vector<ComPtr<IWbemClassObject>> objects = sink->Take();
    Must(minimal.CancelAsyncCall(sink.Get()), "emptying the minimal server");
    for (const ComPtr<IWbemClassObject>& object : objects)
        Must(minimal.PutInstanceAsync(object.Get(), 0, provider.Context(), sink.Get()),
             "furnishing the minimal server");
    return objects.size();
}
} // namespace

void MeasureAcrossProcesses(CReport& report)
{
    report.Begin(kTexts, {"instances", "us each", "server, us", "ratio"});
    const CMinimalServerRegistration registration;
    CServedProvider provider(kTests);
    const ComPtr<CCountingSink> sink = MakeCom<CCountingSink>();
    for (const CRunRequest& run : provider.Runs())
        run.Send(provider.Services(), provider.Context(), *sink.Get());
    Must(sink->TakeCount() == static_cast<long>(provider.Runs().size()), "running the tests");

    ComPtr<IWbemServices> minimal;
    Must(CoCreateInstance(kClsidMinimalServer, nullptr, CLSCTX_LOCAL_SERVER, __uuidof(IWbemServices),
                          minimal.PutVoid()),
         "starting the minimal server");
    for (const wchar_t* name : kServedClasses)
    {
        const CBstr className(name);
        const size_t count = Furnish(*minimal.Get(), provider, className);
        const auto deliver = [&](IWbemServices& services)
        {
            Enumerate(services, className, provider.Context(), *sink.Get());
            Must(count > 0 && sink->TakeCount() == static_cast<long>(count), "delivering every instance");
        };
        const CComparison found = Compare(
            kEffort, [&] { deliver(provider.Services()); }, [&] { deliver(*minimal.Get()); });
        const double each = 1e6 / static_cast<double>(count);
        report.Line(NarrowText(name),
                    {std::to_string(count), Fixed(found.MeasuredSeconds * each, 1),
                     Fixed(found.BareSeconds * each, 1), Fixed(found.Ratio, 2)},
                    found.Ratio <= kGoal);
    }
}
