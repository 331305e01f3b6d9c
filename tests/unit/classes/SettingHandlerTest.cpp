#include "CDM/src/classes/SettingHandler.h"
#include "tests/unit/classes/HandlerTest.h"

namespace
{
class DiagSettingTest : public HandlerTest
{
  protected:
    HRESULT GetObjectOf(const wchar_t* path)
    {
        return Prepared(m_handler).GetObjectAsync(Path(path), Context(), m_sink);
    }
    HRESULT Enumerate() { return Prepared(m_handler).CreateInstanceEnumAsync(Context(), m_sink); }

    // An instance as a client would write it.
    ComPtr<IWbemClassObject> NewInstance(const wchar_t* settingId)
    {
        ComPtr<IWbemClassObject> instance =
            standin::MakeInstance(ServedSchema().GetDefinition(kServedNamespace, L"Tolva_DiagSetting"));
        CVariant id = CVariant::FromText(settingId);
        EXPECT_EQ(instance->Put(L"SettingID", 0, &id, 0), S_OK);
        return instance;
    }
    HRESULT Put(IWbemClassObject* instance)
    {
        CWomClassObject wrapped(&Context());
        wrapped.SetThrowing(false);
        wrapped.Wrap(instance);
        return Prepared(m_handler).PutInstanceAsync(wrapped, Context(), m_path, m_sink);
    }

