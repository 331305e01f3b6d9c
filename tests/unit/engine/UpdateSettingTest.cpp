#include "Common/src/WomClassObject.h"
#include "Common/src/WomContext.h"
#include "standin/object/Objects.h"
#include "tests/support/CaseName.h"
#include "tests/unit/engine/EngineFixture.h"

#include <thread>

namespace
{
struct Property
{
    const wchar_t* name;
    CIMTYPE type;
    const char* failure;
};

const Property kProperties[] = {
    {L"HaltOnError", CIM_BOOLEAN, "CDiagMgr::UpdateSetting:GetPropertyBool for HaltOnError failed <"},
    {L"ReportSoftErrors", CIM_BOOLEAN,
     "CDiagMgr::UpdateSetting:GetPropertyBool for ReportSoftErrors failed <"},
    {L"ReportStatusMessages", CIM_BOOLEAN,
     "CDiagMgr::UpdateSetting:GetPropertyBool for ReportStatusMessages failed <"},
    {L"QuickMode", CIM_BOOLEAN, "CDiagMgr::UpdateSetting:GetPropertyBool for QuickMode failed <"},
    {L"TestWarningLevel", CIM_UINT16, "CDiagMgr::UpdateSetting:GetProperty for TestWarningLevel failed <"},
    {L"PercentOfTestCoverage", CIM_UINT8,
     "CDiagMgr::UpdateSetting:GetProperty for PercentOfTestCoverage failed <"},
};

class UpdateSettingTest : public CEngineTest
{
  protected:
    UpdateSettingTest() { agent->AddAdapter(L"{aaa}", {1, 9}); }

    // An instance with every property set to other than its default; `absent` is left out of the class,
    // `asText` declared as a string.
    void MakeInstance(const wchar_t* absent = L"", const wchar_t* asText = L"")
    {
        auto definition = std::make_shared<standin::CClassDefinition>(L"Tolva_DiagSetting");
        for (const Property& property : kProperties)
            if (wcscmp(property.name, absent) != 0)
                definition->SetProperty(
                    {property.name,
                     wcscmp(property.name, asText) == 0 ? static_cast<CIMTYPE>(CIM_STRING) : property.type,
                     {},
                     {},
                     {}});
        instance = standin::MakeInstance(definition);
        for (const Property& property : kProperties)
        {
            if (wcscmp(property.name, absent) == 0)
                continue;
            CVariant value;
            if (wcscmp(property.name, asText) == 0)
                value = CVariant::FromText(L"TRUE");
            else if (property.type == CIM_BOOLEAN)
                value = CVariant::FromBool(wcscmp(property.name, L"HaltOnError") == 0 ||
                                           wcscmp(property.name, L"ReportSoftErrors") == 0);
            else if (property.type == CIM_UINT16)
                value = CVariant::FromLong(65535);
            else
                value = CVariant::FromByte(255);
            ASSERT_EQ(S_OK, instance->Put(property.name, 0, &value, 0)) << property.name;
        }
    }
    void SetNull(const wchar_t* name)
    {
        CVariant null = CVariant::Null();
        ASSERT_EQ(S_OK, instance->Put(name, 0, &null, 0));
    }
    HRESULT Update(const wchar_t* key)
    {
        CWomContext context(nullptr, 0x409, L"provider", L"PutInstanceAsync", nullptr, nullptr, 0, true);
        ComPtr<CWomClassObject> wrapper;
        wrapper.Attach(new CWomClassObject(&context));
        wrapper->SetThrowing(false);
        wrapper->Wrap(instance.Get());
        return manager->UpdateSetting(CBstr(key).Get(), *wrapper.Get());
    }
    CSettingData Setting(const wchar_t* key)
    {
        CSettingData data;
        EXPECT_EQ(S_OK, manager->GetSettingData(CBstr(key).Get(), &data));
        return data;
    }
    // How many of the properties, in the order of their update, have the instance's value.
    static size_t Updated(const CSettingData& data)
    {
        const bool updated[] = {data.HaltOnError == 1,          data.ReportSoftErrors == 1,
                                data.ReportStatusMessages == 0, data.QuickMode == 0,
                                data.TestWarningLevel == 65535, data.PercentOfTestCoverage == 255};
        const auto first = std::find(std::begin(updated), std::end(updated), false);
        EXPECT_EQ(std::end(updated), std::find(first, std::end(updated), true));
        return first - updated;
    }

