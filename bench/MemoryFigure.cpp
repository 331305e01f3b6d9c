#include "bench/BenchAgent.h"
#include "bench/CountingSink.h"
#include "bench/Figures.h"
#include "bench/Must.h"
#include "bench/ServedProvider.h"

#include "CDM/src/engine/naming/DiagKeys.h"
#include "Common/src/com/Variant.h"

namespace
{
constexpr CFigureTexts kTexts = {
    .Letter = 'e',
    .Title = "Memory under many requests",
    .Measured = "private bytes of Drevok.EXE after 10,000 requests of every kind",
    .Against = "its private bytes after 1,000",
    .Goal = "flat: at most 1.02",
    .FirstColumn = "process",
};

// What the memory after many requests may be of that after fewer: the system's own book-keeping comes and
// goes by this much.
constexpr double kGoal = 1.02;
constexpr size_t kFewer = 1000;
constexpr size_t kMany = 10000;
constexpr size_t kTests = CBenchAgent::kTestsPerAdapter;

// Requests of every kind in turn, as clients would make them.
class CRequestMix
{
  public:
    explicit CRequestMix(CServedProvider& provider) : m_provider(provider)
    {
        for (const CRunRequest& run : provider.Runs())
            run.Send(Services(), provider.Context(), *m_sink.Get());
        const CBstr key = MakeTestKey(1, provider.Runs().front().AdapterKey.Get());
        for (const CBstr& path : {CreateTestReference(key.View(), true), CreateSettingReference(key.View()),
                                  CreateResultReference(key.View())})
            m_requests.push_back([this, path] { GetObject(path); });
        // One class in turn: an enumeration is ten calls back.
        m_requests.push_back([this] { Enumerate(CBstr(kServedClasses[m_made % kServedClasses.size()])); });
        m_requests.push_back([this] { Run(); });
        m_requests.push_back([this, key] { PutSetting(key); });
    }

    void Make(size_t count)
    {
        for (size_t i = 0; i < count; ++i)
            m_requests[m_made++ % m_requests.size()]();
    }

  private:
    IWbemServices& Services() { return m_provider.Services(); }
    void Done(HRESULT hr, const char* what)
    {
        Must(hr, what);
        Must(m_sink->Result(), what);
    }

    void GetObject(const CBstr& path)
    {
        Done(Services().GetObjectAsync(path.Get(), 0, m_provider.Context(), m_sink.Get()), "GetObject");
    }
    void Enumerate(const CBstr& className)
    {
        Done(Services().CreateInstanceEnumAsync(className.Get(), 0, m_provider.Context(), m_sink.Get()),
             "an enumeration");
    }
    void Run()
    {
        const auto& runs = m_provider.Runs();
        runs[m_made % runs.size()].Send(Services(), m_provider.Context(), *m_sink.Get());
        Done(S_OK, "RunTest");
    }
    void PutSetting(const CBstr& key)
    {
        ComPtr<IWbemClassObject> setting;
        Must(ClassNamed(L"Tolva_DiagSetting")->SpawnInstance(0, setting.Put()), "SpawnInstance");
        CVariant id = CVariant::FromText(key.Text());
        Must(setting->Put(L"SettingID", 0, &id, 0), "Put");
        Done(Services().PutInstanceAsync(setting.Get(), 0, m_provider.Context(), m_sink.Get()),
             "PutInstance");
    }

    CServedProvider& m_provider;
    const ComPtr<CCountingSink> m_sink = MakeCom<CCountingSink>();
    std::vector<std::function<void()>> m_requests;
    size_t m_made = 0;
};

std::string Kilobytes(size_t bytes)
{
    return std::to_string(bytes / 1024);
}
} // namespace

void MeasureMemory(CReport& report)
{
    report.Begin(kTexts, {"1,000, KB", "10,000, KB", "ratio"});
    CServedProvider provider(kTests);
    CRequestMix mix(provider);
    mix.Make(kFewer);
    const size_t fewer = provider.PrivateBytes();
    mix.Make(kMany - kFewer);
    const size_t many = provider.PrivateBytes();
    const double ratio = static_cast<double>(many) / static_cast<double>(fewer);
    report.Line("Drevok.EXE", {Kilobytes(fewer), Kilobytes(many), Fixed(ratio, 3)}, ratio <= kGoal);
}
