// Every call that building and sending an instance makes fails once, for each of the three classes that serve
// records: exact code, exact trace line, nothing indicated, nothing left behind.
#include "CDM/src/classes/ResultHandler.h"
#include "CDM/src/classes/SettingHandler.h"
#include "CDM/src/classes/TestHandler.h"
#include "Common/src/WomProviderException.h"
#include "tests/unit/classes/HandlerTest.h"

namespace
{
using Call = CCallPlan::Call;

constexpr HRESULT kPlanned = static_cast<HRESULT>(0x80041013);

struct ServedClass
{
    const char* name;
    std::unique_ptr<CWomClassHandler> (*create)();
    const wchar_t* path;
    std::vector<const char*> putFailed; // in the order of the Puts
    const char* spawnFailed;
    const char* getObjectSendFailed;
    const char* enumSendFailed; // null: no line of its own
};

template <class Handler>
std::unique_ptr<CWomClassHandler> Create()
{
    return std::make_unique<Handler>();
}

const ServedClass kClasses[] = {
    {"DiagTest",
     &Create<CTolva_DiagTest>,
     L"Tolva_DiagTest.Name=\"1@A\"",
     {"CTolva_DiagTest::SendInstance:SetProperty(Name) failed <80041013>",
      "CTolva_DiagTest::SendInstance:SetProperty(Caption) failed <80041013>",
      "CTolva_DiagTest::SendInstance:SetProperty(IsInUse) failed <80041013>",
      "CTolva_DiagResult::SendInstance:SetProperty(Description) failed <80041013>",
      "CTolva_DiagResult::SendInstance:SetProperty(OtherCharacteristicDescription) failed <80041013>",
      "CTolva_DiagResult::SendInstance:SetProperty(Characteristics) failed <80041013>",
      "CTolva_DiagResult::SendInstance:SetProperty(ResourcesUsed) failed <80041013>",
      "CTolva_DiagTest::SendInstance:SetProperty(CreationClassName) failed <80041013>",
      "CTolva_DiagTest::SendInstance:SetProperty(SystemCreationClassName) failed <80041013>",
      "CTolva_DiagTest::SendInstance:SetProperty(SystemName) failed <80041013>"},
     "CTolva_DiagTest::SendInstance:SpawnInstanceFromClass failed <80041013>",
     "Tolva_DiagTest:GetObjectAsync:SendInstance failed, hr = <80041013>",
     "Tolva_DiagTest:CreateInstanceEnumAsync:SendInstance failed, hr = <80041013>"},
    {"DiagSetting",
     &Create<CTolva_DiagSetting>,
     L"Tolva_DiagSetting.SettingID=\"1@A\"",
     {"CTolva_DiagSetting::SendInstance:SetProperty(SettingID) failed <80041013>",
      "CTolva_DiagSetting::SendInstance:SetProperty(HaltOnError) failed <80041013>",
      "CTolva_DiagSetting::SendInstance:SetProperty(ReportSoftErrors) failed <80041013>",
      "CTolva_DiagSetting::SendInstance:SetProperty(TestWarningLevel) failed <80041013>",
      "CTolva_DiagSetting::SendInstance:SetProperty(QuickMode) failed <80041013>",
      "CTolva_DiagSetting::SendInstance:SetProperty(ReportStatusMessages) failed <80041013>",
      "CTolva_DiagSetting::SendInstance:SetProperty(PercentOfTestCoverage) failed <80041013>"},
     "CTolva_DiagSetting::SendInstance:SpawnInstanceFromClass failed <80041013>",
     "Tolva_DiagSetting::GetObjectAsync:SendInstance failed, hr = <80041013>",
     nullptr},
    {"DiagSettingWithValues",
     &Create<CTolva_DiagSetting>,
     L"Tolva_DiagSetting.SettingID=\"9@B\"",
     {"CTolva_DiagSetting::SendInstance:SetProperty(SettingID) failed <80041013>",
      "CTolva_DiagSetting::SendInstance:SetProperty(HaltOnError) failed <80041013>",
      "CTolva_DiagSetting::SendInstance:SetProperty(ReportSoftErrors) failed <80041013>",
      "CTolva_DiagSetting::SendInstance:SetProperty(TestWarningLevel) failed <80041013>",
      "CTolva_DiagSetting::SendInstance:SetProperty(QuickMode) failed <80041013>",
      "CTolva_DiagpSetting::SendInstance:SetProperty(ReportStatusMessages) failed <80041013>",
      "CTolva_DiagSetting::SendInstance:SetProperty(PercentOfTestCoverage) failed <80041013>"},
     "CTolva_DiagSetting::SendInstance:SpawnInstanceFromClass failed <80041013>",
     "Tolva_DiagSetting::GetObjectAsync:SendInstance failed, hr = <80041013>",
     nullptr},
    {"DiagResult",
     &Create<CTolva_DiagResult>,
     L"Tolva_DiagResult.DiagnosticName=\"9@B\"",
     {"CTolva_DiagResult::SendInstance:SetProperty(ResultID) failed <80041013>",
      "CTolva_DiagResult::SendInstance:SetProperty(DiagnosticCreationClassName) failed <80041013>",
      "CTolva_DiagResult::SendInstance:SetProperty(ExecutionID) failed <80041013>",
      "CTolva_DiagResult::SendInstance:SetProperty(TestCompletionTime) failed <80041013>",
      "CTolva_DiagResult::SendInstance:SetProperty(TestStartTime) failed <80041013>",
      "CTolva_DiagResult::SendInstance:SetProperty(IsPackage) failed <80041013>",
      "CTolva_DiagResult::SendInstance:SetProperty(PercentComplete) failed <80041013>",
      "CTolva_DiagResult::SendInstance:SetProperty(OtherStateDescription) failed <80041013>",
      "CTolva_DiagResult::SendInstance:SetProperty(EstimatedTimeOfPerforming) failed <80041013>",
      "CTolva_DiagResult::SendInstance:SetProperty(TimeStamp) failed <80041013>",
      "CTolva_DiagResult::SendInstance:SetProperty(TestResults) failed <80041013>",
      "CTolva_DiagResult::SendInstance:SetProperty(TestState) failed <80041013>",
      "CTolva_DiagResult::SendInstance:SetProperty(DiagSystemCreationClassName) failed <80041013>",
      "CTolva_DiagResult::SendInstance:SetProperty(SystemName) failed <80041013>",
      "CTolva_DiagResult::SendInstance:SetProperty(QuickMode) failed <80041013>",
      "CTolva_DiagResult::SendInstance:SetProperty(ReportStatusMessages) failed <80041013>",
      "CTolva_DiagResult::SendInstance:SetProperty(PercentOfTestCoverage) failed <80041013>",
      "CTolva_DiagResult::SendInstance:SetProperty(HaltOnError) failed <80041013>",
      "CTolva_DiagResult::SendInstance:SetProperty(ReportSoftErrors) failed <80041013>",
      "CTolva_DiagResult::SendInstance:SetProperty(TestWarningLevel) failed <80041013>"},
     "CTolva_DiagResult::SendInstance:SpawnInstanceFromClass failed <80041013>",
     "Tolva_DiagResult::GetObjectAsync:SendInstance failed, hr = <80041013>",
     nullptr},
};

class RecordFaultsTest : public HandlerTest, public testing::WithParamInterface<ServedClass>
{
  protected:
    HRESULT GetObjectOf()
    {
        return Prepared(*m_handler).GetObjectAsync(Path(GetParam().path), Context(), m_sink);
    }
    HRESULT Enumerate() { return Prepared(*m_handler).CreateInstanceEnumAsync(Context(), m_sink); }

