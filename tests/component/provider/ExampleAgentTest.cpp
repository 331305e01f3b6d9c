// The agent that vendors begin their own from, in the hands of the provider.
#include "tests/component/provider/ComponentTest.h"

#include "Common/src/com/Owned.h"
#include "agent/VorlIds.h"

#include <gmock/gmock.h>

namespace
{
constexpr LONG kPassed = 2;
constexpr LONG kFailed = 3;

ComPtr<IVormRoot> MakeExampleAgent()
{
    static const CModule s_library(LoadLibraryW(L"ExampleAgent.dll"));
    const auto getClass = reinterpret_cast<HRESULT(STDMETHODCALLTYPE*)(REFCLSID, REFIID, void**)>(
        reinterpret_cast<void*>(GetProcAddress(s_library.Get(), "DllGetClassObject")));
    ComPtr<IClassFactory> factory;
    ComPtr<IVormRoot> agent;
    if (FAILED(getClass(kClsidVorl, __uuidof(IClassFactory), factory.PutVoid())) ||
        FAILED(factory->CreateInstance(nullptr, __uuidof(IVormRoot), agent.PutVoid())))
        throw std::runtime_error("the example of an agent could not be made");
    return agent;
}

class ExampleAgentTest : public ComponentTest
{
  protected:
    ExampleAgentTest() : ComponentTest(MakeExampleAgent().Get(), {}) {}

    Instance RunAndGetResult()
    {
        EXPECT_EQ(S_OK, RunTest(L"1@EXAMPLE-ADAPTER").Status);
        const CAnswer answer = Get(ResultPath(L"1@EXAMPLE-ADAPTER"));
        return answer.Objects.empty() ? nullptr : answer.Objects[0];
    }
};

TEST_F(ExampleAgentTest, ItsTestIsListedWithItsTexts)
{
    Start();
    const CAnswer answer = Enumerate(L"Tolva_DiagTest");
    EXPECT_EQ(std::vector<std::wstring>{L"1@EXAMPLE-ADAPTER"}, Column(answer, L"Name"));
    EXPECT_EQ(std::vector<std::wstring>{L"Link"}, Column(answer, L"Caption"));
}

TEST_F(ExampleAgentTest, ARunPasses)
{
    Start();
    const Instance result = RunAndGetResult();
    ASSERT_TRUE(result);
    EXPECT_EQ(kPassed, Number(result, L"TestState"));
}

TEST_F(ExampleAgentTest, ARunWithoutALinkFailsWithCauseAndNextStep)
{
    m_host.Registry.SetNumber("SOFTWARE\\Veltrane\\Halvern\\ZEB\\ExampleAgent", "Link", 0);
    Start();
    const Instance result = RunAndGetResult();
    ASSERT_TRUE(result);
    EXPECT_EQ(kFailed, Number(result, L"TestState"));
    EXPECT_THAT(Texts(result, L"TestResults"), testing::Contains(testing::HasSubstr(L"|No link. ")));
}
} // namespace
