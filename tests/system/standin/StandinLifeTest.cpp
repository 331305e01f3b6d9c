// Connections, several clients, and how processes come and go.
#include "tests/support/CaseName.h"
#include "tests/system/standin/SavedSetting.h"
#include "tests/system/standin/StandinFixture.h"
#include "tests/system/standin/TestProviderIds.h"
#include "tests/system/support/Process.h"

#include <fstream>
#include <thread>

namespace
{
struct ConnectCase
{
    const char* name;
    const wchar_t* resource; // "%" stands for the name of this computer
    const wchar_t* user;
    const wchar_t* locale;
    long flags;
    HRESULT result;
};
class CStandinConnect : public CStandinTest, public testing::WithParamInterface<ConnectCase>
{
};
TEST_P(CStandinConnect, Answers)
{
    std::wstring resource = GetParam().resource;
    if (const size_t place = resource.find(L'%'); place != std::wstring::npos)
    {
        wchar_t computer[MAX_COMPUTERNAME_LENGTH + 1] = {};
        DWORD size = MAX_COMPUTERNAME_LENGTH + 1;
        GetComputerNameW(computer, &size);
        resource.replace(place, 1, computer);
    }
    ComPtr<IWbemLocator> locator;
    ASSERT_EQ(S_OK, CoCreateInstance(CLSID_WbemLocator, nullptr, CLSCTX_INPROC_SERVER, __uuidof(IWbemLocator),
                                     locator.PutVoid()));
    ComPtr<IWbemServices> services;
    EXPECT_EQ(GetParam().result,
              locator->ConnectServer(CBstr(resource.c_str()).Get(), CBstr(GetParam().user).Get(), nullptr,
                                     CBstr(GetParam().locale).Get(), GetParam().flags, nullptr, nullptr,
                                     services.Put()));
    EXPECT_EQ(SUCCEEDED(GetParam().result), services.Get() != nullptr);
}
constexpr HRESULT kUnreachable = static_cast<HRESULT>(0x800706BA);
INSTANTIATE_TEST_SUITE_P(
    Resources, CStandinConnect,
    testing::Values(
        ConnectCase{"Plain", L"root\\cimv2", nullptr, nullptr, 0, WBEM_S_NO_ERROR},
        ConnectCase{"AnyCase", L"ROOT\\CimV2", nullptr, nullptr, 0, WBEM_S_NO_ERROR},
        ConnectCase{"Slashes",
                    L"//./"
                    L"root/cimv2",
                    nullptr, nullptr, 0, WBEM_S_NO_ERROR},
        ConnectCase{"Dot", L"\\\\.\\root\\cimv2", nullptr, nullptr, 0, WBEM_S_NO_ERROR},
        ConnectCase{"Computer", L"\\\\%\\root\\cimv2", nullptr, nullptr, 0, WBEM_S_NO_ERROR},
        ConnectCase{"LocalHost", L"\\\\localhost\\root\\cimv2", nullptr, nullptr, 0, WBEM_S_NO_ERROR},
        ConnectCase{"Default", L"", nullptr, nullptr, 0, WBEM_S_NO_ERROR},
        ConnectCase{"MaxWait", L"root\\cimv2", nullptr, L"MS_409", WBEM_FLAG_CONNECT_USE_MAX_WAIT,
                    WBEM_S_NO_ERROR},
        ConnectCase{"UnknownNamespace", L"root\\none", nullptr, nullptr, 0, wmi::InvalidNamespace},
        ConnectCase{"NoNamespace", L"root\\cimv2\\", nullptr, nullptr, 0, wmi::InvalidNamespace},
        ConnectCase{"NotANamespace", L"StandinTest_Item.Name=\"n1\"", nullptr, nullptr, 0,
                    wmi::InvalidNamespace},
        ConnectCase{"Elsewhere", L"\\\\elsewhere\\root\\cimv2", nullptr, nullptr, 0, kUnreachable},
        ConnectCase{"User", L"root\\cimv2", L"somebody", nullptr, 0,
                    static_cast<HRESULT>(WBEM_E_LOCAL_CREDENTIALS)},
        ConnectCase{"EmptyUser", L"root\\cimv2", L"", nullptr, 0, WBEM_S_NO_ERROR},
        ConnectCase{"Locale", L"root\\cimv2", nullptr, L"english", 0, wmi::InvalidParameter},
        ConnectCase{"Flags", L"root\\cimv2", nullptr, nullptr, 1, wmi::InvalidParameter}),
    NameOf<ConnectCase>);

class CStandinLife : public CStandinTest
{
};

TEST_F(CStandinLife, LetsClientsSetTheSecurityOfWhatTheyGet)
{
    ComPtr<IEnumWbemClassObject> objects;
    ASSERT_EQ(WBEM_S_NO_ERROR, Enumerate(L"StandinTest_Item", 0, objects));
    for (IUnknown* proxy : {static_cast<IUnknown*>(m_services.Get()), static_cast<IUnknown*>(objects.Get())})
        EXPECT_EQ(S_OK, CoSetProxyBlanket(proxy, RPC_C_AUTHN_DEFAULT, RPC_C_AUTHZ_DEFAULT, nullptr,
                                          RPC_C_AUTHN_LEVEL_DEFAULT, RPC_C_IMP_LEVEL_IMPERSONATE, nullptr,
                                          EOAC_NONE));
}

TEST_F(CStandinLife, ServesManyRequestsAtOnceThroughOneProvider)
{
    std::vector<std::thread> clients;
    std::atomic<int> good{0};
    for (int client = 0; client < 8; ++client)
        clients.emplace_back(
            [&]
            {
                CoInitializeEx(nullptr, COINIT_MULTITHREADED);
                {
                    ComPtr<IWbemServices> services;
                    for (int round = 0; round < 5; ++round)
                    {
                        ComPtr<IEnumWbemClassObject> objects;
                        HRESULT end = E_FAIL;
                        if (SUCCEEDED(Connect(L"root\\cimv2", nullptr, services)) &&
                            SUCCEEDED(services->CreateInstanceEnum(CBstr(L"StandinTest_Item").Get(),
                                                                   WBEM_FLAG_RETURN_IMMEDIATELY, nullptr,
                                                                   objects.Put())) &&
                            ReadAll(objects.Get(), end).size() == 3 && end == WBEM_S_FALSE)
                            ++good;
                    }
                }
                CoUninitialize();
            });
    for (std::thread& client : clients)
        client.join();
    EXPECT_EQ(40, good);
    EXPECT_EQ(1u, ProcessesOf(L"WmiStandin.exe").size());
    EXPECT_EQ(1u, ProcessesOf(L"StandinTestProvider.exe").size());
}

TEST_F(CStandinLife, EndsASecondServiceAtOnce)
{
    const std::vector<DWORD> service = ProcessesOf(L"WmiStandin.exe");
    EXPECT_EQ(1u, RunProgram(L"\"" + BinFolder() + L"WmiStandin.exe\" /serve").ExitCode);
    EXPECT_EQ(service, ProcessesOf(L"WmiStandin.exe"));
}

TEST_F(CStandinLife, KeepsTheProviderBetweenRequestsAndLetsItGoInTheEnd)
{
    ComPtr<IWbemClassObject> item;
    ASSERT_EQ(WBEM_S_NO_ERROR, Get(L"StandinTest_Item='n1'", item));
    const std::vector<DWORD> first = ProcessesOf(L"StandinTestProvider.exe");
    ASSERT_EQ(WBEM_S_NO_ERROR, Get(L"StandinTest_Item='n1'", item));
    EXPECT_EQ(first, ProcessesOf(L"StandinTestProvider.exe"));
    EXPECT_EQ(1u, first.size());
    {
        // With a client connected but idle, the provider goes and the service stays.
        const CNoIdleTime noIdleTime;
        EXPECT_TRUE(WaitForNoProcess(L"StandinTestProvider.exe"));
        EXPECT_EQ(1u, ProcessesOf(L"WmiStandin.exe").size());
    }
    EXPECT_EQ(WBEM_S_NO_ERROR, Get(L"StandinTest_Item='n1'", item));
}

TEST_F(CStandinLife, OutlivesAClientThatIsKilled)
{
    const CHandle started(CreateEventW(nullptr, TRUE, FALSE, kStartedEvent));
    const CHandle stopped(CreateEventW(nullptr, TRUE, FALSE, kStoppedEvent));
    ResetEvent(started.Get());
    ResetEvent(stopped.Get());
    CRunningProgram client(L"cscript.exe /nologo \"" + BinFolder() + L"standin-test\\endless.vbs\"");
    ASSERT_EQ(WAIT_OBJECT_0, WaitForSingleObject(started.Get(), 60000));
    KillProcess(client.Id());
    EXPECT_EQ(WAIT_OBJECT_0, WaitForSingleObject(stopped.Get(), 60000));
    m_services.Reset();
    const CNoIdleTime noIdleTime;
    EXPECT_TRUE(WaitForNoProcess(L"WmiStandin.exe"));
}

TEST_F(CStandinLife, RefusesAMofFileWithAMistakeAndKeepsTheOthers)
{
    const std::wstring path = BinFolder() + L"standin-test\\mistake.mof";
    {
        std::ofstream file(path.c_str());
        file << "#pragma namespace(\"root\\\\cimv2\")\nclass Mistake : NoSuchClass { string Name; };\n";
    }
    const std::wstring service = L"\"" + BinFolder() + L"WmiStandin.exe\" /compile ";
    const CRunResult refused = RunProgram(service + L"\"" + path + L"\"");
    EXPECT_EQ(1u, refused.ExitCode);
    EXPECT_NE(std::string::npos, refused.Output.find("mistake.mof(2,")) << refused.Output;
    const CRunResult missing = RunProgram(service + L"nowhere.mof");
    EXPECT_EQ(1u, missing.ExitCode);
    EXPECT_NE(std::string::npos, missing.Output.find("nowhere.mof")) << missing.Output;
    EXPECT_EQ(0u, RunProgram(service).ExitCode);
    DeleteFileW(path.c_str());
}
} // namespace
