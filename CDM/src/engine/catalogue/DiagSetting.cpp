#include "CDM/src/engine/catalogue/DiagSetting.h"

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

void CDiagSetting::SetHaltOnError(BOOL value)
{
    const CWriteScope held(Lock());
    m_data.HaltOnError = value ? 1 : 0;
}

void CDiagSetting::SetReportSoftErrors(BOOL value)
{
    const CWriteScope held(Lock());
    m_data.ReportSoftErrors = value ? 1 : 0;
}

void CDiagSetting::SetReportStatusMessages(BOOL value)
{
    const CWriteScope held(Lock());
    m_data.ReportStatusMessages = value ? 1 : 0;
}

void CDiagSetting::SetQuickMode(BOOL value)
{
    const CWriteScope held(Lock());
    m_data.QuickMode = value ? 1 : 0;
}

void CDiagSetting::SetTestWarningLevel(USHORT value)
{
    const CWriteScope held(Lock());
    m_data.TestWarningLevel = value;
}

void CDiagSetting::SetPercentOfTestCoverage(BYTE value)
{
    const CWriteScope held(Lock());
    m_data.PercentOfTestCoverage = value;
}
