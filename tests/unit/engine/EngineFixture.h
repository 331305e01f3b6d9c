// A manager over a fake agent, with a registry, a folder and a clock of the test's own.
#pragma once

#include "CDM/src/ZebHelpers.h"
#include "CDM/src/engine/DiagMgr.h"
#include "CDM/src/engine/EngineStatus.h"
#include "CDM/src/engine/naming/DiagKeys.h"
#include "CDM/src/engine/results/store/StoreFiles.h"
#include "Common/src/VormAgentMgr.h"
#include "Common/src/VormArray.h"
#include "Common/src/com/WmiStatus.h"
#include "tests/support/FakeAgent.h"
#include "tests/support/FakeRunEnvironment.h"
#include "tests/support/RegistryScope.h"
#include "tests/support/TempFolder.h"
#include "tests/support/TraceCapture.h"

#include <fstream>
#include <gtest/gtest.h>
#include <memory>
#include <string>
#include <vector>

inline constexpr char kDiagKey[] = "SOFTWARE\\Veltrane\\Halvern\\ZEB\\ZebDiag";

class CEngineTest : public testing::Test
{
  protected:
    CEngineTest()
    {
        paths.InstallDir = folder.Path().string() + "\\";
        paths.ResultStorePath = (folder.Path() / L"ZebDiag.bin").wstring();
    }
    ~CEngineTest() override { manager.reset(); }

    HRESULT Start()
    {
        manager.reset();
        const CVormAgentMgr agents(agent.Get());
        manager = std::make_unique<CDiagMgr>(paths, CEngineSeams{&environment, store});
        return manager->Initialize(&agents);
    }
    // As after an end of the process and its next start.
    HRESULT Restart() { return Start(); }

    std::vector<std::wstring> Keys(HRESULT (CDiagMgr::*enumerate)(CVormArray<BSTR>&))
    {
        CVormArray<BSTR> array;
        EXPECT_EQ(S_OK, ((*manager).*enumerate)(array));
        std::vector<std::wstring> keys;
        for (const BSTR key : array.View())
            keys.emplace_back(key);
        return keys;
    }
    std::vector<std::wstring> Tests() { return Keys(&CDiagMgr::EnumTests); }
    std::vector<std::wstring> Settings() { return Keys(&CDiagMgr::EnumSettings); }
    std::vector<std::wstring> Results() { return Keys(&CDiagMgr::EnumResults); }

    CTestData TestData(const wchar_t* key)
    {
        CTestData data;
        EXPECT_EQ(S_OK, manager->GetTestData(CBstr(key).Get(), &data));
        return data;
    }
    CResultData ResultData(const wchar_t* key)
    {
        CResultData data;
        EXPECT_EQ(S_OK, manager->GetResultData(CBstr(key).Get(), &data));
        return data;
    }
    // Locks, runs and unlocks, as a client's request does.
    HRESULT Run(const wchar_t* key, ULONG mode = 0)
    {
        CBstr testKey(key);
        CBstr resultKey(key);
        EXPECT_EQ(S_OK, manager->LockTest(testKey.Get()));
        const HRESULT hr = manager->RunTest(testKey.Get(), resultKey, mode);
        EXPECT_EQ(S_OK, manager->UnlockTest(testKey.Get()));
        return hr;
    }

    std::string LogText() const
    {
        std::ifstream file(folder.Path() / "ZebDiag.log", std::ios::binary);
        return {std::istreambuf_iterator<char>(file), {}};
    }

    CRegistryScope registry;
    CTempFolder folder;
    CTraceCapture trace;
    CHostPaths paths;
    CFakeRunEnvironment environment;
    IStoreFiles* store = nullptr;
    ComPtr<CFakeAgent> agent = MakeCom<CFakeAgent>();
    std::unique_ptr<CDiagMgr> manager;
};
