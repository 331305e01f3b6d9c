#include "agent/VorlIds.h"
#include "agent/server/AgentRegistration.h"
#include "agent/server/RunTable.h"
#include "agent/server/ServerLife.h"
#include "agent/server/VormLists.h"
#include "tests/support/RegistryScope.h"

#include "Common/src/com/ComObject.h"
#include "Common/src/com/Owned.h"

#include <future>
#include <gtest/gtest.h>
#include <stdexcept>

namespace
{
class CAnything final : public CComObject<IUnknown>
{
  public:
    CServerLock Lock;
};

constexpr CAgentClass kAgent = {kClsidVorl, L"an agent", [](REFIID riid, void** out) -> HRESULT {
                                    return MakeCom<CAnything>()->QueryInterface(riid, out);
                                }};

ComPtr<IClassFactory> Factory(const CAgentClass& agent)
{
    ComPtr<IClassFactory> factory;
    EXPECT_EQ(S_OK, GetAgentFactory(agent, __uuidof(IClassFactory), factory.PutVoid()));
    return factory;
}

TEST(AgentFactory, MakesAgentsThatKeepTheServerAlive)
{
    const long before = g_liveComObjects;
    const auto factory = Factory(kAgent);
    EXPECT_TRUE(ServerIsUnused());
    ComPtr<IUnknown> agent;
    ASSERT_EQ(S_OK, factory->CreateInstance(nullptr, __uuidof(IUnknown), agent.PutVoid()));
    EXPECT_FALSE(ServerIsUnused());
    agent.Reset();
    EXPECT_TRUE(ServerIsUnused());
    EXPECT_EQ(before + 1, g_liveComObjects) << "only the factory is left";
}

TEST(AgentFactory, RefusesAggregationNullAndUnknownInterfaces)
{
    const auto factory = Factory(kAgent);
    void* out = &out;
    EXPECT_EQ(CLASS_E_NOAGGREGATION, factory->CreateInstance(factory.Get(), __uuidof(IUnknown), &out));
    EXPECT_EQ(nullptr, out);
    EXPECT_EQ(E_NOINTERFACE, factory->CreateInstance(nullptr, __uuidof(IStream), &out));
    EXPECT_EQ(E_POINTER, factory->CreateInstance(nullptr, __uuidof(IUnknown), nullptr));
    EXPECT_TRUE(ServerIsUnused());
}

TEST(AgentFactory, LocksKeepTheServerAlive)
{
    const auto factory = Factory(kAgent);
    EXPECT_EQ(S_OK, factory->LockServer(TRUE));
    EXPECT_FALSE(ServerIsUnused());
    EXPECT_EQ(S_OK, factory->LockServer(FALSE));
    EXPECT_TRUE(ServerIsUnused());
}

TEST(AgentFactory, ExceptionsBecomeCodes)
{
    static constexpr CAgentClass kThrows = {kClsidVorl, L"",
                                            [](REFIID, void**) -> HRESULT { throw std::bad_alloc(); }};
    void* out = nullptr;
    EXPECT_EQ(E_OUTOFMEMORY, Factory(kThrows)->CreateInstance(nullptr, __uuidof(IUnknown), &out));
}

TEST(ServerLife, EndsWhereNobodyComes)
{
    using namespace std::chrono_literals;
    WaitUntilServerIsUnused(0ms, 0ms);
    EXPECT_TRUE(ServerIsUnused());
}

TEST(ServerLife, LastsUntilTheLastLockIsGone)
{
    using namespace std::chrono_literals;
    auto lock = std::make_unique<CServerLock>();
    auto wait = std::async(std::launch::async, [] { WaitUntilServerIsUnused(0ms, 0ms); });
    EXPECT_EQ(std::future_status::timeout, wait.wait_for(50ms));
    lock.reset();
    wait.get();
}

std::wstring ReadText(const wchar_t* subkey, const wchar_t* name)
{
    const std::wstring path =
        std::wstring(L"SOFTWARE\\Classes\\CLSID\\{6C1F0A52-3B7E-4E1B-9A55-0D6B7A3C8E10}") + subkey;
    wchar_t text[MAX_PATH] = {};
    DWORD size = sizeof text;
    RegGetValueW(HKEY_LOCAL_MACHINE, path.c_str(), name, RRF_RT_REG_SZ, nullptr, text, &size);
    return text;
}

// The scope's keys are volatile, and what is made below one by the registration would not be.
constexpr char kClassKey[] = "SOFTWARE\\Classes\\CLSID\\{6C1F0A52-3B7E-4E1B-9A55-0D6B7A3C8E10}";

class AgentRegistration : public testing::Test
{
  protected:
    AgentRegistration()
    {
        m_registry.CreateKey((std::string(kClassKey) + "\\InprocServer32").c_str());
        m_registry.CreateKey((std::string(kClassKey) + "\\LocalServer32").c_str());
    }

