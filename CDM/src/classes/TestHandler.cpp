#include "CDM/src/classes/TestHandler.h"

#include "CDM/src/classes/InstanceSender.h"
#include "CDM/src/classes/RecordClass.h"

namespace
{
constexpr wchar_t kTestClass[] = L"Tolva_DiagTest";
constexpr wchar_t kSystemClass[] = L"Win32_ComputerSystem";

struct CTestSource
{
    const CTestData& record;
    CInstanceSender& sender;
    CBstr text = CBstr(); // the resource string that was fetched last
};

template <auto Id>
HRESULT FetchString(CWomClassObject&, const wchar_t*, CTestSource& source)
{
    return source.sender.Context().GetResourceString(source.record.*Id, "_8023", source.text);
}

HRESULT PutFetched(CWomClassObject& instance, const wchar_t* property, CTestSource& source)
{
    return instance.SetProperty(property, source.text);
}

template <auto Member>
HRESULT PutCodes(CWomClassObject&, const wchar_t* property, CTestSource& source)
{
    return source.sender.PutCodes(property, source.record.*Member);
}

constexpr CInstanceStep<CTestSource> kSteps[] = {
    {L"Name", &PutText<&CTestData::Key>, "CTolva_DiagTest::SendInstance:SetProperty(Name) failed <%x>"},
    {nullptr, &FetchString<&CTestData::NameStringID>,
     "CTolva_DiagTest::SendInstance:GetResourceString for caption failed"},
    {L"Caption", &PutFetched, "CTolva_DiagTest::SendInstance:SetProperty(Caption) failed <%x>"},
    {L"IsInUse", &PutFlag<&CTestData::Locked>,
     "CTolva_DiagTest::SendInstance:SetProperty(IsInUse) failed <%x>"},
    {nullptr, &FetchString<&CTestData::DescriptionStringID>,
     "CTolva_DiagTest::SendInstance:GetResourceString for Description failed"},
    {L"Description", &PutFetched,
     "CTolva_DiagResult::SendInstance:SetProperty(Description) failed <%x>"}, // sic
    {L"OtherCharacteristicDescription", &PutNull,
     "CTolva_DiagResult::SendInstance:SetProperty(OtherCharacteristicDescription) failed <%x>"}, // sic
    {L"Characteristics", &PutCodes<&CTestData::Characteristics>,
     "CTolva_DiagResult::SendInstance:SetProperty(Characteristics) failed <%x>"}, // sic
    {L"ResourcesUsed", &PutCodes<&CTestData::ResourcesUsed>,
     "CTolva_DiagResult::SendInstance:SetProperty(ResourcesUsed) failed <%x>"}, // sic
    {L"CreationClassName", &PutConstant<kTestClass>,
     "CTolva_DiagTest::SendInstance:SetProperty(CreationClassName) failed <%x>"},
    {L"SystemCreationClassName", &PutConstant<kSystemClass>,
     "CTolva_DiagTest::SendInstance:SetProperty(SystemCreationClassName) failed <%x>"},
    {L"SystemName", &PutComputerName, "CTolva_DiagTest::SendInstance:SetProperty(SystemName) failed <%x>"},
};

HRESULT SendInstance(CInstanceSender& sender, const CTestData& record)
{
    return SendInstance<CTestSource>(
        {record, sender}, "CTolva_DiagTest::SendInstance:SpawnInstanceFromClass failed <%x>", kSteps);
}

constexpr CRecordClass<CTestData> kServed = {
    .name = kTestClass,
    .key = L"Name",
    .keyForm = KeyForm::NamedOrSingle,
    .enumerate = &CDiagMgr::EnumTests,
    .getData = &CDiagMgr::GetTestData,
    .sendInstance = &SendInstance,
    .getObject = "CTolva_DiagTest::GetObjectAsync",
    .getObjectDataFailed = "Tolva_DiagTest:GetObjectAsync:GetTestData failed, hr = <%x>",
    .getObjectSendFailed = "Tolva_DiagTest:GetObjectAsync:SendInstance failed, hr = <%x>",
    .createInstanceEnum = "CTolva_DiagTest::CreateInstanceEnumAsync",
    .enumFailed = "Tolva_DiagTest:CreateInstanceEnumAsync:EnumTests failed, hr = <%x>",
    .enumDataFailed = "Tolva_DiagTest:CreateInstanceEnumAsync:GetTestData failed, hr = <%x>",
    .enumSendFailed = "Tolva_DiagTest:CreateInstanceEnumAsync:SendInstance failed, hr = <%x>",
};
} // namespace

const wchar_t* CTolva_DiagTest::GetClassName() const noexcept
{
    return kServed.name;
}

HRESULT CTolva_DiagTest::GetObjectAsync(const CParsedObjectPath& path, CWomContext& context,
                                        ComPtr<IWbemObjectSink> sink)
{
    return GetRecordObject(kServed, DiagMgr(), path, context, std::move(sink));
}

HRESULT CTolva_DiagTest::CreateInstanceEnumAsync(CWomContext& context, ComPtr<IWbemObjectSink> sink)
{
    return EnumerateRecords(kServed, DiagMgr(), context, std::move(sink));
}
