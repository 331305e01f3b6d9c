#include "bench/BenchAgent.h"
#include "bench/Figures.h"
#include "bench/Measure.h"
#include "bench/Must.h"
#include "bench/RunRequest.h"
#include "bench/StreamCopy.h"

#include "CDM/src/engine/DiagMgr.h"
#include "CDM/src/engine/naming/DiagKeys.h"
#include "CDM/src/engine/results/store/ResultsStore.h"
#include "Common/src/VormAgentMgr.h"
#include "tests/support/RegistryScope.h"
#include "tests/support/TempFolder.h"

#include <algorithm>
#include <memory>

namespace
{
constexpr CFigureTexts kTexts = {
    .Letter = 'd',
    .Title = "Storing and loading results",
    .Measured =
        "the diagnostics manager's part at its end (of more than 20 results: 20 of them anew) and start",
    .Against = "the storage calls for the same streams, in memory as the provider does it, and on the file",
    .Goal = "at most 1.20 at every number of results, growth at most 1.10",
    .FirstColumn = "operation / against",
};

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

using Where = CStreamCopy::Where;

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

    CComparison Store(Where where)
    {
        return Compare(
            kEffort, [&] { StoreSome(); }, [&] { m_copy.Write(m_bareFile, where, Stored()); });
    }
    CComparison Load(Where where)
    {
        return Compare(
            kEffort, [&] { LoadAll(); }, [&] { m_copy.Read(m_bareFile, where); });
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

    size_t Stored() const { return std::min(m_results.size(), kMostStored); }
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
    // As the manager does at its start, result by result.
    void LoadAll()
    {
        CStoreSession session(PlatformStoreFiles(), m_paths.ResultStorePath, CStoreSession::Purpose::Read);
        for (const CStoredResult& stored : m_results)
        {
            CDiagResult loaded(stored.Result->Key().Get(), 0, false);
            Must(CResultsStore(session).LoadResult(stored.Id, stored.AdapterKey, loaded) == S_OK,
                 "loading a result");
        }
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

// One line of the figure: what is measured, and against what.
struct CStoreLine
{
    const char* Name;
    CComparison (CStoreComparison::*Measure)(Where where);
    Where Bare;
};

constexpr CStoreLine kLines[] = {
    {"store / in memory", &CStoreComparison::Store, Where::Memory},
    {"store / on the file", &CStoreComparison::Store, Where::File},
    {"load / in memory", &CStoreComparison::Load, Where::Memory},
    {"load / on the file", &CStoreComparison::Load, Where::File},
};

void Print(CReport& report, const char* name, const std::vector<CComparison>& sizes)
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
        values.push_back(Fixed(sizes[i].MeasuredSeconds * 1e3, 1));
    report.Line(name, values, met && growth <= kGrowthGoal);
}
} // namespace

void MeasureStore(CReport& report)
{
    std::vector<CComparison> found[std::size(kLines)];
    for (const size_t size : kSizes)
    {
        CStoreComparison comparison(size);
        for (size_t i = 0; i < std::size(kLines); ++i)
            found[i].push_back((comparison.*kLines[i].Measure)(kLines[i].Bare));
    }
    report.Begin(kTexts, {"10 results", "100", "1,000", "growth", "ms for 10", "for 1,000"});
    for (size_t i = 0; i < std::size(kLines); ++i)
        Print(report, kLines[i].Name, found[i]);
}
