// What each of the four association classes looks like from outside.
#pragma once

#include "CDM/src/ZebHelpers.h"
#include "CDM/src/classes/Associations.h"

#include <memory>
#include <string>
#include <vector>

inline constexpr wchar_t kTest[] = L"Tolva_DiagTest.Name=\\\"1@A\\\"";
inline constexpr wchar_t kResult[] = L"Tolva_DiagResult.DiagnosticName=\\\"1@A\\\",ExecutionID=\\\"A\\\"";
inline constexpr wchar_t kSetting[] = L"Tolva_DiagSetting.SettingID=\\\"1@A\\\"";
inline constexpr wchar_t kAdapter[] = L"Tolva_EthernetAdapter.DeviceID=\\\"A\\\"";

inline std::wstring ResultReference(const std::wstring& key, const std::wstring& adapter)
{
    return L"Tolva_DiagResult.DiagnosticCreationClassName=\"Tolva_DiagTest\",DiagnosticName=\"" + key +
           L"\",ExecutionID=\"" + adapter +
           L"\",DiagSystemCreationClassName=\"Win32_ComputerSystem\",DiagSystemName=\"" + ComputerName() +
           L"\"";
}

inline std::wstring SystemKeys(const wchar_t* creationClass)
{
    return std::wstring(L",CreationClassName=\"") + creationClass +
           L"\",SystemCreationClassName=\"Win32_ComputerSystem\",SystemName=\"" + ComputerName() + L"\"";
}

struct Association
{
    const char* name;
    std::unique_ptr<CWomClassHandler> (*create)();
    const wchar_t* className;
    const wchar_t* first; // the identifying reference
    const wchar_t* firstPath;
    const wchar_t* second;
    const wchar_t* secondPath;
    const char* firstParse;
    const char* secondParse;
    const char* sendFailed;
    const wchar_t* enumerates;
    const char* enumFailed;
    const char* createInstanceEnum;
    std::vector<const char*> unbuilt; // what is traced for a reference that cannot be made
    // The properties of the instance with the reduced key set.
    const wchar_t* properties[2];
    std::wstring reduced[2];
    std::wstring full[2];
    std::vector<const wchar_t*> others = {}; // the properties behind the references
};

template <class Handler>
std::unique_ptr<CWomClassHandler> Create()
{
    return std::make_unique<Handler>();
}

inline const std::wstring kTestReduced = L"Tolva_DiagTest.Name=\"1@A\"";
inline const std::wstring kAdapterReduced = L"Tolva_EthernetAdapter.DeviceID=\"A\"";

inline const Association& TestForMSE()
{
    static const Association row = {
        "TestForMSE",
        &Create<CTolva_DiagTestMSEAssoc>,
        L"Tolva_DiagTestForMSE",
        L"Antecedent",
        kTest,
        L"Dependent",
        kAdapter,
        "CTolva_DiagTestMSEAssoc::GetObjectAsync: Parsing for Test reference failed",
        "CTolva_DiagTestMSEAssoc::GetObjectAsync: Parsing for SystemElement reference failed",
        "CTolva_DiagResultMSEAssoc::GetObjectAsync::SendInstance failed, hr = <800706ba>",
        L"EnumTests",
        "Tolva_DiagTestMSEAssoc::CreateInstanceEnumAsync:EnumTests failed, hr = <80004003>",
        "CTolva_DiagTestMSEAssoc::CreateInstanceEnumAsync",
        {"CTolva_DiagTestMSEAssoc::SendInstance: ParseForAdapterKey failed",
         "CTolva_DiagTestMSEAssoc::SendInstance: CreateTestReference failed",
         "CTolva_DiagTestMSEAssoc::SendInstance:CreateSysElemReference failed"},
        {L"Antecedent", L"Dependent"},
        {kTestReduced, kAdapterReduced},
        {kTestReduced + SystemKeys(L"Tolva_DiagTest"),
         kAdapterReduced + SystemKeys(L"Tolva_EthernetAdapter")},
        {L"EstimatedTimeOfPerforming", L"IsExclusiveForMSE"}};
    return row;
}

