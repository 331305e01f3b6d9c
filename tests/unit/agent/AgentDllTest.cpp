// The agents as COM loads them into a process: through the entry points of their DLLs.
#include "Common/src/com/ComPtr.h"
#include "Common/src/com/Owned.h"
#include "Common/src/com/Text.h"
#include "agent/AgentCodes.h"
#include "agent/VorlIds.h"
#include "tests/support/AgentLists.h"
#include "tests/support/RegistryScope.h"
#include "tests/support/TempFolder.h"

#include <atomic>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <iterator>
#include <thread>

namespace
{
// A loaded agent DLL.
class CAgentDll
{
  public:
    explicit CAgentDll(const wchar_t* name) : m_module(LoadLibraryW(name)) { EXPECT_TRUE(m_module); }

    HRESULT GetFactory(REFCLSID classId, ComPtr<IClassFactory>& factory) const
    {
        return Entry<HRESULT(STDMETHODCALLTYPE*)(REFCLSID, REFIID, void**)>("DllGetClassObject")(
            classId, __uuidof(IClassFactory), factory.PutVoid());
    }
    HRESULT CanUnload() const { return Call("DllCanUnloadNow"); }
    HRESULT Call(const char* name) const { return Entry<HRESULT(STDMETHODCALLTYPE*)()>(name)(); }

  private:
    template <class Function>
    Function Entry(const char* name) const
    {
        return reinterpret_cast<Function>(reinterpret_cast<void*>(GetProcAddress(m_module.Get(), name)));
    }

    CModule m_module;
};

ComPtr<IVormRoot> Make(const CAgentDll& dll, REFCLSID classId)
{
    ComPtr<IClassFactory> factory;
    ComPtr<IVormRoot> root;
    EXPECT_EQ(S_OK, dll.GetFactory(classId, factory));
    EXPECT_EQ(S_OK, factory->CreateInstance(nullptr, __uuidof(IVormRoot), root.PutVoid()));
    return root;
}

TEST(VorlTestDll, PerformsTheBuiltInScript)
{
    CRegistryScope registry;
    const CAgentDll dll(L"VorlTest.dll");
    EXPECT_EQ(S_OK, dll.CanUnload());
    ComPtr<IVormRoot> root = Make(dll, kClsidVorlTest);
    EXPECT_EQ(S_FALSE, dll.CanUnload());
    ASSERT_EQ(S_OK, root->Initialize(0));
    ComPtr<IVormDiag> diag;
    ASSERT_EQ(S_OK, root.As(diag));
    std::vector<std::wstring> keys;
    EXPECT_EQ(S_OK, ListAdapters(*diag, keys));
    EXPECT_EQ((std::vector<std::wstring>{L"SCRIPTED-ADAPTER-1", L"SCRIPTED-ADAPTER-2"}), keys);
    diag.Reset();
    root.Reset();
    EXPECT_EQ(S_OK, dll.CanUnload());
}

TEST(VorlTestDll, ExceptionOfTheScriptCrossesTheDll)
{
    CRegistryScope registry;
    CTempFolder folder;
    std::ofstream(folder.Path() / "script.json") << R"({"Faults": {"Release": {"Throw": true}}})";
    registry.SetString("SOFTWARE\\Veltrane\\Halvern\\ZEB\\VorlTest", "Script",
                       folder.File("script.json").c_str());
    const CAgentDll dll(L"VorlTest.dll");
    ComPtr<IVormRoot> root = Make(dll, kClsidVorlTest);
    ASSERT_EQ(S_OK, root->Initialize(0));
    IVormRoot* const last = root.Detach();
    EXPECT_ANY_THROW(last->Release());
    EXPECT_EQ(S_OK, dll.CanUnload());
}

struct Dll
{
    const wchar_t* name;
    CLSID classId;
    const char* key;
};
constexpr Dll kDlls[] = {{L"Vorl.dll", kClsidVorl, "{6C1F0A52-3B7E-4E1B-9A55-0D6B7A3C8E10}"},
                         {L"VorlUnderWine.dll", kClsidVorl, "{6C1F0A52-3B7E-4E1B-9A55-0D6B7A3C8E10}"},
                         {L"ExampleAgent.dll", kClsidVorl, "{6C1F0A52-3B7E-4E1B-9A55-0D6B7A3C8E10}"},
                         {L"VorlTest.dll", kClsidVorlTest, "{6C1F0A52-3B7E-4E1B-9A55-0D6B7A3C8E11}"}};

TEST(AgentDlls, ServeTheirClassAndNoOther)
{
    for (const Dll& row : kDlls)
    {
        const CAgentDll dll(row.name);
        ComPtr<IClassFactory> factory;
        EXPECT_EQ(S_OK, dll.GetFactory(row.classId, factory));
        EXPECT_EQ(S_FALSE, dll.CanUnload()) << "its factory is held";
        EXPECT_EQ(CLASS_E_CLASSNOTAVAILABLE, dll.GetFactory(CLSID_StdGlobalInterfaceTable, factory));
        EXPECT_FALSE(factory);
        EXPECT_EQ(S_OK, dll.CanUnload());
    }
}

TEST(AgentDlls, RegisterAndUnregisterThemselves)
{
    for (const Dll& row : kDlls)
    {
        CRegistryScope registry;
        const CAgentDll dll(row.name);
        const std::string path = std::string("SOFTWARE\\Classes\\CLSID\\") + row.key;
        // Below a volatile key, as all of the scope's are, the registration could not make this one.
        registry.CreateKey((path + "\\InprocServer32").c_str());
        const std::wstring server = WidenText(path + "\\InprocServer32");
        EXPECT_EQ(S_OK, dll.Call("DllRegisterServer"));
        wchar_t file[MAX_PATH] = {};
        DWORD size = sizeof file;
        EXPECT_EQ(ERROR_SUCCESS, RegGetValueW(HKEY_LOCAL_MACHINE, server.c_str(), nullptr, RRF_RT_REG_SZ,
                                              nullptr, file, &size));
        EXPECT_TRUE(std::wstring_view(file).ends_with(row.name)) << NarrowText(file);
        EXPECT_EQ(S_OK, dll.Call("DllUnregisterServer"));
        CRegKey key;
        EXPECT_EQ(ERROR_FILE_NOT_FOUND,
                  RegOpenKeyExA(HKEY_LOCAL_MACHINE, path.c_str(), 0, KEY_READ, key.Put()));
    }
}

// What this machine has is not known here; whatever it has, the agent lists it with its tests.
class HostAgentDll : public testing::TestWithParam<const wchar_t*>
{
};

TEST_P(HostAgentDll, ListsThisMachinesAdaptersWithTheirTests)
{
    const CAgentDll dll(GetParam());
    ComPtr<IVormRoot> root = Make(dll, kClsidVorl);
    ASSERT_EQ(S_OK, root->Initialize(0));
    ComPtr<IVormDiag> diag;
    ASSERT_EQ(S_OK, root.As(diag));
    std::vector<std::wstring> keys;
    ASSERT_EQ(S_OK, ListAdapters(*diag, keys));
    for (const std::wstring& key : keys)
    {
        GUID id = {};
        EXPECT_EQ(S_OK, CLSIDFromString(key.c_str(), &id));
        std::vector<VormTestDescriptor> tests;
        EXPECT_EQ(S_OK, ListTests(*diag, key.c_str(), tests));
        EXPECT_EQ(10u, tests.size());
    }
}

INSTANTIATE_TEST_SUITE_P(Dlls, HostAgentDll, testing::Values(L"Vorl.dll", L"VorlUnderWine.dll"),
                         [](const auto& info) { return info.index == 0 ? "Shipped" : "UnderWine"; });

// Whether the DLL's file has this text in it, as wide characters.
bool HasText(const wchar_t* dll, std::wstring_view text)
{
    const CModule module(LoadLibraryW(dll));
    wchar_t path[MAX_PATH] = {};
    EXPECT_NE(0u, GetModuleFileNameW(module.Get(), path, MAX_PATH));
    std::ifstream file(std::filesystem::path(path), std::ios::binary);
    const std::string content(std::istreambuf_iterator<char>(file), {});
    EXPECT_NE(0u, content.size());
    const std::string_view wanted(reinterpret_cast<const char*>(text.data()), text.size() * sizeof text[0]);
    return content.find(wanted) != std::string::npos;
}

TEST(HostAgentDlls, OnlyTheOneForDevelopmentAsksTheHostBelowWine)
{
    EXPECT_TRUE(HasText(L"VorlUnderWine.dll", L"\\unix\\sys\\class\\net"));
    EXPECT_FALSE(HasText(L"Vorl.dll", L"\\unix"));
    EXPECT_FALSE(HasText(L"Vorl.dll", L"\\sys\\"));
}

// The agent that vendors begin their own from.
class ExampleAgentDll : public testing::Test
{
  protected:
    ExampleAgentDll()
    {
        const ComPtr<IVormRoot> root = Make(m_dll, kClsidVorl);
        EXPECT_EQ(S_OK, root->Initialize(1033));
        EXPECT_EQ(S_OK, root.As(m_agent));
    }
    HRESULT Run(const wchar_t* adapter, ULONG test)
    {
        return m_agent->RunDiagTest(CBstr(adapter).Get(), test);
    }
    HRESULT Stop(const wchar_t* adapter, ULONG test) { return m_agent->StopTest(CBstr(adapter).Get(), test); }

