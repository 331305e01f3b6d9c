// Initialisations and requests at once. Nothing is asserted about who comes first, only that every answer is
// a possible one and that the provider is whole afterwards.
#include "tests/component/provider/ComponentTest.h"

#include <atomic>
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
