// For suites whose cases share a machine, and on it the provider's life: the machine is made before the first
// case and goes after the last one. Suites run one after the other, so there is one machine at a time.
#pragma once

#include "tests/system/provider/ProviderFixture.h"

#include <gtest/gtest.h>
#include <memory>

class CSharedMachine : public testing::Test
{
  public:
    static void TearDownTestSuite() { s_machine.reset(); }

  protected:
    // Ends what runs on the one before.
    static const CProviderMachine& MakeMachine()
    {
        s_machine.reset();
        s_machine = std::make_unique<const CProviderMachine>();
        return *s_machine;
    }
    static const CProviderMachine& Machine() { return *s_machine; }

  private:
    static inline std::unique_ptr<const CProviderMachine> s_machine;
};

// A provider that the management service holds on to for the whole suite. No case sees another one's results
// or settings, nor what a case that failed has left running.
class CSharedProvider : public CSharedMachine
{
  protected:
    static void MakeProvider(const char* adapters)
    {
        s_adapters = adapters;
        constexpr DWORD kLongerThanAnySuite = 3600000;
        const CProviderMachine& machine = MakeMachine();
        machine.SetIdleTime(kLongerThanAnySuite);
        SetAdapters(machine, adapters);
    }
    void SetUp() override
    {
        const CWmiClient client;
        for (const auto& [key, properties] : AllResults(client))
            ASSERT_EQ(S_OK, CallTest(client, key, L"ClearResults"));
        for (const auto& setting : client.Instances(L"Tolva_DiagSetting"))
        {
            const auto coverage = PropertyText(setting.Get(), L"PercentOfTestCoverage");
            ASSERT_EQ(S_OK, coverage ? PutCoverage(client, setting.Get(), 100) : S_OK);
        }
    }
    void TearDown() override
    {
        if (HasFailure())
            MakeProvider(s_adapters);
    }

  private:
    static inline const char* s_adapters = nullptr;
};

// The provider of kTwoAdapters.
class Served : public CSharedProvider
{
  public:
    static void SetUpTestSuite() { MakeProvider(kTwoAdapters); }
};
