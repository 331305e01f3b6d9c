// The catalogue of the diagnostics manager: the adapters' tests as the agent told them at start-up, and the
// setting of each. Filled once; afterwards only tests and settings themselves change.
#pragma once

#include "CDM/src/engine/DiagAgent.h"
#include "CDM/src/engine/DiagMap.h"
#include "CDM/src/engine/catalogue/DiagSetting.h"
#include "CDM/src/engine/catalogue/DiagTest.h"

#include <functional>

class CVormAgentMgr;

class CCatalogue
{
  public:
    // Called for each test when it and its setting are filed. A failure ends the start-up.
    using OnTest =
        std::function<HRESULT(BSTR adapterKey, BSTR testKey, const VormTestDescriptor& descriptor)>;

    // The steps of the start-up. E_NOINTERFACE for an agent without diagnostics.
    HRESULT Connect(const CVormAgentMgr* agents);
    HRESULT CreateTests()
    {
        return m_tests.Create("CDiagMgr::Initialize:Could not create new DiagTestsMap object");
    }
    HRESULT CreateSettings()
    {
        return m_settings.Create("CDiagMgr::Initialize:Could not create new DiagSettingsMap object");
    }
    // wmi::Failed if no adapter has a test.
    HRESULT Fill(const CVormArray<BSTR>& adapters, const OnTest& onTest);

    const std::shared_ptr<CDiagAgent>& Agent() const noexcept { return m_agent; }
    const CDiagMap<CDiagTest>& Tests() const noexcept { return m_tests; }
    const CDiagMap<CDiagSetting>& Settings() const noexcept { return m_settings; }
    // The position of an adapter in the agent's list; a null BSTR for an unknown one. Throws std::bad_alloc.
    CBstr AdapterIndex(BSTR adapterKey) const { return m_indexes.GetIndexFromMap(adapterKey); }

    HRESULT GetSettingData(BSTR testKey, CSettingData* data) const;
    HRESULT UpdateSetting(BSTR settingKey, CWomClassObject& instance);

  private:
    void AddAdapter(ULONG index, BSTR adapterKey);
    HRESULT AddTests(BSTR adapterKey, const OnTest& onTest, bool& found);
    HRESULT AddTest(BSTR adapterKey, const VormTestDescriptor& descriptor, const OnTest& onTest);

    std::shared_ptr<CDiagAgent> m_agent; // released last
    CIndexMap m_indexes;
    CDiagMap<CDiagSetting> m_settings;
    CDiagMap<CDiagTest> m_tests;
};