    CRegistryScope m_registry;
    const CAgentDll m_dll{L"ExampleAgent.dll"};
    ComPtr<IVormDiag> m_agent;
};

TEST_F(ExampleAgentDll, RefusesWhatItHasNotListed)
{
    std::vector<VormTestDescriptor> tests;
    EXPECT_EQ(vorl::NoSuchAdapter, ListTests(*m_agent, L"ANOTHER", tests));
    EXPECT_TRUE(tests.empty());
    EXPECT_EQ(vorl::NoSuchAdapter, Run(L"ANOTHER", 1));
    EXPECT_EQ(vorl::NoSuchTest, Run(L"EXAMPLE-ADAPTER", 2));
    EXPECT_EQ(vorl::NoSuchTest, Stop(L"EXAMPLE-ADAPTER", 2));
    EXPECT_EQ(vorl::NotRunning, Stop(L"EXAMPLE-ADAPTER", 1));
    VormTestStatistics statistics;
    EXPECT_EQ(vorl::NoStatistics,
              m_agent->GetDiagTestStatistics(CBstr(L"EXAMPLE-ADAPTER").Get(), 1, &statistics));
}

// A run may be over before its stop comes; then there is another one.
TEST_F(ExampleAgentDll, ARunThatIsStoppedSaysSo)
{
    HRESULT outcome = S_OK;
    for (int attempt = 0; attempt < 20 && outcome == S_OK; ++attempt)
    {
        std::atomic<bool> over = false;
        std::thread run(
            [&]
            {
                outcome = Run(L"example-adapter", 1);
                over = true;
            });
        while (!over && FAILED(Stop(L"EXAMPLE-ADAPTER", 1)))
            Sleep(1);
        run.join();
    }
    EXPECT_EQ(vorl::Stopped, outcome);
}
} // namespace
