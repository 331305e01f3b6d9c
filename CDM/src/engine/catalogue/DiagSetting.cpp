#include "CDM/src/engine/catalogue/DiagSetting.h"

#include "CDM/src/ZebTrace.h"
#include "Common/src/WomClassObject.h"

namespace
{
// Reads one property and stores it.
template <ULONG CSettingData::*Member>
HRESULT TakeFlag(CWomClassObject& instance, const wchar_t* name, CDiagSetting& setting)
{
    BOOL value = FALSE;
    bool isNull = false;
    const HRESULT hr = instance.GetPropertyBool(name, value, &isNull);
    if (SUCCEEDED(hr) && !isNull)
        setting.Set<ULONG>(Member, value ? 1 : 0);
    return hr;
}

template <class Read, class Stored, Stored CSettingData::*Member>
HRESULT TakeNumber(CWomClassObject& instance, const wchar_t* name, CDiagSetting& setting)
{
    Read value = 0;
    bool isNull = false;
    const HRESULT hr = instance.GetProperty(name, value, &isNull);
    if (SUCCEEDED(hr) && !isNull)
        setting.Set(Member, static_cast<Stored>(value));
    return hr;
}

struct WritableProperty
{
    const wchar_t* Name;
    HRESULT (*Take)(CWomClassObject& instance, const wchar_t* name, CDiagSetting& setting);
    const char* Failure;
};

constexpr WritableProperty kProperties[] = {
    {L"HaltOnError", &TakeFlag<&CSettingData::HaltOnError>,
     "CDiagMgr::UpdateSetting:GetPropertyBool for HaltOnError failed <%x>"},
    {L"ReportSoftErrors", &TakeFlag<&CSettingData::ReportSoftErrors>,
     "CDiagMgr::UpdateSetting:GetPropertyBool for ReportSoftErrors failed <%x>"},
    {L"ReportStatusMessages", &TakeFlag<&CSettingData::ReportStatusMessages>,
     "CDiagMgr::UpdateSetting:GetPropertyBool for ReportStatusMessages failed <%x>"},
    {L"QuickMode", &TakeFlag<&CSettingData::QuickMode>,
     "CDiagMgr::UpdateSetting:GetPropertyBool for QuickMode failed <%x>"},
    {L"TestWarningLevel", &TakeNumber<DWORD, USHORT, &CSettingData::TestWarningLevel>,
     "CDiagMgr::UpdateSetting:GetProperty for TestWarningLevel failed <%x>"},
    {L"PercentOfTestCoverage", &TakeNumber<BYTE, BYTE, &CSettingData::PercentOfTestCoverage>,
     "CDiagMgr::UpdateSetting:GetProperty for PercentOfTestCoverage failed <%x>"},
};
} // namespace

CDiagSetting::CDiagSetting(BSTR key, bool senderResponder) : CDiagObject(key)
{
    m_data.IsPackage = senderResponder ? 1 : 0;
}

CSettingData CDiagSetting::Data() const
{
    const CReadScope held(Lock());
    CSettingData data = m_data;
    data.Key = LockedKey();
    return data;
}

HRESULT CDiagSetting::Update(CWomClassObject& instance)
{
    for (const WritableProperty& property : kProperties)
    {
        const HRESULT hr = property.Take(instance, property.Name, *this);
        if (Failed(hr, property.Failure))
            return hr;
    }
    return S_OK;
}
