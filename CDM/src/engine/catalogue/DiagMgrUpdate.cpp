// The manager's update of a setting from the instance that a client has put.
#include "CDM/src/ZebDebug.h"
#include "CDM/src/engine/DiagMgrState.h"
#include "CDM/src/engine/EngineBoundary.h"
#include "Common/src/WomClassObject.h"

namespace
{
// Reads one property and stores it. A property that is null keeps the value that the setting has.
template <auto Store>
HRESULT TakeFlag(CWomClassObject& instance, const wchar_t* name, CDiagSetting& setting)
{
    BOOL value = FALSE;
    bool isNull = false;
    const HRESULT hr = instance.GetPropertyBool(name, value, &isNull);
    if (SUCCEEDED(hr) && !isNull)
        (setting.*Store)(value);
    return hr;
}

template <class Value, class Stored, auto Store>
HRESULT TakeNumber(CWomClassObject& instance, const wchar_t* name, CDiagSetting& setting)
{
    Value value = 0;
    bool isNull = false;
    const HRESULT hr = instance.GetProperty(name, value, &isNull);
    if (SUCCEEDED(hr) && !isNull)
        (setting.*Store)(static_cast<Stored>(value));
    return hr;
}

struct WritableProperty
{
    const wchar_t* Name;
    HRESULT (*Take)(CWomClassObject& instance, const wchar_t* name, CDiagSetting& setting);
    const char* Failure;
};

constexpr WritableProperty kProperties[] = {
    {L"HaltOnError", &TakeFlag<&CDiagSetting::SetHaltOnError>,
     "CDiagMgr::UpdateSetting:GetPropertyBool for HaltOnError failed <%x>"},
    {L"ReportSoftErrors", &TakeFlag<&CDiagSetting::SetReportSoftErrors>,
     "CDiagMgr::UpdateSetting:GetPropertyBool for ReportSoftErrors failed <%x>"},
    {L"ReportStatusMessages", &TakeFlag<&CDiagSetting::SetReportStatusMessages>,
     "CDiagMgr::UpdateSetting:GetPropertyBool for ReportStatusMessages failed <%x>"},
    {L"QuickMode", &TakeFlag<&CDiagSetting::SetQuickMode>,
     "CDiagMgr::UpdateSetting:GetPropertyBool for QuickMode failed <%x>"},
    {L"TestWarningLevel", &TakeNumber<DWORD, USHORT, &CDiagSetting::SetTestWarningLevel>,
     "CDiagMgr::UpdateSetting:GetProperty for TestWarningLevel failed <%x>"},
    {L"PercentOfTestCoverage", &TakeNumber<BYTE, BYTE, &CDiagSetting::SetPercentOfTestCoverage>,
     "CDiagMgr::UpdateSetting:GetProperty for PercentOfTestCoverage failed <%x>"},
};
} // namespace

HRESULT CDiagMgr::UpdateSetting(BSTR settingKey, CWomClassObject& instance)
{
    return WithinMemory(
        [&]
        {
            std::shared_ptr<CDiagSetting> setting;
            HRESULT hr = m_state->settings.GetObj(settingKey, setting);
            if (FAILED(hr))
            {
                ZebDebug().Write("CDiagMgr::UpdateSetting:GetObj failed <%x>", hr);
                return hr;
            }
            setting->SetKey(FoldedKey(settingKey));
            for (const WritableProperty& property : kProperties)
            {
                hr = property.Take(instance, property.Name, *setting);
                if (FAILED(hr))
                {
                    ZebDebug().Write(property.Failure, hr);
                    return hr;
                }
            }
            return S_OK;
        });
}