inline const Association& ResultForMSE()
{
    static const Association row = {
        "ResultForMSE",
        &Create<CTolva_DiagResultMSEAssoc>,
        L"Tolva_DiagResultForMSE",
        L"Result",
        kResult,
        L"SystemElement",
        kAdapter,
        "CTolva_DiagResultMSEAssoc::GetObjectAsync: Parsing for Result reference failed",
        "CTolva_DiagResultMSEAssoc::GetObjectAsync: Parsing for SystemElement reference failed",
        "CTolva_DiagResultMSEAssoc::GetObjectAsync::SendInstance failed, hr = <800706ba>",
        L"EnumResults",
        "CTolva_DiagResultMSEAssoc::CreateInstanceEnumAsync:EnumResults failed, hr = <80004003>",
        "CTolva_DiagResultMSEAssoc::CreateInstanceEnumAsync",
        {"CTolva_DiagResultMSEAssoc::SendInstance:ParseForAdapterKey failed",
         "CTolva_DiagResultMSEAssoc::SendInstance:CreateResultReference failed",
         "CTolva_DiagResultMSEAssoc::SendInstance:CreateSysElemReference failed"},
        {L"Result", L"SystemElement"},
        {ResultReference(L"1@A", L"A"), kAdapterReduced},
        {ResultReference(L"1@A", L"A"), kAdapterReduced + SystemKeys(L"Tolva_EthernetAdapter")}};
    return row;
}

inline const Association& ResultForTest()
{
    static const Association row = {
        "ResultForTest",
        &Create<CTolva_DiagResultTestAssoc>,
        L"Tolva_DiagResultForTest",
        L"DiagnosticResult",
        kResult,
        L"DiagnosticTest",
        kTest,
        "CTolva_DiagResultTestAssoc::GetObjectAsync: Parsing for Result reference failed",
        "CTolva_DiagResultTestAssoc::GetObjectAsync: Parsing for Test reference failed",
        "CTolva_DiagResultTestAssoc::GetObjectAsync::SendInstance failed, hr = <800706ba>",
        L"EnumResults",
        "CTolva_DiagResultTestAssoc::CreateInstanceEnumAsync:EnumResults failed, hr = <80004003>",
        "CTolva_DiagResultTestAssoc::CreateInstanceEnumAsync",
        {"CTolva_DiagResultTestAssoc::SendInstance:CreateTestReference failed",
         "CTolva_DiagResultTestAssoc::SendInstance:CreateResultReference failed"},
        {L"DiagnosticTest", L"DiagnosticResult"},
        {kTestReduced, ResultReference(L"1@A", L"A")},
        {kTestReduced + SystemKeys(L"Tolva_DiagTest"), ResultReference(L"1@A", L"A")}};
    return row;
}

inline const Association& SettingForTest()
{
    static const std::wstring setting = L"Tolva_DiagSetting.SettingID=\"1@A\"";
    static const Association row = {
        "SettingForTest",
        &Create<CTolva_DiagSettingTestAssoc>,
        L"Tolva_DiagSettingForTest",
        L"Setting",
        kSetting,
        L"Element",
        kTest,
        "CTolva_DiagSettingTestAssoc::GetObjectAsync: Parsing for Setting reference failed",
        "CTolva_DiagSettingTestAssoc::GetObjectAsync: Parsing for Test reference failed",
        "CTolva_DiagSettingTestAssoc::GetObjectAsync::SendInstance failed, hr = <800706ba>",
        L"EnumTests",
        "Tolva_DiagSettingTestAssoc::CreateInstanceEnumAsync:EnumTests failed, hr = <80004003>",
        "CTolva_DiagSettingTestAssoc::CreateInstanceEnumAsync",
        {"CTolva_DiagSettingTestAssoc::SendInstance:CreateTestReference failed",
         "CTolva_DiagSettingTestAssoc::SendInstance:CreateSettingReference failed"},
        {L"Element", L"Setting"},
        {kTestReduced, setting},
        {kTestReduced + SystemKeys(L"Tolva_DiagTest"), setting}};
    return row;
}
