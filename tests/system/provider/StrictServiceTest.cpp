// What clients get of the contract's own values from a management service that takes the standard forms only.
#include "tests/system/provider/SharedMachine.h"

#include "Common/src/com/WmiStatus.h"

namespace
{
class CStrictly
{
  public:
    explicit CStrictly(const CProviderMachine& machine) : m_machine(machine) { m_machine.SetStrict(true); }
    ~CStrictly() { m_machine.SetStrict(false); }
    CStrictly(const CStrictly&) = delete;
    CStrictly& operator=(const CStrictly&) = delete;

  private:
    const CProviderMachine& m_machine;
};

constexpr wchar_t kKey[] = L"1@BETA";

// Whether a result's times have the standard form, which is up to the machine's time zone.
bool HasStandardTimes(const CPropertyTexts& result)
{
    for (const wchar_t* name : {L"TestStartTime", L"TestCompletionTime", L"TimeStamp"})
        if (result.at(name).value_or(L"").size() != 25)
            return false;
    return true;
}

// One time that is refused costs the whole answer.
TEST_F(Served, StrictServiceShowsResultsOnlyWithTimesOfTheStandardForm)
{
    const CWmiClient client;
    ASSERT_EQ(S_OK, CallTest(client, kKey, L"RunTest"));
    const CPropertyTexts usual = AllResults(client).at(kKey);
    const std::string before = Machine().ReadFileBytes(kTrace);
    const CStrictly strictly(Machine());
    HRESULT status = E_FAIL;
    const auto results = client.Instances(L"Tolva_DiagResult", &status);
    const std::string trace = NewTrace(Machine(), before);
    constexpr char refusal[] = "SetProperty(TestCompletionTime) failed <80041005>";
    if (HasStandardTimes(usual))
    {
        EXPECT_EQ(S_OK, status);
        ASSERT_EQ(1u, results.size());
        EXPECT_EQ(usual, AllPropertyTexts(results[0].Get()));
        EXPECT_EQ(0u, CountOf(trace, refusal)) << trace;
    }
    else
    {
        EXPECT_EQ(wmi::TypeMismatch, status);
        EXPECT_TRUE(results.empty());
        EXPECT_EQ(1u, CountOf(trace, refusal)) << trace;
    }
}

TEST_F(Served, StrictServiceRefusesTheFiveKeysOfAResultReference)
{
    const CWmiClient client;
    ComPtr<IWbemClassObject> out;
    ASSERT_EQ(S_OK, CallTest(client, kKey, L"RunTest", out));
    const std::wstring reference = PropertyText(out.Get(), L"Result").value_or(L"");
    ComPtr<IWbemClassObject> result;
    ASSERT_EQ(S_OK, client.Get(reference, result));
    const std::wstring own = PropertyText(result.Get(), L"__RELPATH").value_or(L"");
    const bool readable = HasStandardTimes(AllPropertyTexts(result.Get()));
    const auto associated = [&](const std::wstring& path) {
        return client.Query(L"ASSOCIATORS OF {" + path + L"} WHERE AssocClass=Tolva_DiagResultForTest")
            .size();
    };
    EXPECT_EQ(1u, associated(own));
    EXPECT_EQ(1u, associated(TestPath(kKey)));

    const CStrictly strictly(Machine());
    EXPECT_EQ(wmi::InvalidObjectPath, client.Get(reference, result));
    EXPECT_EQ(0u, associated(own));
    EXPECT_EQ(0u, associated(TestPath(kKey)));
    // By its keys it is found, and that is how zebdiag asks.
    EXPECT_EQ(readable ? S_OK : wmi::TypeMismatch, client.Get(own, result));
    EXPECT_EQ(readable ? 0u : 3u, Zebdiag(L"run --adapter BETA --test 1").ExitCode);
}
} // namespace
