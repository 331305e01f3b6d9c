// Many clients at once. Nothing is asserted about who comes first, only that every answer is a possible one
// and that the provider is whole afterwards.
#include "tests/component/provider/ComponentTest.h"

#include <atomic>
#include <set>
#include <thread>

namespace
{
class ParallelTest : public ComponentTest
{
  protected:
    static constexpr int kRounds = 60;

    // For threads: the test framework's own checks are for one thread.
    void Check(bool right)
    {
        if (!right)
            ++m_wrong;
    }

    // Each body in a thread of its own, all begun at once.
    static void RunAll(const std::vector<std::function<void(int round)>>& bodies)
    {
        std::vector<std::thread> threads;
        threads.reserve(bodies.size());
        for (const auto& body : bodies)
            threads.emplace_back(
                [&body]
                {
                    for (int round = 0; round < kRounds; ++round)
                        body(round);
                });
        for (std::thread& thread : threads)
            thread.join();
    }

    std::atomic<int> m_wrong{0};
};

TEST_F(ParallelTest, RequestsOfAllKindsLeaveAWholeProvider)
{
    Start();
    constexpr const wchar_t* kTests[] = {L"1@A", L"2@A", L"1@B"};
    const std::set<HRESULT> enumerated = {S_OK, static_cast<HRESULT>(0x80042005)}; // cleared meanwhile
    const auto run = [&](int round)
    {
        const CAnswer answer = RunTest(kTests[round % 3]);
        Check(answer.Status == S_OK);
        Check(answer.Objects.size() == 1u);
    };
    const auto clear = [&](int round)
    {
        const wchar_t* const name = kTests[round % 3];
        const std::wstring adapter = AdapterPath(wcschr(name, L'@') + 1);
        Check(Invoke(TestPath(name), L"ClearResults", {{L"SystemElement", adapter}}).Status == S_OK);
    };
    const auto stop = [&](int round)
    {
        const wchar_t* const name = kTests[round % 3];
        Check(Invoke(TestPath(name), L"DiscontinueTest", {}).Status == S_OK);
    };
    const auto list = [&](int)
    {
        Check(Enumerate(L"Tolva_DiagTest").Objects.size() == 4u);
        Check(Enumerate(L"Tolva_DiagSettingForTest").Objects.size() == 4u);
        for (const wchar_t* className :
             {L"Tolva_DiagResult", L"Tolva_DiagResultForMSE", L"Tolva_DiagResultForTest"})
        {
            const CAnswer answer = Enumerate(className);
            Check(answer.Status && enumerated.contains(*answer.Status));
            Check(answer.Objects.size() <= 3u);
        }
    };
    const auto write = [&](int round)
    {
        const Instance setting =
            standin::MakeInstance(ServedSchema().GetDefinition(kServedNamespace, L"Tolva_DiagSetting"));
        const auto put = [&](const wchar_t* name, CVariant value) { setting->Put(name, 0, &value, 0); };
        put(L"SettingID", CVariant::FromText(L"9@B"));
        for (const wchar_t* name :
             {L"HaltOnError", L"ReportSoftErrors", L"ReportStatusMessages", L"QuickMode"})
            put(name, CVariant::FromBool(round % 2 == 0));
        put(L"TestWarningLevel", CVariant::FromLong(0));
        put(L"PercentOfTestCoverage", CVariant::FromByte(static_cast<BYTE>(round)));
        Check(Put(setting).Status == S_OK);
        Check(Get(SettingPath(L"9@B")).Objects.size() == 1u);
    };
    RunAll({run, run, clear, stop, list, list, write});
    EXPECT_EQ(m_wrong, 0);

    for (const wchar_t* name : kTests)
    {
        EXPECT_EQ(Number(Get(TestPath(name)).Objects.at(0), L"IsInUse"), VARIANT_FALSE);
        EXPECT_EQ(RunTest(name).Status, S_OK);
        EXPECT_EQ(Number(Get(ResultPath(name)).Objects.at(0), L"TestState"), 2);
    }
    Restart();
    EXPECT_EQ(Enumerate(L"Tolva_DiagResult").Objects.size(), 3u);
}

TEST_F(ParallelTest, InitializationsAtOnceInitializeOnce)
{
    const auto initialize = [&](int) { Check(m_host.Initialize() == WBEM_S_INITIALIZED); };
    RunAll({initialize, initialize, initialize, initialize});
    EXPECT_EQ(m_wrong, 0);
    EXPECT_EQ(m_host.Agent->Count(CFakeAgent::Method::Initialize), 1);
    EXPECT_EQ(Enumerate(L"Tolva_DiagTest").Objects.size(), 4u);
}

TEST_F(ParallelTest, RequestsDuringInitializationGetAnAnswer)
{
    const auto initialize = [&](int) { Check(m_host.Initialize() == WBEM_S_INITIALIZED); };
    const auto list = [&](int)
    {
        const CAnswer answer = Enumerate(L"Tolva_DiagTest");
        Check(answer.Returned == S_OK || answer.Returned == wmi::Failed);
    };
    RunAll({list, initialize, list, list});
    EXPECT_EQ(m_wrong, 0);
    EXPECT_EQ(Enumerate(L"Tolva_DiagTest").Objects.size(), 4u);
}
} // namespace
