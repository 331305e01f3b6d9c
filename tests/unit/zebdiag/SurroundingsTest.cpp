// What the client learns about the machine: names of adapters, processes, the configured length of runs.
#include "FakeDiagnostics.h"
#include "standin/object/Objects.h"
#include "tests/support/RegistryScope.h"
#include "tools/zebdiag/Commands.h"

#include <algorithm>
#include <gtest/gtest.h>

namespace zebdiag
{
namespace
{
constexpr char kZebDiagKey[] = "SOFTWARE\\Veltrane\\Halvern\\ZEB\\ZebDiag";

CTarget AnotherComputer()
{
    CTarget target;
    target.Computer = L"another-computer";
    return target;
}

// A management service that answers queries with what it was given, as Windows' own does.
class CQueryServices final : public CFakeServices
{
  public:
    CQueryServices() : CFakeServices({}) {}

    std::vector<ComPtr<IWbemClassObject>> Answers;
    std::wstring Asked;

    STDMETHODIMP ExecQuery(const BSTR, const BSTR query, LONG, IWbemContext*,
                           IEnumWbemClassObject** objects) override
    {
        Asked = query;
        *objects = EnumerateObjects(Answers).Detach();
        return wmi::NoError;
    }
};

ComPtr<IWbemClassObject> Object(const wchar_t* className, std::map<std::wstring, CVariant>&& values)
{
    auto definition = std::make_shared<standin::CClassDefinition>(className);
    for (const auto& [name, value] : values)
    {
        standin::CPropertyDefinition property;
        property.Name = name;
        property.Type = value.vt == VT_I4 ? CIM_UINT32 : CIM_STRING;
        definition->SetProperty(std::move(property));
    }
    ComPtr<IWbemClassObject> object = standin::MakeInstance(definition);
    for (auto& [name, value] : values)
        EXPECT_EQ(object->Put(name.c_str(), 0, &value, 0), S_OK);
    return object;
}

ComPtr<IWbemClassObject> Adapter(const wchar_t* guid, const wchar_t* connection, const wchar_t* device)
{
    std::map<std::wstring, CVariant> values;
    values.emplace(L"GUID", guid ? CVariant::FromText(guid) : CVariant::Null());
    values.emplace(L"NetConnectionID", connection ? CVariant::FromText(connection) : CVariant::Null());
    values.emplace(L"Name", CVariant::FromText(device));
    return Object(L"Win32_NetworkAdapter", std::move(values));
}

TEST(AdapterNamesTest, ComeFromTheManagementService)
{
    const auto services = MakeCom<CQueryServices>();
    services->Answers = {Adapter(L"{aaaa-1111}", L"Ethernet", L"Contoso"),
                         Adapter(nullptr, nullptr, L"Tunnel"), Adapter(L"{BBBB-2222}", nullptr, L"Fabrikam")};
    const AdapterNames names = FindAdapterNames(CWmiSession(services, AnotherComputer()));
    EXPECT_EQ(services->Asked, L"SELECT GUID, NetConnectionID, Name FROM Win32_NetworkAdapter");
    ASSERT_EQ(names.size(), 2u) << "what has no GUID cannot be matched";
    EXPECT_EQ(names.at(L"{AAAA-1111}").Name, L"Ethernet");
    EXPECT_EQ(names.at(L"{AAAA-1111}").Description, L"Contoso");
    EXPECT_EQ(names.at(L"{BBBB-2222}").Name, L"");
}

// The keys of the system's interfaces, for comparison.
std::vector<std::wstring> KeysOf(const AdapterNames& names)
{
    std::vector<std::wstring> keys;
    for (const auto& [key, name] : names)
        keys.push_back(key);
    return keys;
}

TEST(AdapterNamesTest, ComeFromThisComputersSystemWhereTheServiceHasNone)
{
    const AdapterNames names = FindAdapterNames(CWmiSession(MakeCom<CFakeDiagnostics>(), CTarget()));
    EXPECT_FALSE(names.empty()) << "every system has a loopback interface";
    EXPECT_EQ(KeysOf(names), KeysOf(AdapterNamesOfSystem()));
    for (const auto& [key, name] : names)
        EXPECT_EQ(key, AdapterNameKey(key));
}

TEST(AdapterNamesTest, OtherComputersAreNotGivenTheNamesOfThisOne)
{
    EXPECT_TRUE(FindAdapterNames(CWmiSession(MakeCom<CFakeDiagnostics>(), AnotherComputer())).empty());
}

TEST(ServingProcessTest, ComesFromTheManagementService)
{
    const auto services = MakeCom<CQueryServices>();
    std::map<std::wstring, CVariant> values;
    values.emplace(L"ProcessId", CVariant::FromLong(312));
    services->Answers = {Object(L"Win32_Process", std::move(values))};
    EXPECT_EQ(FindServingProcesses(CWmiSession(services, AnotherComputer())),
              std::vector<unsigned long>{312});
    EXPECT_EQ(services->Asked, L"SELECT ProcessId FROM Win32_Process WHERE Name = 'Drevok.EXE'");
}

TEST(ServingProcessTest, ProcessesOfOtherComputersAreNotLookedForHere)
{
    EXPECT_TRUE(FindServingProcesses(CWmiSession(MakeCom<CFakeDiagnostics>(), AnotherComputer())).empty());
}

TEST(ServingProcessTest, SystemListsProcessesByImage)
{
    wchar_t path[MAX_PATH] = {};
    GetModuleFileNameW(nullptr, path, MAX_PATH);
    const std::wstring image = wcsrchr(path, L'\\') + 1;
    std::wstring otherCase = image;
    CharUpperBuffW(otherCase.data(), static_cast<DWORD>(otherCase.size()));
    for (const std::wstring& name : {image, otherCase})
    {
        const auto ids = ProcessesOfImage(name);
        EXPECT_NE(std::find(ids.begin(), ids.end(), GetCurrentProcessId()), ids.end());
    }
    EXPECT_TRUE(ProcessesOfImage(L"no-such-program.exe").empty());
}

TEST(ConfiguredRunSecondsTest, IsReadFromTheRegistryOfThisComputer)
{
    CRegistryScope registry;
    const CWmiSession here(MakeCom<CFakeDiagnostics>(), CTarget());
    EXPECT_EQ(ConfiguredRunSeconds(here), 100u) << "what holds where nothing is configured";
    registry.SetNumber(kZebDiagKey, "TimeoutSndRsp", 7);
    EXPECT_EQ(ConfiguredRunSeconds(here), 7u);
    registry.SetString(kZebDiagKey, "TimeoutSndRsp", "8");
    EXPECT_EQ(ConfiguredRunSeconds(here), 100u);
}

TEST(ConfiguredRunSecondsTest, IsUnknownForOtherComputers)
{
    EXPECT_EQ(ConfiguredRunSeconds(CWmiSession(MakeCom<CFakeDiagnostics>(), AnotherComputer())),
              std::nullopt);
}
} // namespace
} // namespace zebdiag
