#include "bench/BenchAgent.h"
#include "bench/Figures.h"
#include "bench/Measure.h"
#include "bench/Must.h"
#include "bench/RunRequest.h"
#include "bench/StreamCopy.h"

#include "CDM/src/engine/DiagKeys.h"
#include "CDM/src/engine/DiagMgr.h"
#include "CDM/src/engine/References.h"
#include "CDM/src/engine/ResultsStore.h"
#include "Common/src/VormAgentMgr.h"
#include "Common/src/VormArray.h"
#include "tests/support/RegistryScope.h"
#include "tests/support/TempFolder.h"

#include <algorithm>
#include <memory>

namespace
{
constexpr double kGoal = 1.20;
// How much the ratio may grow from the fewest results to the most.
constexpr double kGrowthGoal = 1.10;
constexpr size_t kSizes[] = {10, 100, 1000};
// Making a stream takes the system longer the more the file holds. Of many results only some are stored
// anew, into the file that holds them all.
constexpr size_t kMostStored = 20;
constexpr CEffort kEffort = {3, 2.0};

// One result, as the diagnostics manager would store it.
struct CStoredResult
{
    CBstr Id;
    CBstr AdapterKey;
    std::unique_ptr<CDiagResult> Result;
};

// The platform's files, closed at the end of what is measured: a manager that ends then stores nothing.
class CReadStoreFiles final : public IStoreFiles
{
  public:
    void Close() noexcept { m_closed = true; }

    HRESULT IsStorageFile(const wchar_t* path) override { return PlatformStoreFiles().IsStorageFile(path); }
    HRESULT Read(const wchar_t* path, std::string& bytes) override
    {
        return m_closed ? STG_E_ACCESSDENIED : PlatformStoreFiles().Read(path, bytes);
    }
    HRESULT Write(const wchar_t*, const std::string&) override { return STG_E_ACCESSDENIED; }
    HRESULT Delete(const wchar_t*) override { return STG_E_ACCESSDENIED; }
    HRESULT Open(ILockBytes& bytes, IStorage** root) override
    {
        return PlatformStoreFiles().Open(bytes, root);
    }
    HRESULT Create(ILockBytes&, IStorage**) override { return STG_E_ACCESSDENIED; }

  private:
    bool m_closed = false;
};

class CStoreComparison
{
  public:
    explicit CStoreComparison(size_t tests)
        : m_requests(RunRequests(tests)), m_agents(MakeCom<CBenchAgent>(tests).Get())
    {
        Fill();
        std::vector<std::wstring> ids;
        for (const CStoredResult& result : m_results)
            ids.push_back(result.Id.Text());
        m_copy.Take(m_paths.ResultStorePath, ids);
        Must(CopyFileW(m_paths.ResultStorePath.c_str(), m_bareFile.c_str(), FALSE) != FALSE,
             "copying the store");
    }

    CComparison Store()
    {
        return Compare(
            kEffort, [&] { StoreSome(); }, [&] { m_copy.Write(m_bareFile, Stored()); });
    }
    size_t Stored() const { return std::min(m_results.size(), kMostStored); }
    CComparison Load()
    {
        return Compare(
            kEffort, [&] { LoadAll(); }, [&] { m_copy.Read(m_bareFile); });
    }

  private:
    // Runs every test and has the results stored.
    void Fill()
    {
        CDiagMgr manager(m_paths);
        Must(manager.Initialize(&m_agents), "starting the diagnostics manager");
        for (size_t i = 0; i < m_requests.size(); ++i)
            m_results.push_back(Run(manager, i));
    }
    CStoredResult Run(CDiagMgr& manager, size_t index)
    {
        const CRunRequest& request = m_requests[index];
        CBstr key = MakeTestKey(request.TestID, request.AdapterKey.Get());
        (void)manager.RunTest(key.Get(), key, 0);
        CResultData data;
        Must(manager.GetResultData(key.Get(), &data), "GetResultData");
        CStoredResult stored;
        stored.Id =
            JoinKey(TestNumberText(request.TestID).View(),
                    AdapterIndexText(static_cast<ULONG>(index / CBenchAgent::kTestsPerAdapter)).View());
        stored.AdapterKey = request.AdapterKey;
        stored.Result =
            std::make_unique<CDiagResult>(key.Get(), data.DiagnosticNameStringID, data.SenderResponder != 0);
        stored.Result->SetData(std::move(data));
        return stored;
    }

    // As the manager does at its end, result by result.
    void StoreSome()
    {
        CStoreSession session(PlatformStoreFiles(), m_paths.ResultStorePath, CStoreSession::Purpose::Change);
        for (size_t i = 0; i < Stored(); ++i)
            Must(CResultsStore(session).StoreResult(m_results[i].Id, m_results[i].AdapterKey,
                                                    *m_results[i].Result),
                 "storing a result");
        Must(session.Publish(), "publishing the store");
    }
    // A manager's whole start, which loads the results one by one.
    void LoadAll()
    {
        CReadStoreFiles files;
        CDiagMgr manager(m_paths, {nullptr, &files});
        Must(manager.Initialize(&m_agents), "starting the diagnostics manager");
        CVormArray<BSTR> keys;
        Must(manager.EnumResults(keys), "EnumResults");
        Must(keys.Count() == m_results.size(), "loading every result");
        files.Close();
    }

    const CRegistryScope m_registry;
    const CTempFolder m_folder;
    const std::vector<CRunRequest> m_requests;
    const CVormAgentMgr m_agents;
    const CHostPaths m_paths{m_folder.Path().string() + "\\", m_folder.Path().wstring() + L"\\ZebDiag.bin"};
    const std::wstring m_bareFile = m_folder.Path().wstring() + L"\\Bare.bin";
    std::vector<CStoredResult> m_results;
    CStreamCopy m_copy;
};

void Print(CReport& report, const char* name, const std::vector<CComparison>& sizes,
           const std::vector<size_t>& results)
{
    std::vector<std::string> values;
    bool met = true;
    for (const CComparison& comparison : sizes)
    {
        values.push_back(Fixed(comparison.Ratio, 2));
        met = met && comparison.Ratio <= kGoal;
    }
    const double growth = sizes.back().Ratio / sizes.front().Ratio;
    values.push_back(Fixed(growth, 2));
    for (const size_t i : {size_t{0}, sizes.size() - 1})
        values.push_back(Fixed(sizes[i].MeasuredSeconds * 1e6 / static_cast<double>(results[i]), 0));
    report.Line(name, values, met && growth <= kGrowthGoal);
}
} // namespace

void MeasureStore(CReport& report)
{
    report.Begin(
        'd',
        "Storing and loading results / writing and reading the same streams; goal 1.20 at every number "
        "of results, growth at most 1.10",
        "operation", {"10 results", "100", "1,000", "growth", "us at 10", "us at 1,000"});
    std::vector<CComparison> stores;
    std::vector<CComparison> loads;
    std::vector<size_t> stored;
    std::vector<size_t> loaded;
    for (const size_t size : kSizes)
    {
        CStoreComparison comparison(size);
        loads.push_back(comparison.Load());
        stores.push_back(comparison.Store());
        stored.push_back(comparison.Stored());
        loaded.push_back(size);
    }
    Print(report, "store (of 100 and 1,000: 20)", stores, stored);
    Print(report, "load", loads, loaded);
}
