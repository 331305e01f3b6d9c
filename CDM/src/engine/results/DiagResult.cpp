#include "CDM/src/engine/results/DiagResult.h"

#include "CDM/src/engine/naming/DiagKeys.h"

#include <limits>
#include <utility>

void CResultMessages::Add(ULONG stringId, ULONG value)
{
    AddStringID(stringId);
    AddMessageValue(value);
    CommitMessage();
}

CDiagResult::CDiagResult(BSTR key, ULONG diagnosticNameStringId, bool senderResponder) : CDiagObject(key)
{
    m_data.DiagnosticCreationClassName = CBstr(L"Tolva_DiagTest");
    m_data.ExecutionID = ParseForAdapterKey(CBstr(key).View());
    m_data.DiagnosticNameStringID = diagnosticNameStringId;
    m_data.SenderResponder = senderResponder ? 1 : 0;
}

CResultData CDiagResult::Data() const
{
    const CReadScope held(Lock());
    CResultData data = m_data;
    data.ResultID = LockedKey();
    return data;
}

void CDiagResult::SetData(CResultData data)
{
    data.ResultID = CBstr();
    const CWriteScope held(Lock());
    std::swap(m_data, data);
}

HRESULT CDiagResult::SetTestState(TestState state)
{
    if (state > TestStateStopped)
        return E_INVALIDARG;
    Set(&CResultData::TestState, state);
    return S_OK;
}

HRESULT CDiagResult::SetPercentComplete(LONGLONG percent)
{
    if (percent < 0 || percent > std::numeric_limits<BYTE>::max())
        return E_INVALIDARG;
    Set(&CResultData::PercentComplete, static_cast<BYTE>(percent));
    return S_OK;
}

void CDiagResult::SetMessages(CResultMessages messages)
{
    const CWriteScope held(Lock());
    std::swap(m_data.StringIDs, messages.m_stringIds);
    std::swap(m_data.TestMessages, messages.m_values);
    m_data.MessageCount = messages.m_count;
}

void CDiagResult::SetLoaded() noexcept
{
    m_change = NextChange();
    m_asLoaded = true;
}

void CDiagResult::SetChanged() noexcept
{
    m_asLoaded = false;
    m_change = NextChange();
}

ULONGLONG CDiagResult::NextChange() noexcept
{
    static std::atomic<ULONGLONG> last{0};
    return ++last;
}

void CDiagResult::SetSettingValues(const CSettingData& setting)
{
    const CWriteScope held(Lock());
    m_data.TestWarningLevel = setting.TestWarningLevel;
    m_data.ReportSoftErrors = setting.ReportSoftErrors;
    m_data.ReportStatusMessages = setting.ReportStatusMessages;
    m_data.PercentOfTestCoverage = setting.PercentOfTestCoverage;
    m_data.QuickMode = setting.QuickMode;
    m_data.HaltOnError = setting.HaltOnError;
}