    std::unique_ptr<CWomClassHandler> m_handler = GetParam().create();
};

TEST_P(RecordFaultsTest, EachPutFailsOnce)
{
    const auto& texts = GetParam().putFailed;
    for (size_t i = 0; i < texts.size(); ++i)
    {
        SCOPED_TRACE(texts[i]);
        m_plan->Fail(Call::Put, static_cast<int>(i) + 1, kPlanned);
        const int putsBefore = m_plan->Count(Call::Put);
        const CTraceCapture trace;
        EXPECT_EQ(GetObjectOf(), kPlanned);
        EXPECT_EQ(trace.Count(texts[i]), 1u);
        EXPECT_EQ(trace.Count(GetParam().getObjectSendFailed), 1u);
        EXPECT_EQ(m_plan->Count(Call::Put) - putsBefore, static_cast<int>(i) + 1)
            << "no later property is set";
        EXPECT_TRUE(m_sink->Indications().empty());
    }
    EXPECT_EQ(GetObjectOf(), S_OK);
    EXPECT_EQ(Indicated().size(), 1u) << "the table has one row for each Put";
}

TEST_P(RecordFaultsTest, PutsInTheSecondInstanceEndTheEnumeration)
{
    EXPECT_EQ(Enumerate(), S_OK);
    const int puts = m_plan->Count(Call::Put) / 3;
    for (int i = 0; i < puts; ++i)
    {
        m_sink = MakeCom<CFakeSink>();
        m_plan->Fail(Call::Put, puts + i + 1, kPlanned);
        const CTraceCapture trace;
        EXPECT_EQ(Enumerate(), kPlanned);
        EXPECT_EQ(Indicated().size(), 1u);
        if (GetParam().enumSendFailed)
        {
            EXPECT_EQ(trace.Count(GetParam().enumSendFailed), 1u);
        }
    }
}

TEST_P(RecordFaultsTest, SpawnFails)
{
    m_plan->Fail(Call::SpawnInstance, 1, kPlanned);
    const CTraceCapture trace;
    EXPECT_EQ(GetObjectOf(), kPlanned);
    EXPECT_EQ(trace.Count(GetParam().spawnFailed), 1u);
    EXPECT_EQ(trace.Count("Exception not thrown:"), 1u);
    EXPECT_TRUE(m_sink->Indications().empty());
}

TEST_P(RecordFaultsTest, SinkFailsAtEachInstance)
{
    for (int i = 1; i <= 3; ++i)
    {
        m_sink = MakeCom<CFakeSink>();
        m_sink->FailIndicate(i, RPC_E_DISCONNECTED);
        EXPECT_EQ(Enumerate(), RPC_E_DISCONNECTED);
        EXPECT_EQ(Indicated().size(), static_cast<size_t>(i) - 1);
        EXPECT_EQ(m_sink->Indications().size(), static_cast<size_t>(i));
    }
}

TEST_P(RecordFaultsTest, ClassMissingFromTheSchemaIsThrown)
{
    for (const bool enumerate : {false, true})
    {
        m_services->FailGetObject(1, wmi::NotFound);
        try
        {
            enumerate ? Enumerate() : GetObjectOf();
            ADD_FAILURE() << "no exception";
        }
        catch (const CWomProviderException& exception)
        {
            EXPECT_EQ(exception.StatusCode(), static_cast<HRESULT>(0x80040903));
            EXPECT_EQ(exception.RequestResult(), wmi::NotFound);
        }
    }
    EXPECT_TRUE(m_sink->Indications().empty());
}

TEST_P(RecordFaultsTest, NothingIsLeftBehind)
{
    // The class definition stays in the cache.
    GetObjectOf();
    m_sink = MakeCom<CFakeSink>();
    const long before = g_liveComObjects;
    for (int i = 1; i <= static_cast<int>(GetParam().putFailed.size()); ++i)
    {
        m_plan->Fail(Call::Put, i, kPlanned);
        GetObjectOf();
        EXPECT_EQ(g_liveComObjects, before);
    }
    m_plan->Fail(Call::SpawnInstance, 1, kPlanned);
    GetObjectOf();
    EXPECT_EQ(g_liveComObjects, before);
}

INSTANTIATE_TEST_SUITE_P(Classes, RecordFaultsTest, testing::ValuesIn(kClasses),
                         [](const auto& info) { return info.param.name; });

// What the schema of another version may look like.
struct SchemaCase
{
    const char* name;
    void (*change)(standin::CClassDefinition& definition);
    HRESULT status;
};

class OtherSchemaTest : public HandlerTest, public testing::WithParamInterface<SchemaCase>
{
};

TEST_P(OtherSchemaTest, EndsWithTheStatusOfThePut)
{
    auto definition = std::make_shared<standin::CClassDefinition>(
        *ServedSchema().GetDefinition(kServedNamespace, L"Tolva_DiagTest"));
    GetParam().change(*definition);
    m_services = MakeCom<CFakeServices>([definition](const std::wstring&)
                                        { return standin::MakeClassObject(definition); });
    CTolva_DiagTest handler;
    const CTraceCapture trace;
    EXPECT_EQ(Prepared(handler).CreateInstanceEnumAsync(Context(), m_sink), GetParam().status);
    EXPECT_EQ(trace.Count("CTolva_DiagTest::SendInstance:SetProperty(Caption) failed <"), 1u);
    EXPECT_TRUE(m_sink->Indications().empty());
}

INSTANTIATE_TEST_SUITE_P(Schemas, OtherSchemaTest,
                         testing::Values(SchemaCase{"PropertyMissing",
                                                    [](standin::CClassDefinition& d)
                                                    { d.RemoveProperty(d.IndexOf(L"Caption")); },
                                                    wmi::NotFound},
                                         SchemaCase{"PropertyOfOtherType",
                                                    [](standin::CClassDefinition& d) {
                                                        d.PropertyAt(d.IndexOf(L"Caption")).Type = CIM_UINT32;
                                                    },
                                                    wmi::TypeMismatch}),
                         [](const auto& info) { return info.param.name; });
} // namespace
