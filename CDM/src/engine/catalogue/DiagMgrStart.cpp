// The manager's start-up.
#include "CDM/src/ZebDebug.h"
#include "CDM/src/ZebHelpers.h"
#include "CDM/src/ZebRegistry.h"
#include "CDM/src/ZebTrace.h"
#include "CDM/src/engine/DiagMgrState.h"
#include "CDM/src/engine/EngineBoundary.h"
#include "CDM/src/engine/naming/DiagKeys.h"
#include "CDM/src/engine/naming/References.h"
#include "CDM/src/engine/results/store/ResultsStore.h"
#include "Common/src/VormAgentMgr.h"
#include "Common/src/com/Text.h"

namespace
{
constexpr DWORD kRegistryText = 4096;

// What AddTest gives where the rest of an adapter's tests is left out.
constexpr HRESULT kSkipAdapter = S_FALSE;

HRESULT QueryAgent(const CVormAgentMgr* agents, std::shared_ptr<CDiagAgent>& agent)
{
    if (!agents || !agents->Root())
        return E_POINTER;
    return CDiagAgent::Query(agents->Root(), agent);
}
} // namespace

HRESULT CDiagMgr::Initialize(const CVormAgentMgr* agents)
{
    return WithinMemory(
        [&]
        {
            CState& state = *m_state;
            HRESULT hr = QueryAgent(agents, state.agent);
            if (FAILED(hr))
            {
                ZebDebug().Write("CDiagMgr::Initialize:Vorl QueryInterface failed, hr = <%x>", hr);
                return static_cast<HRESULT>(E_NOINTERFACE); // whatever the cause: callers know no other
            }
            hr = state.CreateMaps();
            if (FAILED(hr))
                return hr;
            CVormArray<BSTR> adapters;
            hr = state.agent->EnumAdapters(adapters);
            if (FAILED(hr))
            {
                ZebDebug().Write("CDiagMgr::Initialize:EnumAdapters failed, hr = <%x>", hr);
                return hr;
            }
            CStoreSession session(state.files, state.paths.ResultStorePath, CStoreSession::Purpose::Read);
            bool found = false;
            for (ULONG i = 0; i < adapters.Count(); ++i)
            {
                state.AddAdapter(i, adapters.Items()[i]);
                hr = state.AddTests(adapters.Items()[i], session, found);
                if (FAILED(hr))
                    return hr;
            }
            if (!found)
            {
                ZebDebug().Write("CDiagMgr::Initialize:Not a single test found.");
                return wmi::Failed;
            }
            return state.ReadConfiguration();
        });
}

HRESULT CDiagMgr::CState::CreateMaps()
{
    if (!tests.Create())
    {
        ZebDebug().Write("CDiagMgr::Initialize:Could not create new DiagTestsMap object");
        return wmi::OutOfMemory;
    }
    if (!results.Create())
    {
        ZebDebug().Write("CDiagMgr::Initialize:Could not create new DiagResultsMap object");
        return wmi::OutOfMemory;
    }
    if (!settings.Create())
    {
        ZebDebug().Write("CDiagMgr::Initialize:Could not create new DiagSettingsMap object");
        return wmi::OutOfMemory;
    }
    return S_OK;
}

void CDiagMgr::CState::AddAdapter(ULONG index, BSTR adapterKey)
{
    const HRESULT hr = WithinMemory(
        [&]
        {
            const CBstr text = AdapterIndexText(index);
            ZebDebug().Write(L"CDiagMgr::Initialize: Index = <%s>", text.Text());
            ZebDebug().Write(L"CDiagMgr::Initialize: AdapterKey = <%s>", adapterKey ? adapterKey : L"");
            return indexes.AddIndexToMap(adapterKey, text);
        });
    if (FAILED(hr))
        ZebDebug().Write("CDiagMgr::Initialize:AddIndexToMap failed, hr = <%x>", hr);
}

HRESULT CDiagMgr::CState::AddTests(BSTR adapterKey, CStoreSession& session, bool& found)
{
    CVormArray<VormTestDescriptor> descriptors;
    const HRESULT hr = agent->EnumDiagTests(adapterKey, descriptors);
    if (FAILED(hr))
    {
        ZebDebug().Write("CDiagMgr::Initialize:EnumDiagTests failed, hr = <%x>", hr);
        return S_OK;
    }
    if (descriptors.Count() == 0)
        return S_OK;
    found = true;
    HRESULT added = S_OK;
    for (ULONG i = 0; i < descriptors.Count() && added == S_OK; ++i)
        added = AddTest(adapterKey, descriptors.Items()[i], session);
    return FAILED(added) ? added : S_OK;
}

