// Every property that the provider writes, in the VARIANT type in which it writes it.
#pragma once

#include "Common/src/com/Variant.h"

enum class Written
{
    Text,
    Time,
    Reference,
    Flag,
    Number,
    Byte,
    Texts,
    Numbers
};

inline CVariant Sample(Written kind)
{
    switch (kind)
    {
    case Written::Text:
        return CVariant::FromText(L"text");
    case Written::Time:
        return CVariant::FromText(L"20240501134510.000000+060");
    case Written::Reference:
        return CVariant::FromText(L"Tolva_DiagTest.Name=\"1@K\"");
    case Written::Flag:
        return CVariant::FromBool(true);
    case Written::Number:
        return CVariant::FromLong(3);
    case Written::Byte:
        return CVariant::FromByte(100);
    case Written::Texts:
        return CVariant::FromArray(SafeArrayCreateVector(VT_BSTR, 0, 0), VT_BSTR);
    default:
        return CVariant::FromArray(SafeArrayCreateVector(VT_I4, 0, 0), VT_I4);
    }
}

struct PropertyCase
{
    const char* name;
    const wchar_t* className;
    const wchar_t* property;
    Written kind;
};

inline constexpr PropertyCase kWritten[] = {
    {"DiagTest_Name", L"Tolva_DiagTest", L"Name", Written::Text},
    {"DiagTest_Caption", L"Tolva_DiagTest", L"Caption", Written::Text},
    {"DiagTest_IsInUse", L"Tolva_DiagTest", L"IsInUse", Written::Flag},
    {"DiagTest_Description", L"Tolva_DiagTest", L"Description", Written::Text},
    {"DiagTest_OtherCharacteristicDescription", L"Tolva_DiagTest", L"OtherCharacteristicDescription",
     Written::Text},
    {"DiagTest_Characteristics", L"Tolva_DiagTest", L"Characteristics", Written::Numbers},
    {"DiagTest_ResourcesUsed", L"Tolva_DiagTest", L"ResourcesUsed", Written::Numbers},
    {"DiagTest_CreationClassName", L"Tolva_DiagTest", L"CreationClassName", Written::Text},
    {"DiagTest_SystemCreationClassName", L"Tolva_DiagTest", L"SystemCreationClassName", Written::Text},
    {"DiagTest_SystemName", L"Tolva_DiagTest", L"SystemName", Written::Text},
    {"DiagResult_DiagnosticName", L"Tolva_DiagResult", L"DiagnosticName", Written::Text},
    {"DiagResult_DiagnosticCreationClassName", L"Tolva_DiagResult", L"DiagnosticCreationClassName",
     Written::Text},
    {"DiagResult_ExecutionID", L"Tolva_DiagResult", L"ExecutionID", Written::Text},
    {"DiagResult_TestCompletionTime", L"Tolva_DiagResult", L"TestCompletionTime", Written::Time},
    {"DiagResult_TestStartTime", L"Tolva_DiagResult", L"TestStartTime", Written::Time},
    {"DiagResult_IsPackage", L"Tolva_DiagResult", L"IsPackage", Written::Flag},
    {"DiagResult_PercentComplete", L"Tolva_DiagResult", L"PercentComplete", Written::Byte},
    {"DiagResult_OtherStateDescription", L"Tolva_DiagResult", L"OtherStateDescription", Written::Text},
    {"DiagResult_EstimatedTimeOfPerforming", L"Tolva_DiagResult", L"EstimatedTimeOfPerforming",
     Written::Number},
    {"DiagResult_TimeStamp", L"Tolva_DiagResult", L"TimeStamp", Written::Time},
    {"DiagResult_TestResults", L"Tolva_DiagResult", L"TestResults", Written::Texts},
    {"DiagResult_TestState", L"Tolva_DiagResult", L"TestState", Written::Number},
    {"DiagResult_DiagSystemCreationClassName", L"Tolva_DiagResult", L"DiagSystemCreationClassName",
     Written::Text},
    {"DiagResult_DiagSystemName", L"Tolva_DiagResult", L"DiagSystemName", Written::Text},
    {"DiagResult_QuickMode", L"Tolva_DiagResult", L"QuickMode", Written::Flag},
    {"DiagResult_ReportStatusMessages", L"Tolva_DiagResult", L"ReportStatusMessages", Written::Flag},
    {"DiagResult_PercentOfTestCoverage", L"Tolva_DiagResult", L"PercentOfTestCoverage", Written::Byte},
    {"DiagResult_HaltOnError", L"Tolva_DiagResult", L"HaltOnError", Written::Flag},
    {"DiagResult_ReportSoftErrors", L"Tolva_DiagResult", L"ReportSoftErrors", Written::Flag},
    {"DiagResult_TestWarningLevel", L"Tolva_DiagResult", L"TestWarningLevel", Written::Number},
    {"DiagSetting_SettingID", L"Tolva_DiagSetting", L"SettingID", Written::Text},
    {"DiagSetting_HaltOnError", L"Tolva_DiagSetting", L"HaltOnError", Written::Flag},
    {"DiagSetting_ReportSoftErrors", L"Tolva_DiagSetting", L"ReportSoftErrors", Written::Flag},
    {"DiagSetting_TestWarningLevel", L"Tolva_DiagSetting", L"TestWarningLevel", Written::Number},
    {"DiagSetting_QuickMode", L"Tolva_DiagSetting", L"QuickMode", Written::Flag},
    {"DiagSetting_ReportStatusMessages", L"Tolva_DiagSetting", L"ReportStatusMessages", Written::Flag},
    {"DiagSetting_PercentOfTestCoverage", L"Tolva_DiagSetting", L"PercentOfTestCoverage", Written::Byte},
    {"ExtendedStatus_Description", L"Tolva_ExtendedStatus", L"Description", Written::Text},
    {"ExtendedStatus_Operation", L"Tolva_ExtendedStatus", L"Operation", Written::Text},
    {"ExtendedStatus_ParameterInfo", L"Tolva_ExtendedStatus", L"ParameterInfo", Written::Text},
    {"ExtendedStatus_ProviderName", L"Tolva_ExtendedStatus", L"ProviderName", Written::Text},
    {"ExtendedStatus_StatusCode", L"Tolva_ExtendedStatus", L"StatusCode", Written::Number},
    {"ExtendedStatus_File", L"Tolva_ExtendedStatus", L"File", Written::Text},
    {"ExtendedStatus_Line", L"Tolva_ExtendedStatus", L"Line", Written::Number},
    {"ExtendedStatus_SessionHandle", L"Tolva_ExtendedStatus", L"SessionHandle", Written::Text},
    {"ExtendedStatus_RuleFailureReasons", L"Tolva_ExtendedStatus", L"RuleFailureReasons", Written::Texts},
    {"DiagResultForMSE_Result", L"Tolva_DiagResultForMSE", L"Result", Written::Reference},
    {"DiagResultForMSE_SystemElement", L"Tolva_DiagResultForMSE", L"SystemElement", Written::Reference},
    {"DiagResultForTest_DiagnosticResult", L"Tolva_DiagResultForTest", L"DiagnosticResult",
     Written::Reference},
    {"DiagResultForTest_DiagnosticTest", L"Tolva_DiagResultForTest", L"DiagnosticTest", Written::Reference},
    {"DiagSettingForTest_Element", L"Tolva_DiagSettingForTest", L"Element", Written::Reference},
    {"DiagSettingForTest_Setting", L"Tolva_DiagSettingForTest", L"Setting", Written::Reference},
    {"DiagTestForMSE_Antecedent", L"Tolva_DiagTestForMSE", L"Antecedent", Written::Reference},
    {"DiagTestForMSE_Dependent", L"Tolva_DiagTestForMSE", L"Dependent", Written::Reference},
    {"DiagTestForMSE_EstimatedTimeOfPerforming", L"Tolva_DiagTestForMSE", L"EstimatedTimeOfPerforming",
     Written::Number},
    {"DiagTestForMSE_IsExclusiveForMSE", L"Tolva_DiagTestForMSE", L"IsExclusiveForMSE", Written::Flag},
};