    ComPtr<IWbemClassObject> instance;
};

TEST_F(UpdateSettingTest, TakesEveryWritableProperty)
{
    ASSERT_EQ(S_OK, Start());
    MakeInstance();
    EXPECT_EQ(S_OK, Update(L"9@{aaa}"));
    const CSettingData data = Setting(L"9@{aaa}");
    EXPECT_EQ(6u, Updated(data));
    EXPECT_EQ(1u, data.IsPackage);
    EXPECT_STREQ(L"9@{AAA}", data.Key.Text());
    EXPECT_EQ(0u, Updated(Setting(L"1@{aaa}"))); // another test's setting is not touched
}

TEST_F(UpdateSettingTest, TheNextRunUsesIt)
{
    ASSERT_EQ(S_OK, Start());
    ASSERT_EQ(S_OK, Run(L"1@{aaa}"));
    MakeInstance();
    ASSERT_EQ(S_OK, Update(L"1@{aaa}"));
    EXPECT_EQ(100u, ResultData(L"1@{aaa}").PercentOfTestCoverage);
    ASSERT_EQ(S_OK, Run(L"1@{aaa}"));
    const CResultData data = ResultData(L"1@{aaa}");
    EXPECT_EQ(255u, data.PercentOfTestCoverage);
    EXPECT_EQ(65535u, data.TestWarningLevel);
    EXPECT_EQ(1u, data.HaltOnError);
    EXPECT_EQ(1u, data.ReportSoftErrors);
    EXPECT_EQ(0u, data.ReportStatusMessages);
    EXPECT_EQ(0u, data.QuickMode);
    EXPECT_EQ(0u, data.IsPackage);
}

TEST_F(UpdateSettingTest, NullPropertiesKeepTheirValues)
{
    ASSERT_EQ(S_OK, Start());
    MakeInstance();
    ASSERT_EQ(S_OK, Update(L"9@{aaa}"));
    for (const Property& property : kProperties)
        SetNull(property.name);
    EXPECT_EQ(S_OK, Update(L"9@{aaa}"));
    EXPECT_EQ(6u, Updated(Setting(L"9@{aaa}")));
}

TEST_F(UpdateSettingTest, AnUnknownSettingIsTraced)
{
    ASSERT_EQ(S_OK, Start());
    MakeInstance();
    for (const wchar_t* key : {L"2@{aaa}", L"", L"\"\\"})
        EXPECT_EQ(engine::NotFound, Update(key));
    EXPECT_EQ(3u, trace.Count("CDiagMgr::UpdateSetting:GetObj failed <80042005>"));
}

class PropertyTest : public UpdateSettingTest, public testing::WithParamInterface<size_t>
{
};

TEST_P(PropertyTest, MissingEndsTheUpdateThere)
{
    const Property& property = kProperties[GetParam()];
    ASSERT_EQ(S_OK, Start());
    MakeInstance(property.name);
    EXPECT_EQ(wmi::NotFound, Update(L"9@{aaa}"));
    EXPECT_TRUE(trace.Has(property.failure));
    EXPECT_EQ(GetParam(), Updated(Setting(L"9@{aaa}")));
}

TEST_P(PropertyTest, OfAnotherTypeEndsTheUpdateThere)
{
    const Property& property = kProperties[GetParam()];
    ASSERT_EQ(S_OK, Start());
    MakeInstance(L"", property.name);
    EXPECT_EQ(E_FAIL, Update(L"9@{aaa}"));
    EXPECT_TRUE(trace.Has(property.failure));
    EXPECT_EQ(GetParam(), Updated(Setting(L"9@{aaa}")));
}

INSTANTIATE_TEST_SUITE_P(Order, PropertyTest, testing::Range<size_t>(0, std::size(kProperties)));

TEST_F(UpdateSettingTest, WithoutQuickModeTheThreeBeforeItAreUpdated)
{
    ASSERT_EQ(S_OK, Start());
    MakeInstance(L"QuickMode");
    EXPECT_EQ(wmi::NotFound, Update(L"9@{aaa}"));
    const CSettingData data = Setting(L"9@{aaa}");
    EXPECT_EQ(1u, data.HaltOnError);
    EXPECT_EQ(1u, data.ReportSoftErrors);
    EXPECT_EQ(0u, data.ReportStatusMessages);
    EXPECT_EQ(1u, data.QuickMode);
    EXPECT_EQ(0, data.TestWarningLevel);
    EXPECT_EQ(100, data.PercentOfTestCoverage);
}

TEST_F(UpdateSettingTest, ManyClientsAtOnce)
{
    ASSERT_EQ(S_OK, Start());
    MakeInstance();
    std::atomic<int> wrong{0};
    std::vector<std::thread> clients;
    for (int c = 0; c < 3; ++c)
        clients.emplace_back(
            [&]
            {
                for (int i = 0; i < 300; ++i)
                    if (Update(L"9@{aaa}") != S_OK)
                        ++wrong;
            });
    for (int i = 0; i < 1000; ++i)
    {
        CSettingData data;
        if (manager->GetSettingData(CBstr(L"9@{aaa}").Get(), &data) != S_OK || data.IsPackage != 1 ||
            (data.PercentOfTestCoverage != 100 && data.PercentOfTestCoverage != 255))
            ++wrong;
    }
    for (std::thread& client : clients)
        client.join();
    EXPECT_EQ(0, wrong);
    EXPECT_EQ(6u, Updated(Setting(L"9@{aaa}")));
}
} // namespace
