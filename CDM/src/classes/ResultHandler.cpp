#include "CDM/src/classes/ResultHandler.h"

#include "CDM/src/classes/InstanceSender.h"
#include "CDM/src/classes/RecordClass.h"
#include "CDM/src/classes/ResultLines.h"
#include "CDM/src/engine/results/CimDateTime.h"

namespace
{
constexpr wchar_t kSystemClass[] = L"Win32_ComputerSystem";

// The kind of test whose runs are made with settings.
constexpr ULONG kSenderResponder = 1;

struct CResultSource
{
    const CResultData& record;
    CInstanceSender& sender;
    CCoTaskMem<wchar_t> timeStamp = CCoTaskMem<wchar_t>();
    CBstr title = CBstr();
    std::vector<CBstr> lines = {};
};
using Step = CInstanceStep<CResultSource>;

CCoTaskMem<wchar_t> DateTimeText(const std::optional<SYSTEMTIME>& time)
{
    CCoTaskMem<wchar_t> text;
    ConvertSystemTimeToString(time ? &*time : nullptr, text);
    return text;
}

// A moment that has not come yet is null.
HRESULT PutDateTime(CWomClassObject& instance, const wchar_t* property, const CCoTaskMem<wchar_t>& text)
{
    return text ? instance.SetProperty(property, text.Get()) : instance.SetPropertyNull(property);
}

template <auto Member>
HRESULT PutTime(CWomClassObject& instance, const wchar_t* property, CResultSource& source)
{
    return PutDateTime(instance, property, DateTimeText(source.record.*Member));
}

HRESULT PutTimeStamp(CWomClassObject& instance, const wchar_t* property, CResultSource& source)
{
    source.timeStamp = DateTimeText(source.record.TimeStamp);
    return PutDateTime(instance, property, source.timeStamp);
}

HRESULT FetchTitle(CWomClassObject&, const wchar_t*, CResultSource& source)
{
    return source.sender.Context().GetResourceString(source.record.DiagnosticNameStringID, "_8023",
                                                     source.title);
}

HRESULT PutTestState(CWomClassObject& instance, const wchar_t* property, CResultSource& source)
{
    return instance.SetProperty(property, static_cast<long>(static_cast<USHORT>(source.record.TestState)));
}

HRESULT BuildLines(CWomClassObject&, const wchar_t*, CResultSource& source)
{
    return BuildResultLines(source.sender.Context(), source.record,
                            source.timeStamp ? source.timeStamp.Get() : L"", source.title.Text(),
                            source.lines);
}

HRESULT PutLines(CWomClassObject& instance, const wchar_t* property, CResultSource& source)
{
    return instance.SetProperty(property, source.lines);
}

// Settings that the run was made with; null for a run of any other test.
template <auto Member>
HRESULT PutSettingFlag(CWomClassObject& instance, const wchar_t* property, CResultSource& source)
{
    return source.record.SenderResponder == kSenderResponder ? PutFlag<Member>(instance, property, source)
                                                             : PutNull(instance, property, source);
}

template <auto Member>
HRESULT PutSettingByte(CWomClassObject& instance, const wchar_t* property, CResultSource& source)
{
    return source.record.SenderResponder == kSenderResponder ? PutByte<Member>(instance, property, source)
                                                             : PutNull(instance, property, source);
}

constexpr Step kSteps[] = {
    {L"DiagnosticName", &PutText<&CResultData::ResultID>,
     "CTolva_DiagResult::SendInstance:SetProperty(ResultID) failed <%x>"}, // sic
    {L"DiagnosticCreationClassName", &PutText<&CResultData::DiagnosticCreationClassName>,
     "CTolva_DiagResult::SendInstance:SetProperty(DiagnosticCreationClassName) failed <%x>"},
    {L"ExecutionID", &PutText<&CResultData::ExecutionID>,
     "CTolva_DiagResult::SendInstance:SetProperty(ExecutionID) failed <%x>"},
    {L"TestCompletionTime", &PutTime<&CResultData::TestCompletionTime>,
     "CTolva_DiagResult::SendInstance:SetProperty(TestCompletionTime) failed <%x>"},
    {L"TestStartTime", &PutTime<&CResultData::TestStartTime>,
     "CTolva_DiagResult::SendInstance:SetProperty(TestStartTime) failed <%x>"},
    {L"IsPackage", &PutFlag<&CResultData::IsPackage>,
     "CTolva_DiagResult::SendInstance:SetProperty(IsPackage) failed <%x>"},
    {L"PercentComplete", &PutByte<&CResultData::PercentComplete>,
     "CTolva_DiagResult::SendInstance:SetProperty(PercentComplete) failed <%x>"},
    {L"OtherStateDescription", &PutNull,
     "CTolva_DiagResult::SendInstance:SetProperty(OtherStateDescription) failed <%x>"},
    {L"EstimatedTimeOfPerforming", &PutNull,
     "CTolva_DiagResult::SendInstance:SetProperty(EstimatedTimeOfPerforming) failed <%x>"},
    {L"TimeStamp", &PutTimeStamp, "CTolva_DiagResult::SendInstance:SetProperty(TimeStamp) failed <%x>"},
    {nullptr, &FetchTitle, "CTolva_DiagResult::SendInstance:GetResourceString failed <%x>"},
    {nullptr, &BuildLines, nullptr},
    {L"TestResults", &PutLines, "CTolva_DiagResult::SendInstance:SetProperty(TestResults) failed <%x>"},
    {L"TestState", &PutTestState, "CTolva_DiagResult::SendInstance:SetProperty(TestState) failed <%x>"},
    {L"DiagSystemCreationClassName", &PutConstant<kSystemClass>,
     "CTolva_DiagResult::SendInstance:SetProperty(DiagSystemCreationClassName) failed <%x>"},
    {L"DiagSystemName", &PutComputerName,
     "CTolva_DiagResult::SendInstance:SetProperty(SystemName) failed <%x>"}, // sic
    {L"QuickMode", &PutSettingFlag<&CResultData::QuickMode>,
     "CTolva_DiagResult::SendInstance:SetProperty(QuickMode) failed <%x>"},
    {L"ReportStatusMessages", &PutSettingFlag<&CResultData::ReportStatusMessages>,
     "CTolva_DiagResult::SendInstance:SetProperty(ReportStatusMessages) failed <%x>"},
    {L"PercentOfTestCoverage", &PutSettingByte<&CResultData::PercentOfTestCoverage>,
     "CTolva_DiagResult::SendInstance:SetProperty(PercentOfTestCoverage) failed <%x>"},
    {L"HaltOnError", &PutNull, "CTolva_DiagResult::SendInstance:SetProperty(HaltOnError) failed <%x>"},
    {L"ReportSoftErrors", &PutNull,
     "CTolva_DiagResult::SendInstance:SetProperty(ReportSoftErrors) failed <%x>"},
    {L"TestWarningLevel", &PutNull,
     "CTolva_DiagResult::SendInstance:SetProperty(TestWarningLevel) failed <%x>"},
};

HRESULT SendInstance(CInstanceSender& sender, const CResultData& record)
{
    return SendInstance<CResultSource>(
        {record, sender}, "CTolva_DiagResult::SendInstance:SpawnInstanceFromClass failed <%x>", kSteps);
}

constexpr CRecordClass<CResultData> kServed = {
    .name = L"Tolva_DiagResult",
    .key = L"DiagnosticName", // identifies a result alone; the other two keys are not looked at
    .keyForm = KeyForm::Named,
    .enumerate = &CDiagMgr::EnumResults,
    .getData = &CDiagMgr::GetResultData,
    .sendInstance = &SendInstance,
    .getObject = "CTolva_DiagResult::GetObjectAsync",
    .getObjectDataFailed = "Tolva_DiagResult::GetObjectAsync:GetResultData failed, hr = <%x>",
    .getObjectSendFailed = "Tolva_DiagResult::GetObjectAsync:SendInstance failed, hr = <%x>",
    .createInstanceEnum = "CTolva_DiagResult::CreateInstanceEnumAsync",
    .enumFailed = "Tolva_DiagResult::CreateInstanceEnumAsync:EnumResults failed, hr = <%x>",
    .enumDataFailed = "Tolva_DiagResult::CreateInstanceEnumAsync:GetResultData failed, hr = <%x>",
};
} // namespace

const wchar_t* CTolva_DiagResult::GetClassName() const noexcept
{
    return kServed.name;
}

HRESULT CTolva_DiagResult::GetObjectAsync(const CParsedObjectPath& path, CWomContext& context,
                                          ComPtr<IWbemObjectSink> sink)
{
    return GetRecordObject(kServed, DiagMgr(), path, context, std::move(sink));
}

HRESULT CTolva_DiagResult::CreateInstanceEnumAsync(CWomContext& context, ComPtr<IWbemObjectSink> sink)
{
    return EnumerateRecords(kServed, DiagMgr(), context, std::move(sink));
}
