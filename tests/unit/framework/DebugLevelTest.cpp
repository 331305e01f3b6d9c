// What is dumped at which debug level. A program of its own, because the other tests' trace stands at level 2
// for the whole process.
#include "CDM/src/ZebDebug.h"
#include "tests/support/CaseName.h"
#include "tests/support/FakeCallContext.h"
#include "tests/support/RegistryScope.h"
#include "tests/support/TempFolder.h"
#include "tests/unit/framework/FrameworkTest.h"

#include <fstream>

namespace
{
struct LevelCase
{
    const char* name;
    long level;
    bool dumps;
};
class DebugLevelTest : public FrameworkTest, public testing::WithParamInterface<LevelCase>
{
  protected:
    DebugLevelTest()
    {
        ZebDebug().Configure("test", m_folder.File("trace.log").c_str(), GetParam().level, 0, false, 0);
        m_context = MakeContext(m_caller.Get());
    }
    ~DebugLevelTest() override { ZebDebug().Close(); }
    void TearDown() override { m_caller.Reset(); }

    // How often the functions were entered according to the trace.
    int Entries(const std::string& function) const
    {
        std::ifstream file(m_folder.File("trace.log"));
        int count = 0;
        for (std::string line; std::getline(file, line);)
            count += line.find("{ --> " + function) != std::string::npos;
        return count;
    }

    CRegistryScope m_registry;
    CTempFolder m_folder;
    ComPtr<IWbemContext> m_caller = standin::MakeContext();
};

TEST_P(DebugLevelTest, ObjectsAreDumpedAtLevel2Alone)
{
    const auto instance = Instance();
    instance->DebugOutput();
    EXPECT_EQ(GetParam().dumps ? 1 : 0, m_plan->Count(Call::GetNames));
    EXPECT_EQ(GetParam().dumps ? 1 : 0, Entries("CWomClassObject::DebugOutput"));
}

TEST_P(DebugLevelTest, ContextsAreDumpedAtLevel2Alone)
{
    const auto call = MakeCom<CFakeCallContext>();
    CCallContextScope scope(*call);
    m_context->DebugOutput();
    EXPECT_EQ(GetParam().dumps ? 1 : 0, call->Impersonations);
    EXPECT_EQ(GetParam().level >= 2 ? 1 : 0, Entries("CWomContext::DebugOutput"));
}

INSTANTIATE_TEST_SUITE_P(Levels, DebugLevelTest,
                         testing::Values(LevelCase{"Off", 0, false}, LevelCase{"Errors", 1, false},
                                         LevelCase{"Everything", 2, true}, LevelCase{"Above", 3, false}),
                         NameOf<LevelCase>);
} // namespace
