#include "CDM/src/engine/catalogue/Catalogue.h"

#include "CDM/src/ZebDebug.h"
#include "CDM/src/ZebTrace.h"
#include "CDM/src/engine/EngineStatus.h"
#include "CDM/src/engine/naming/DiagKeys.h"
#include "Common/src/VormAgentMgr.h"

namespace
{
// What AddTest gives to leave out the rest of an adapter's tests.
constexpr HRESULT kSkipAdapter = S_FALSE;

HRESULT QueryAgent(const CVormAgentMgr* agents, std::shared_ptr<CDiagAgent>& agent)
{
    if (!agents || !agents->Root())
        return E_POINTER;
    return CDiagAgent::Query(agents->Root(), agent);
}
} // namespace

HRESULT CCatalogue::Connect(const CVormAgentMgr* agents)
{
    // Callers know no other failure, whatever the cause.
    return Failed(QueryAgent(agents, m_agent), "CDiagMgr::Initialize:Vorl QueryInterface failed, hr = <%x>")
               ? E_NOINTERFACE
               : S_OK;
}

HRESULT CCatalogue::Fill(const CVormArray<BSTR>& adapters, const OnTest& onTest)
{
    HRESULT hr = S_OK;
    bool found = false;
    for (ULONG i = 0; i < adapters.Count() && SUCCEEDED(hr); ++i)
    {
        AddAdapter(i, adapters.Items()[i]);
        hr = AddTests(adapters.Items()[i], onTest, found);
    }
    if (FAILED(hr) || found)
        return hr;
    ZebDebug().Write("CDiagMgr::Initialize:Not a single test found.");
    return wmi::Failed;
}

void CCatalogue::AddAdapter(ULONG index, BSTR adapterKey)
{
    const HRESULT hr = WithinMemory(
        [&]
        {
            const CBstr text = AdapterIndexText(index);
            ZebDebug().Write(L"CDiagMgr::Initialize: Index = <%s>", text.Text());
            ZebDebug().Write(L"CDiagMgr::Initialize: AdapterKey = <%s>", adapterKey ? adapterKey : L"");
            return m_indexes.AddIndexToMap(adapterKey, text);
        });
    Failed(hr, "CDiagMgr::Initialize:AddIndexToMap failed, hr = <%x>");
}

HRESULT CCatalogue::AddTests(BSTR adapterKey, const OnTest& onTest, bool& found)
{
    CVormArray<VormTestDescriptor> descriptors;
    const HRESULT hr = m_agent->EnumDiagTests(adapterKey, descriptors);
    if (Failed(hr, "CDiagMgr::Initialize:EnumDiagTests failed, hr = <%x>") || descriptors.Count() == 0)
        return S_OK;
    found = true;
    HRESULT added = S_OK;
    for (ULONG i = 0; i < descriptors.Count() && added == S_OK; ++i)
        added = AddTest(adapterKey, descriptors.Items()[i], onTest);
    return FAILED(added) ? added : S_OK;
}

HRESULT CCatalogue::AddTest(BSTR adapterKey, const VormTestDescriptor& descriptor, const OnTest& onTest)
{
    const CBstr testKey = MakeTestKey(descriptor.TestID, adapterKey);
    const auto test = TryMake<CDiagTest>(testKey.Get(), descriptor);
    if (!test)
        return OutOfMemory("CDiagMgr::Initialize:Could not create new DiagTest object");
    HRESULT hr = WithinMemory([&] { return m_tests.AddObj(testKey.Get(), test); });
    if (Failed(hr, "CDiagMgr::Initialize:AddObj for test failed, hr = <%x>"))
        return kSkipAdapter;
    const auto setting = TryMake<CDiagSetting>(testKey.Get(), test->SenderResponder());
    if (!setting)
        return OutOfMemory("CDiagMgr::Initialize:Could not create new DiagSetting object");
    hr = WithinMemory([&] { return m_settings.AddObj(testKey.Get(), setting); });
    if (Failed(hr, "CDiagMgr::Initialize:AddObj for setting failed, hr = <%x>"))
        return kSkipAdapter;
    return onTest(adapterKey, testKey.Get(), descriptor);
}

HRESULT CCatalogue::GetSettingData(BSTR testKey, CSettingData* data) const
{
    return ReadObject(m_settings, testKey, "CDiagMgr::GetSettingData:GetObj failed, hr = <%x>", data);
}

HRESULT CCatalogue::UpdateSetting(BSTR settingKey, CWomClassObject& instance)
{
    return WithObject(m_settings, settingKey, "CDiagMgr::UpdateSetting:GetObj failed <%x>",
                      [&](CDiagSetting& setting)
                      {
                          setting.SetKey(FoldedKey(settingKey));
                          return setting.Update(instance);
                      });
}