    CRegistryScope m_registry;
};

TEST_F(AgentRegistration, EachKindOfServerHasItsEntry)
{
    ASSERT_EQ(S_OK, RegisterAgent(kAgent, ServerKind::InProcess));
    ASSERT_EQ(S_OK, RegisterAgent(kAgent, ServerKind::Local));
    wchar_t self[MAX_PATH] = {};
    GetModuleFileNameW(nullptr, self, MAX_PATH);
    EXPECT_EQ(L"an agent", ReadText(L"", nullptr));
    EXPECT_EQ(self, ReadText(L"\\InprocServer32", nullptr));
    EXPECT_EQ(L"Both", ReadText(L"\\InprocServer32", L"ThreadingModel"));
    EXPECT_EQ(L'"' + std::wstring(self) + L'"', ReadText(L"\\LocalServer32", nullptr));
}

TEST_F(AgentRegistration, ClassGoesWithItsLastServer)
{
    RegisterAgent(kAgent, ServerKind::InProcess);
    RegisterAgent(kAgent, ServerKind::Local);
    EXPECT_EQ(S_OK, UnregisterAgent(kAgent, ServerKind::InProcess));
    EXPECT_EQ(L"", ReadText(L"\\InprocServer32", nullptr));
    EXPECT_NE(L"", ReadText(L"\\LocalServer32", nullptr));
    EXPECT_EQ(S_OK, UnregisterAgent(kAgent, ServerKind::Local));
    EXPECT_EQ(L"", ReadText(L"", nullptr));
    EXPECT_EQ(S_OK, UnregisterAgent(kAgent, ServerKind::Local)) << "nothing left to remove";
}

TEST(RunTable, OneRunPerAdapterAndTest)
{
    CRunTable runs;
    auto run = runs.Begin(L"a", 1);
    ASSERT_TRUE(run);
    EXPECT_FALSE(runs.Begin(L"A", 1)) << "keys are compared without case";
    EXPECT_TRUE(runs.Begin(L"a", 2));
    EXPECT_TRUE(runs.Begin(L"b", 1));
    run.reset();
    EXPECT_TRUE(runs.Begin(L"a", 1));
}

TEST(RunTable, StopReachesTheRunOnly)
{
    CRunTable runs;
    const auto run = runs.Begin(L"a", 1);
    const auto other = runs.Begin(L"a", 2);
    EXPECT_TRUE(runs.Stop(L"A", 1));
    EXPECT_TRUE(run->WaitForStop(0));
    EXPECT_FALSE(other->WaitForStop(0));
    EXPECT_FALSE(runs.Stop(L"a", 3));
}

TEST(VormLists, EmptyListsAreNullBlocks)
{
    ULONG count = 5;
    BSTR* keys = reinterpret_cast<BSTR*>(&count);
    VormTestDescriptor* tests = reinterpret_cast<VormTestDescriptor*>(&count);
    EXPECT_EQ(S_OK, HandOutKeys({}, &count, &keys));
    EXPECT_EQ(0u, count);
    EXPECT_EQ(nullptr, keys);
    EXPECT_EQ(S_OK, HandOutTests({}, &count, &tests));
    EXPECT_EQ(nullptr, tests);
}

TEST(VormLists, KeysKeepTheirLength)
{
    ULONG count = 0;
    BSTR* keys = nullptr;
    ASSERT_EQ(S_OK, HandOutKeys({L"a", std::wstring(10000, L'x')}, &count, &keys));
    ASSERT_EQ(2u, count);
    EXPECT_EQ(10000u, SysStringLen(keys[1]));
    SysFreeString(keys[0]);
    SysFreeString(keys[1]);
    CoTaskMemFree(keys);
}
} // namespace
