#include "CDM/src/classes/SettingHandler.h"

#include "CDM/src/ZebTrace.h"
#include "CDM/src/classes/InstanceSender.h"
#include "CDM/src/classes/RecordClass.h"

namespace
{
struct CSettingSource
{
    const CSettingData& record;
    CInstanceSender& sender;
};
using Step = CInstanceStep<CSettingSource>;

// The kind of setting that carries values.
constexpr ULONG kWithValues = 1;

constexpr Step kStepsWithValues[] = {
    {L"SettingID", &PutText<&CSettingData::Key>,
     "CTolva_DiagSetting::SendInstance:SetProperty(SettingID) failed <%x>"},
    {L"HaltOnError", &PutNull, "CTolva_DiagSetting::SendInstance:SetProperty(HaltOnError) failed <%x>"},
    {L"ReportSoftErrors", &PutNull,
     "CTolva_DiagSetting::SendInstance:SetProperty(ReportSoftErrors) failed <%x>"},
    {L"TestWarningLevel", &PutNull,
     "CTolva_DiagSetting::SendInstance:SetProperty(TestWarningLevel) failed <%x>"},
    {L"QuickMode", &PutFlag<&CSettingData::QuickMode>,
     "CTolva_DiagSetting::SendInstance:SetProperty(QuickMode) failed <%x>"},
    {L"ReportStatusMessages", &PutFlag<&CSettingData::ReportStatusMessages>,
     "CTolva_DiagpSetting::SendInstance:SetProperty(ReportStatusMessages) failed <%x>"}, // sic
    {L"PercentOfTestCoverage", &PutByte<&CSettingData::PercentOfTestCoverage>,
     "CTolva_DiagSetting::SendInstance:SetProperty(PercentOfTestCoverage) failed <%x>"},
};

constexpr Step kStepsWithoutValues[] = {
    {L"SettingID", &PutText<&CSettingData::Key>,
     "CTolva_DiagSetting::SendInstance:SetProperty(SettingID) failed <%x>"},
    {L"HaltOnError", &PutNull, "CTolva_DiagSetting::SendInstance:SetProperty(HaltOnError) failed <%x>"},
    {L"ReportSoftErrors", &PutNull,
     "CTolva_DiagSetting::SendInstance:SetProperty(ReportSoftErrors) failed <%x>"},
    {L"TestWarningLevel", &PutNull,
     "CTolva_DiagSetting::SendInstance:SetProperty(TestWarningLevel) failed <%x>"},
    {L"QuickMode", &PutNull, "CTolva_DiagSetting::SendInstance:SetProperty(QuickMode) failed <%x>"},
    {L"ReportStatusMessages", &PutNull,
     "CTolva_DiagSetting::SendInstance:SetProperty(ReportStatusMessages) failed <%x>"},
    {L"PercentOfTestCoverage", &PutNull,
     "CTolva_DiagSetting::SendInstance:SetProperty(PercentOfTestCoverage) failed <%x>"},
};

HRESULT SendInstance(CInstanceSender& sender, const CSettingData& record)
{
    const std::span<const Step> steps =
        record.IsPackage == kWithValues ? std::span<const Step>(kStepsWithValues) : kStepsWithoutValues;
    return SendInstance<CSettingSource>(
        {record, sender}, "CTolva_DiagSetting::SendInstance:SpawnInstanceFromClass failed <%x>", steps);
}

constexpr CRecordClass<CSettingData> kServed = {
    .name = L"Tolva_DiagSetting",
    .key = L"SettingID",
    .keyForm = KeyForm::NamedOrSingle,
    .enumerate = &CDiagMgr::EnumSettings,
    .getData = &CDiagMgr::GetSettingData,
    .sendInstance = &SendInstance,
    .getObject = "CTolva_DiagSetting::GetObjectAsync",
    .getObjectDataFailed = "Tolva_DiagSetting::GetObjectAsync:GetSettingData failed, hr = <%x>",
    .getObjectSendFailed = "Tolva_DiagSetting::GetObjectAsync:SendInstance failed, hr = <%x>",
    .createInstanceEnum = "CTolva_DiagSetting::CreateInstanceEnumAsync",
    .enumFailed = "Tolva_DiagSetting::CreateInstanceEnumAsync:EnumSettings failed, hr = <%x>",
    .enumDataFailed = "Tolva_DiagSetting::CreateInstanceEnumAsync:GetSettingData failed, hr = <%x>",
};
} // namespace

const wchar_t* CTolva_DiagSetting::GetClassName() const noexcept
{
    return kServed.name;
}

HRESULT CTolva_DiagSetting::GetObjectAsync(const CParsedObjectPath& path, CWomContext& context,
                                           ComPtr<IWbemObjectSink> sink)
{
    return GetRecordObject(kServed, DiagMgr(), path, context, std::move(sink));
}

HRESULT CTolva_DiagSetting::CreateInstanceEnumAsync(CWomContext& context, ComPtr<IWbemObjectSink> sink)
{
    return EnumerateRecords(kServed, DiagMgr(), context, std::move(sink));
}

HRESULT CTolva_DiagSetting::PutInstanceAsync(CWomClassObject& instance, CWomContext&, CBstr&,
                                             ComPtr<IWbemObjectSink>)
{
    return UpdateInstanceAsync(instance);
}

HRESULT CTolva_DiagSetting::UpdateInstanceAsync(CWomClassObject& instance)
{
    const CZebTrace trace("CTolva_DiagSetting::UpdateInstanceAsync");
    CBstr settingId;
    HRESULT hr = instance.GetProperty(L"SettingID", settingId);
    if (Failed(hr, "CTolva_DiagSetting::UpdateInstanceAsync:GetProperty failed, hr = <%x>"))
        return hr;
    // sic: the answer is 0 or 1, so that this rejects nothing. UpdateSetting decides about unknown settings.
    if (static_cast<HRESULT>(DiagMgr().SettingExists(settingId.Get())) == engine::NotFound)
        return wmi::NotFound;
    hr = DiagMgr().UpdateSetting(settingId.Get(), instance);
    Failed(hr, "CTolva_DiagSetting::UpdateInstanceAsync: UpdateSetting failed, hr = <%x>");
    return hr;
}
