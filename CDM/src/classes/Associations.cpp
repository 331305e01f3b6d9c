#include "CDM/src/classes/Associations.h"

#include "CDM/src/engine/DiagMgr.h"
#include "CDM/src/engine/naming/DiagKeys.h"

namespace
{
CBstr SettingReference(std::wstring_view key, bool)
{
    return CreateSettingReference(key);
}

CBstr ResultReference(std::wstring_view key, bool)
{
    return CreateResultReference(key);
}

HRESULT PutExclusiveUse(CWomClassObject& instance)
{
    const HRESULT time = instance.SetPropertyNull(L"EstimatedTimeOfPerforming");
    const HRESULT exclusive = instance.SetPropertyBool(L"IsExclusiveForMSE", TRUE);
    return FAILED(time) ? time : exclusive;
}

constexpr CAssociationRow kTestForMSE = {
    .name = L"Tolva_DiagTestForMSE",
    .references = {{L"Antecedent", MadeFrom::Identifier, &CreateTestReference,
                    "CTolva_DiagTestMSEAssoc::SendInstance: CreateTestReference failed"},
                   {L"Dependent", MadeFrom::AdapterKey, &CreateSysElemReference,
                    "CTolva_DiagTestMSEAssoc::SendInstance:CreateSysElemReference failed"}},
    .adapterKeyFailed = "CTolva_DiagTestMSEAssoc::SendInstance: ParseForAdapterKey failed",
    .putOthers = &PutExclusiveUse,
    .enumerate = &CDiagMgr::EnumTests,
    .createInstanceEnum = "CTolva_DiagTestMSEAssoc::CreateInstanceEnumAsync",
    .enumFailed = "Tolva_DiagTestMSEAssoc::CreateInstanceEnumAsync:EnumTests failed, hr = <%x>",
    .getObject = "CTolva_DiagTestMSEAssoc::GetObjectAsync",
    .identifying =
        {
            .property = L"Antecedent",
            .parseFailed = "CTolva_DiagTestMSEAssoc::GetObjectAsync: Parsing for Test reference failed",
            .key = L"Name",
            .keyMissing = "CTolva_DiagTestMSEAssoc::GetObjectAsync:Invalid test",
        },
    .other =
        {
            .property = L"Dependent",
            .parseFailed =
                "CTolva_DiagTestMSEAssoc::GetObjectAsync: Parsing for SystemElement reference failed",
            .key = L"DeviceID",
            .adapterKeyFailed = "CTolva_DiagTestMSEAssoc::GetObjectAsync: ParseForAdapterKey failed",
            .otherAdapter = "CTolva_DiagTestMSEAssoc::GetObjectAsync:Invalid MSE",
        },
    .getObjectSendFailed = "CTolva_DiagResultMSEAssoc::GetObjectAsync::SendInstance failed, hr = <%x>", // sic
};

constexpr CAssociationRow kResultForMSE = {
    .name = L"Tolva_DiagResultForMSE",
    .references = {{L"Result", MadeFrom::Identifier, &ResultReference,
                    "CTolva_DiagResultMSEAssoc::SendInstance:CreateResultReference failed"},
                   {L"SystemElement", MadeFrom::AdapterKey, &CreateSysElemReference,
                    "CTolva_DiagResultMSEAssoc::SendInstance:CreateSysElemReference failed"}},
    .adapterKeyFailed = "CTolva_DiagResultMSEAssoc::SendInstance:ParseForAdapterKey failed",
    .enumerate = &CDiagMgr::EnumResults,
    .createInstanceEnum = "CTolva_DiagResultMSEAssoc::CreateInstanceEnumAsync",
    .enumFailed = "CTolva_DiagResultMSEAssoc::CreateInstanceEnumAsync:EnumResults failed, hr = <%x>",
    .getObject = "CTolva_DiagResultMSEAssoc::GetObjectAsync",
    .identifying =
        {
            .property = L"Result",
            .parseFailed = "CTolva_DiagResultMSEAssoc::GetObjectAsync: Parsing for Result reference failed",
            .key = L"DiagnosticName",
            .keyForm = KeyForm::Named,
            .exists = &CDiagMgr::ResultExists,
        },
    .other =
        {
            .property = L"SystemElement",
            .parseFailed =
                "CTolva_DiagResultMSEAssoc::GetObjectAsync: Parsing for SystemElement reference failed",
            .key = L"DeviceID",
        },
    .getObjectSendFailed = "CTolva_DiagResultMSEAssoc::GetObjectAsync::SendInstance failed, hr = <%x>",
};

constexpr CAssociationRow kResultForTest = {
    .name = L"Tolva_DiagResultForTest",
    .references = {{L"DiagnosticTest", MadeFrom::Identifier, &CreateTestReference,
                    "CTolva_DiagResultTestAssoc::SendInstance:CreateTestReference failed"},
                   {L"DiagnosticResult", MadeFrom::Identifier, &ResultReference,
                    "CTolva_DiagResultTestAssoc::SendInstance:CreateResultReference failed"}},
    .enumerate = &CDiagMgr::EnumResults,
    .createInstanceEnum = "CTolva_DiagResultTestAssoc::CreateInstanceEnumAsync",
    .enumFailed = "CTolva_DiagResultTestAssoc::CreateInstanceEnumAsync:EnumResults failed, hr = <%x>",
    .getObject = "CTolva_DiagResultTestAssoc::GetObjectAsync",
    .identifying =
        {
            .property = L"DiagnosticResult",
            .parseFailed = "CTolva_DiagResultTestAssoc::GetObjectAsync: Parsing for Result reference failed",
            .key = L"DiagnosticName",
            .keyForm = KeyForm::Named,
            .exists = &CDiagMgr::ResultExists,
        },
    .other =
        {
            .property = L"DiagnosticTest",
            .parseFailed = "CTolva_DiagResultTestAssoc::GetObjectAsync: Parsing for Test reference failed",
            .key = L"Name",
        },
    .getObjectSendFailed = "CTolva_DiagResultTestAssoc::GetObjectAsync::SendInstance failed, hr = <%x>",
};

constexpr CAssociationRow kSettingForTest = {
    .name = L"Tolva_DiagSettingForTest",
    .references = {{L"Element", MadeFrom::Identifier, &CreateTestReference,
                    "CTolva_DiagSettingTestAssoc::SendInstance:CreateTestReference failed"},
                   {L"Setting", MadeFrom::Identifier, &SettingReference,
                    "CTolva_DiagSettingTestAssoc::SendInstance:CreateSettingReference failed"}},
    .enumerate = &CDiagMgr::EnumTests,
    .createInstanceEnum = "CTolva_DiagSettingTestAssoc::CreateInstanceEnumAsync",
    .enumFailed = "Tolva_DiagSettingTestAssoc::CreateInstanceEnumAsync:EnumTests failed, hr = <%x>",
    .getObject = "CTolva_DiagSettingTestAssoc::GetObjectAsync",
    .identifying =
        {
            .property = L"Setting",
            .parseFailed =
                "CTolva_DiagSettingTestAssoc::GetObjectAsync: Parsing for Setting reference failed",
            .key = L"SettingID",
            .exists = &CDiagMgr::SettingExists,
        },
    .other =
        {
            .property = L"Element",
            .parseFailed = "CTolva_DiagSettingTestAssoc::GetObjectAsync: Parsing for Test reference failed",
            .key = L"Name",
        },
    .getObjectSendFailed = "CTolva_DiagSettingTestAssoc::GetObjectAsync::SendInstance failed, hr = <%x>",
};
} // namespace

CTolva_DiagTestMSEAssoc::CTolva_DiagTestMSEAssoc() noexcept : CReferenceAssociation(kTestForMSE) {}

CTolva_DiagResultMSEAssoc::CTolva_DiagResultMSEAssoc() noexcept : CReferenceAssociation(kResultForMSE) {}

CTolva_DiagResultTestAssoc::CTolva_DiagResultTestAssoc() noexcept : CReferenceAssociation(kResultForTest) {}

CTolva_DiagSettingTestAssoc::CTolva_DiagSettingTestAssoc() noexcept : CReferenceAssociation(kSettingForTest)
{
}
