// Every call on the objects of the management service (definitions, instances, parameters, qualifiers) fails
// at its n-th time in every operation. What the client sees depends on the place of the call: the failure as
// an extended status, as the request's code, or not at all where it only cost a line of the trace.
#include "Common/src/WomClassCache.h"
#include "tests/component/faults/FaultFixture.h"

#include <set>

namespace
{
using Call = CCallPlan::Call;
using Operation = FaultFixture::COperation;

// No call of the provider's own fails with it.
constexpr HRESULT kRefused = static_cast<HRESULT>(WBEM_E_QUOTA_VIOLATION);

struct CCallRow
{
    const char* name;
    Call call;
    std::set<LONG> statusCodes; // of an extended status
};

constexpr LONG kReadFailed = static_cast<LONG>(0x80040908);
constexpr LONG kDumpFailed = static_cast<LONG>(0x8004090E);
constexpr LONG kSpawnFailed = static_cast<LONG>(0x80040904);
constexpr LONG kFetchFailed = static_cast<LONG>(0x80040903);

const CCallRow kCalls[] = {
    {"Get", Call::Get, {kReadFailed, kDumpFailed}},
    {"Put", Call::Put, {}},
    {"GetNames", Call::GetNames, {kDumpFailed}},
    {"GetPropertyQualifierSet", Call::GetPropertyQualifierSet, {kDumpFailed}},
    {"GetQualifier", Call::GetQualifier, {kDumpFailed}},
    {"SpawnInstance", Call::SpawnInstance, {kSpawnFailed}},
    {"GetMethod", Call::GetMethod, {kSpawnFailed}},
};

class SchemaFaultsTest : public FaultFixture, public testing::WithParamInterface<Operation>
{
  protected:
    static bool WritesTrace(const CTraceCapture& trace, const char* text) { return trace.Count(text) == 1u; }
    // The answer to a request in which one call failed with kRefused.
    void ExpectAnswer(const CAnswer& answer, const CTraceCapture& trace, const std::set<LONG>& statusCodes)
    {
        const size_t thrown = trace.Count("Exception thrown:");
        const size_t notThrown = trace.Count("Exception not thrown:");
        EXPECT_GE(thrown + notThrown, 1u) << "no failure goes untold";
        if (thrown)
        {
            EXPECT_EQ(answer.Returned, kRefused);
            EXPECT_EQ(answer.Status, wmi::Failed);
            EXPECT_TRUE(answer.Objects.empty());
            ASSERT_TRUE(answer.StatusObject);
            EXPECT_TRUE(statusCodes.contains(Number(answer.StatusObject, L"StatusCode")));
            EXPECT_EQ(Text(answer.StatusObject, L"Operation"), GetParam().operationName);
            EXPECT_EQ(Text(answer.StatusObject, L"ProviderName"), L"DREVOK_PROVIDER");
            EXPECT_NE(Text(answer.StatusObject, L"ParameterInfo"), L"");
            EXPECT_EQ(Text(answer.StatusObject, L"File"), L"Common/src/WomClassObject");
            return;
        }
        EXPECT_FALSE(answer.StatusObject);
        EXPECT_EQ(answer.Status, answer.Returned);
        if (answer.Returned == RightAnswer().Returned)
        {
            EXPECT_EQ(answer.Objects.size(), RightAnswer().Objects.size());
        }
        else
        {
            EXPECT_EQ(answer.Returned, kRefused);
            EXPECT_LT(answer.Objects.size(), RightAnswer().Objects.size() + (GetParam().name[0] == 'P'));
        }
    }
};

TEST_P(SchemaFaultsTest, EachCallFailsOnce)
{
    StartWithStoredResults();
    LearnTheAnswer(GetParam());
    for (const CCallRow& row : kCalls)
    {
        bool failed = true;
        for (int n = 1; failed; ++n)
        {
            SCOPED_TRACE(testing::Message() << row.name << " " << n);
            PerformWithFault(
                GetParam(), [&] { m_host.Plan->Fail(row.call, n, kRefused); },
                [&](const CAnswer& answer, const CTraceCapture& trace)
                {
                    failed = m_host.Plan->Failed();
                    m_host.Plan->Fail(row.call, 0, S_OK);
                    if (failed)
                        ExpectAnswer(answer, trace, row.statusCodes);
                });
        }
    }
    RestartClean();
    ExpectStoredResult();
}

// With no definition in the process's memory, so that the operation fetches what it needs.
TEST_P(SchemaFaultsTest, EachDefinitionIsMissingOnce)
{
    StartWithStoredResults();
    LearnTheAnswer(GetParam());
    bool failed = true;
    for (int n = 1; failed; ++n)
    {
        SCOPED_TRACE(n);
        PerformWithFault(
            GetParam(),
            [&]
            {
                WomClassCache::Drop();
                m_host.Services->FailGetObject(n, kRefused);
            },
            [&](const CAnswer& answer, const CTraceCapture& trace)
            {
                failed = m_host.Services->Failed();
                m_host.Services->FailGetObject(0, S_OK);
                if (failed)
                    ExpectAnswer(answer, trace, {kFetchFailed});
            });
    }
    RestartClean();
    ExpectStoredResult();
}

INSTANTIATE_TEST_SUITE_P(Operations, SchemaFaultsTest, testing::ValuesIn(FaultFixture::Operations()),
                         [](const auto& info) { return info.param.name; });
} // namespace