HRESULT CDiagMgr::CState::AddTest(BSTR adapterKey, const VormTestDescriptor& descriptor,
                                  CStoreSession& session)
{
    const CBstr testKey = MakeTestKey(descriptor.TestID, adapterKey);
    const auto test = TryMake<CDiagTest>(testKey.Get(), descriptor);
    if (!test)
    {
        ZebDebug().Write("CDiagMgr::Initialize:Could not create new DiagTest object");
        return wmi::OutOfMemory;
    }
    HRESULT hr = WithinMemory([&] { return tests.AddObj(testKey.Get(), test); });
    if (FAILED(hr))
    {
        ZebDebug().Write("CDiagMgr::Initialize:AddObj for test failed, hr = <%x>", hr);
        return kSkipAdapter;
    }
    const auto setting = TryMake<CDiagSetting>(testKey.Get(), test->SenderResponder());
    if (!setting)
    {
        ZebDebug().Write("CDiagMgr::Initialize:Could not create new DiagSetting object");
        return wmi::OutOfMemory;
    }
    hr = WithinMemory([&] { return settings.AddObj(testKey.Get(), setting); });
    if (FAILED(hr))
    {
        ZebDebug().Write("CDiagMgr::Initialize:AddObj for setting failed, hr = <%x>", hr);
        return kSkipAdapter;
    }
    return AddStoredResult(adapterKey, testKey.Get(), descriptor, session);
}

HRESULT CDiagMgr::CState::AddStoredResult(BSTR adapterKey, BSTR testKey, const VormTestDescriptor& descriptor,
                                          CStoreSession& session)
{
    const auto result =
        TryMake<CDiagResult>(testKey, descriptor.NameStringID, IsSenderResponder(descriptor.TestID));
    if (!result)
    {
        ZebDebug().Write("CDiagMgr::Initialize:Could not create new DiagResult object");
        return wmi::OutOfMemory;
    }
    CBstr index = indexes.GetIndexFromMap(adapterKey);
    if (!index)
    {
        ZebDebug().Write("CDiagMgr::Initialize:GetIndexFromMap failed");
        return wmi::OutOfMemory;
    }
    const CBstr resultId = JoinKey(TestNumberText(descriptor.TestID).View(), index.View());
    result->SetLoaded();
    // Results are stored under the folded adapter key, whatever case the agent uses this time.
    if (LoadResult(session, resultId, FoldedKey(adapterKey), *result) != S_OK)
        return S_OK;
    const HRESULT hr = WithinMemory([&] { return results.AddObj(testKey, result); });
    if (FAILED(hr))
        ZebDebug().Write("CDiagMgr::Initialize:AddObj for result failed, hr = <%x>", hr);
    return S_OK;
}

HRESULT CDiagMgr::CState::LoadResult(CStoreSession& session, const CBstr& resultId, const CBstr& adapterKey,
                                     CDiagResult& result) const
{
    const CZebTrace trace("CDiagMgr::LoadResult");
    const HRESULT hr =
        WithinMemory([&] { return CResultsStore(session).LoadResult(resultId, adapterKey, result); });
    if (hr != S_OK && hr != STG_E_FILENOTFOUND)
        ZebDebug().Write("CDiagMgr::LoadResult:LoadResult failed, hr = <%x>", hr);
    return hr;
}

HRESULT CDiagMgr::CState::ReadConfiguration()
{
    CResultLogSettings configured;
    ReadRegistryNumber(kZebDiagKey, "Enable", configured.Enable);
    if (configured.Enable > 1)
    {
        ZebDebug().Write("CDiagMgr::Initialize:\"Enable\" should be a BOOLEAN!!");
        return wmi::Failed;
    }
    ReadRegistryNumber(kZebDiagKey, "FileAppend", configured.Append);
    if (configured.Append > 1)
    {
        // The value is FileAppend; support knows the text so.
        ZebDebug().Write("CDiagMgr::Initialize:\"Append\" should be a BOOLEAN!!");
        return wmi::Failed;
    }
    ReadRegistryNumber(kZebDiagKey, "MaxFileSize", configured.MaxFileSize);
    DWORD atOnce = 0;
    ReadRegistryNumber(kZebDiagKey, "StoreAfterRun", atOnce);
    storeAfterRun = atOnce != 0;
    char name[kRegistryText];
    const bool named = ReadRegistryString(kZebDiagKey, "LogFileName", name, sizeof(name));
    configured.Path = WidenText(paths.InstallDir + (named ? name : "ZebDiag.log"));
    log.Configure(std::move(configured));
    return S_OK;
}