    CTolva_DiagSetting m_handler;
    CBstr m_path;
};

TEST_F(DiagSettingTest, ServesTheSettingClass)
{
    EXPECT_STREQ(m_handler.GetClassName(), L"Tolva_DiagSetting");
}

TEST_F(DiagSettingTest, SettingOfTheKindThatCarriesValues)
{
    CSettingData& record = m_manager.Settings[L"9@B"];
    record.QuickMode = 0;
    record.ReportStatusMessages = 1;
    record.PercentOfTestCoverage = 0;
    EXPECT_EQ(GetObjectOf(L"Tolva_DiagSetting.SettingID=\"9@B\""), S_OK);
    ASSERT_EQ(Indicated().size(), 1u);
    const ComPtr<IWbemClassObject> instance = Indicated()[0];
    EXPECT_EQ(ReadText(instance, L"SettingID"), L"9@B");
    EXPECT_EQ(Read(instance, L"QuickMode").boolVal, VARIANT_FALSE);
    EXPECT_EQ(Read(instance, L"QuickMode").vt, VT_BOOL);
    EXPECT_EQ(Read(instance, L"ReportStatusMessages").boolVal, VARIANT_TRUE);
    EXPECT_EQ(Read(instance, L"PercentOfTestCoverage").vt, VT_UI1);
    EXPECT_EQ(Read(instance, L"PercentOfTestCoverage").bVal, 0);
}

struct KindCase
{
    const char* name;
    ULONG kind;
};

class DiagSettingKindTest : public DiagSettingTest, public testing::WithParamInterface<KindCase>
{
};

TEST_P(DiagSettingKindTest, CarriesNoValues)
{
    m_manager.Settings[L"1@A"].IsPackage = GetParam().kind;
    EXPECT_EQ(GetObjectOf(L"Tolva_DiagSetting.SettingID=\"1@A\""), S_OK);
    ASSERT_EQ(Indicated().size(), 1u);
    for (const wchar_t* property : {L"QuickMode", L"ReportStatusMessages", L"PercentOfTestCoverage"})
        EXPECT_TRUE(IsNull(Indicated()[0], property));
}

INSTANTIATE_TEST_SUITE_P(OtherKinds, DiagSettingKindTest,
                         testing::Values(KindCase{"None", 0}, KindCase{"Two", 2}, KindCase{"MinusOne", ~0u}),
                         [](const auto& info) { return info.param.name; });

TEST_F(DiagSettingTest, ThreePropertiesAreNullForEverySetting)
{
    for (auto& [key, record] : m_manager.Settings)
    {
        record.HaltOnError = 1;
        record.ReportSoftErrors = 1;
        record.TestWarningLevel = 2;
    }
    EXPECT_EQ(Enumerate(), S_OK);
    ASSERT_EQ(Indicated().size(), 3u);
    for (const auto& instance : Indicated())
        for (const wchar_t* property : {L"HaltOnError", L"ReportSoftErrors", L"TestWarningLevel"})
            EXPECT_TRUE(IsNull(instance, property));
}

TEST_F(DiagSettingTest, MissingSettingIsNotFoundWithoutALine)
{
    const CTraceCapture trace;
    EXPECT_EQ(GetObjectOf(L"Tolva_DiagSetting.SettingID=\"7@A\""), wmi::NotFound);
    EXPECT_FALSE(trace.Has("Tolva_DiagSetting::GetObjectAsync:"));
}

TEST_F(DiagSettingTest, FailuresOfTheManagerPassThrough)
{
    m_manager.Answers[L"GetSettingData"] = E_POINTER;
    const CTraceCapture trace;
    EXPECT_EQ(GetObjectOf(L"Tolva_DiagSetting.SettingID=\"1@A\""), E_POINTER);
    EXPECT_EQ(trace.Count("Tolva_DiagSetting::GetObjectAsync:GetSettingData failed, hr = <80004003>"), 1u);
    EXPECT_EQ(Enumerate(), E_POINTER);
    EXPECT_EQ(
        trace.Count("Tolva_DiagSetting::CreateInstanceEnumAsync:GetSettingData failed, hr = <80004003>"), 1u);
    m_manager.Answers[L"EnumSettings"] = E_OUTOFMEMORY;
    EXPECT_EQ(Enumerate(), E_OUTOFMEMORY);
    EXPECT_EQ(trace.Count("Tolva_DiagSetting::CreateInstanceEnumAsync:EnumSettings failed, hr = <8007000e>"),
              1u);
    EXPECT_TRUE(m_sink->Indications().empty());
}

TEST_F(DiagSettingTest, WritingReachesTheManager)
{
    const CTraceCapture trace;
    EXPECT_EQ(Put(NewInstance(L"1@A").Get()), S_OK);
    EXPECT_EQ(m_manager.Calls, (std::vector<std::wstring>{L"UpdateSetting 1@A"}));
    EXPECT_EQ(trace.Count("} <-- CTolva_DiagSetting::UpdateInstanceAsync"), 1u);
    EXPECT_TRUE(m_sink->Statuses().empty());
}

TEST_F(DiagSettingTest, WritingAnUnknownSettingReachesTheManager)
{
    m_manager.Answers[L"UpdateSetting"] = engine::NotFound;
    const CTraceCapture trace;
    EXPECT_EQ(Put(NewInstance(L"7@A").Get()), engine::NotFound);
    EXPECT_EQ(m_manager.Calls, (std::vector<std::wstring>{L"UpdateSetting 7@A"}));
    EXPECT_EQ(trace.Count("CTolva_DiagSetting::UpdateInstanceAsync: UpdateSetting failed, hr = <80042005>"),
              1u);
}

TEST_F(DiagSettingTest, WritingWithoutSettingIdFailsWithTheStatusOfTheRead)
{
    auto definition = std::make_shared<standin::CClassDefinition>(
        *ServedSchema().GetDefinition(kServedNamespace, L"Tolva_DiagSetting"));
    definition->RemoveProperty(definition->IndexOf(L"SettingID"));
    const CTraceCapture trace;
    EXPECT_EQ(Put(standin::MakeInstance(definition).Get()), wmi::NotFound);
    EXPECT_EQ(trace.Count("CTolva_DiagSetting::UpdateInstanceAsync:GetProperty failed, hr = <80041002>"), 1u);
    EXPECT_EQ(Put(nullptr), E_FAIL);
    EXPECT_EQ(trace.Count("CTolva_DiagSetting::UpdateInstanceAsync:GetProperty failed, hr = <80004005>"), 1u);
    EXPECT_TRUE(m_manager.Calls.empty());
}
} // namespace
