// Requests against agents, schemas and sinks that fail: the described answer, and the provider goes on.
#include "Common/src/WomClassCache.h"
#include "tests/component/provider/ComponentTest.h"

namespace
{
using Call = CCallPlan::Call;

constexpr const wchar_t* kClasses[] = {
    L"Tolva_DiagTest",           L"Tolva_DiagSetting",      L"Tolva_DiagResult",
    L"Tolva_DiagTestForMSE",     L"Tolva_DiagResultForMSE", L"Tolva_DiagResultForTest",
    L"Tolva_DiagSettingForTest",
};

class FaultsTest : public ComponentTest
{
  protected:
    void StartWithResult()
    {
        Start();
        EXPECT_EQ(RunTest(L"1@A").Status, S_OK);
    }
    void ExpectServing()
    {
        const CAnswer answer = Enumerate(L"Tolva_DiagTest");
        EXPECT_EQ(answer.Status, S_OK);
        EXPECT_EQ(answer.Objects.size(), 4u);
    }
};

TEST_F(FaultsTest, ClassMissingFromTheSchemaIsAnExtendedStatus)
{
    StartWithResult();
    for (const wchar_t* className : kClasses)
    {
        SCOPED_TRACE(testing::PrintToString(std::wstring(className)));
        WomClassCache::Drop();
        m_host.Services->FailGetObject(1, wmi::NotFound);
        const CAnswer answer = Enumerate(className);
        EXPECT_EQ(answer.Returned, wmi::NotFound);
        EXPECT_EQ(answer.Status, wmi::Failed);
        ASSERT_TRUE(answer.StatusObject);
        EXPECT_EQ(Number(answer.StatusObject, L"StatusCode"), static_cast<LONG>(0x80040903));
        EXPECT_EQ(Text(answer.StatusObject, L"Operation"), L"CreateInstanceEnumAsync");
        EXPECT_EQ(Text(answer.StatusObject, L"ParameterInfo"), className);
        EXPECT_TRUE(answer.Objects.empty());
    }
    ExpectServing();
}

TEST_F(FaultsTest, EveryPutOfEveryClassFailsOnce)
{
    StartWithResult();
    for (const wchar_t* className : {L"Tolva_DiagTest", L"Tolva_DiagSetting", L"Tolva_DiagResult"})
    {
        SCOPED_TRACE(testing::PrintToString(std::wstring(className)));
        const int before = m_host.Plan->Count(Call::Put);
        const size_t instances = Enumerate(className).Objects.size();
        ASSERT_GT(instances, 0u);
        const int puts = m_host.Plan->Count(Call::Put) - before;
        const int putsOfOne = puts / static_cast<int>(instances);
        for (int i = 1; i <= puts; ++i)
        {
            m_host.Plan->Fail(Call::Put, i, wmi::AccessDenied);
            const CAnswer answer = Enumerate(className);
            EXPECT_EQ(answer.Returned, wmi::AccessDenied);
            EXPECT_EQ(answer.Status, wmi::AccessDenied);
            EXPECT_FALSE(answer.StatusObject);
            EXPECT_EQ(answer.Objects.size(), static_cast<size_t>((i - 1) / putsOfOne));
        }
    }
    ExpectServing();
}

TEST_F(FaultsTest, SinkThatVanishesEndsTheEnumeration)
{
    StartWithResult();
    for (const wchar_t* className : kClasses)
    {
        const auto sink = MakeCom<CFakeSink>();
        sink->FailIndicate(1, RPC_E_DISCONNECTED);
        EXPECT_EQ(m_host.Provider->CreateInstanceEnumAsync(Bstr(className).Get(), 0, nullptr, sink.Get()),
                  RPC_E_DISCONNECTED);
        EXPECT_EQ(sink->Indications().size(), 1u);
        ASSERT_EQ(sink->Statuses().size(), 1u);
        EXPECT_EQ(sink->Statuses()[0].Result, RPC_E_DISCONNECTED);
    }
    ExpectServing();
}

TEST_F(FaultsTest, AgentThatThrowsWhileRunningFailsTheRun)
{
    Start();
    m_host.Agent->Throw(CFakeAgent::Method::RunDiagTest, 1);
    EXPECT_EQ(RunTest(L"1@A").Status, S_OK);
    EXPECT_EQ(Number(Get(ResultPath(L"1@A")).Objects.at(0), L"TestState"), 3);
    EXPECT_EQ(Number(Get(TestPath(L"1@A")).Objects.at(0), L"IsInUse"), VARIANT_FALSE);
    EXPECT_EQ(RunTest(L"1@A").Status, S_OK);
    EXPECT_EQ(Number(Get(ResultPath(L"1@A")).Objects.at(0), L"TestState"), 2);
}

struct BadPath
{
    const char* name;
    std::wstring path;
    HRESULT returned;
    std::optional<HRESULT> status;
};

class BadPathTest : public FaultsTest, public testing::WithParamInterface<BadPath>
{
};

TEST_P(BadPathTest, IsAnsweredAndNothingChanges)
{
    StartWithResult();
    const CAnswer answer = Get(GetParam().path);
    EXPECT_EQ(answer.Returned, GetParam().returned);
    EXPECT_EQ(answer.Status, GetParam().status);
    EXPECT_TRUE(answer.Objects.empty());
    ExpectServing();
}

INSTANTIATE_TEST_SUITE_P(
    Paths, BadPathTest,
    testing::Values(
        BadPath{"Empty", L"", wmi::Failed, std::nullopt}, BadPath{"Blank", L" ", wmi::Failed, std::nullopt},
        BadPath{"UnknownClass", L"Tolva_Nothing=\"1@A\"", wmi::Failed, std::nullopt},
        BadPath{"OpenQuote", L"Tolva_DiagTest.Name=\"1@A", wmi::Failed, std::nullopt},
        BadPath{"UnknownTest", L"Tolva_DiagTest.Name=\"5@A\"", wmi::NotFound, wmi::NotFound},
        BadPath{"UnknownKey", L"Tolva_DiagTest.Number=\"1@A\"", wmi::NotFound, wmi::NotFound},
        BadPath{"NoKey", L"Tolva_DiagResult", wmi::NotFound, wmi::NotFound},
        BadPath{"Singleton", L"Tolva_DiagTest=@", wmi::NotFound, wmi::NotFound},
        BadPath{"QuotesInKey", L"Tolva_DiagTest.Name=\"1@\\\"A\\\"\"", wmi::NotFound, wmi::NotFound},
        BadPath{"BackslashesInKey", L"Tolva_DiagSetting.SettingID=\"\\\\1@A\\\\\"", wmi::NotFound,
                wmi::NotFound},
        BadPath{"LongKey", L"Tolva_DiagTest.Name=\"" + std::wstring(10000, L'x') + L"\"", wmi::NotFound,
                wmi::NotFound},
        BadPath{"LongClass", std::wstring(10000, L'x') + L"=\"1@A\"", wmi::Failed, std::nullopt},
        BadPath{"LongReference",
                L"Tolva_DiagTestForMSE.Antecedent=\"" + std::wstring(10000, L'x') + L"\",Dependent=\"y\"",
                wmi::NotFound, wmi::NotFound},
        BadPath{"ReferenceOfNumbers", L"Tolva_DiagTestForMSE.Antecedent=5,Dependent=6", wmi::Failed,
                wmi::Failed}),
    [](const auto& info) { return info.param.name; });
} // namespace
