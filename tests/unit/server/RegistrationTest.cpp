#include "CDM/src/server/ServerModule.h"
#include "Common/src/com/ComPtr.h"
#include "Common/src/com/Owned.h"

#include <gtest/gtest.h>
#include <map>
#include <string>
#include <vector>

namespace
{
constexpr wchar_t kScopeKey[] = L"Software\\ZebRegistrationTest";

// While it lives, HKEY_CLASSES_ROOT of this process is a key of the test's own.
class CClassesRootScope
{
  public:
    CClassesRootScope()
    {
        RegDeleteTreeW(HKEY_CURRENT_USER, kScopeKey);
        RegCreateKeyExW(HKEY_CURRENT_USER, kScopeKey, 0, nullptr, REG_OPTION_NON_VOLATILE, KEY_ALL_ACCESS,
                        nullptr, m_root.Put(), nullptr);
        RegOverridePredefKey(HKEY_CLASSES_ROOT, m_root.Get());
    }
    ~CClassesRootScope()
    {
        RegOverridePredefKey(HKEY_CLASSES_ROOT, nullptr);
        m_root.Reset();
        RegDeleteTreeW(HKEY_CURRENT_USER, kScopeKey);
    }

    HKEY Root() const noexcept { return m_root.Get(); }

  private:
    CRegKey m_root;
};

using Values = std::map<std::wstring, std::wstring>; // path of key or value to text

// Every key (with an empty text) and every value below a key. A key ends with a backslash, a value has its
// name behind it; the default value's name is "@".
void Collect(HKEY key, const std::wstring& path, Values& found)
{
    wchar_t name[512];
    for (DWORD i = 0;; ++i)
    {
        wchar_t text[1024] = {};
        DWORD nameSize = 512, textSize = sizeof text, type = 0;
        if (RegEnumValueW(key, i, name, &nameSize, nullptr, &type, reinterpret_cast<BYTE*>(text), &textSize))
            break;
        EXPECT_EQ(type, static_cast<DWORD>(REG_SZ)) << "value type";
        found[path + (nameSize ? name : L"@")] = text;
    }
    for (DWORD i = 0;; ++i)
    {
        DWORD nameSize = 512;
        if (RegEnumKeyExW(key, i, name, &nameSize, nullptr, nullptr, nullptr, nullptr))
            break;
        const std::wstring subPath = path + name + L"\\";
        found[subPath] = L"";
        CRegKey subkey;
        ASSERT_EQ(RegOpenKeyExW(key, name, 0, KEY_READ, subkey.Put()), ERROR_SUCCESS);
        Collect(subkey.Get(), subPath, found);
    }
}

Values Collect(const CClassesRootScope& scope)
{
    Values found;
    Collect(scope.Root(), L"", found);
    return found;
}

Values InLowerCase(const Values& values)
{
    Values lower;
    for (const auto& [path, text] : values)
    {
        std::wstring name = path;
        CharLowerW(name.data());
        lower[name] = text;
    }
    return lower;
}

// One line for each difference, for a readable failure. The names of keys have no letter case.
std::vector<std::wstring> Differences(const Values& foundAsIs, const Values& expectedAsIs)
{
    const Values found = InLowerCase(foundAsIs);
    const Values expected = InLowerCase(expectedAsIs);
    std::vector<std::wstring> differences;
    const auto add = [&](const wchar_t* what, const std::wstring& path, const std::wstring& text)
    { differences.push_back(std::wstring(what).append(path).append(L" = ").append(text)); };
    for (const auto& [path, text] : expected)
        if (const auto at = found.find(path); at == found.end() || at->second != text)
            add(at == found.end() ? L"missing: " : L"other text: ", path, text);
    for (const auto& [path, text] : found)
        if (!expected.contains(path))
            add(L"not expected: ", path, text);
    return differences;
}

std::wstring ModulePath()
{
    wchar_t path[MAX_PATH] = {};
    GetModuleFileNameW(nullptr, path, MAX_PATH);
    return path;
}

std::wstring FolderOf(const std::wstring& path)
{
    return path.substr(0, path.rfind(L'\\'));
}

Values Registered()
{
    const std::wstring clsid = L"{6C1F0A52-3B7E-4E1B-9A55-0D6B7A3C8E20}";
    const std::wstring appId = L"{6C1F0A52-3B7E-4E1B-9A55-0D6B7A3C8E21}";
    const std::wstring libid = L"{6C1F0A52-3B7E-4E1B-9A55-0D6B7A3C8E22}";
    const std::wstring cls = L"CLSID\\" + clsid + L"\\";
    const std::wstring lib = L"TypeLib\\" + libid + L"\\";
    return {
        {L"AppID\\", L""},
        {L"AppID\\" + appId + L"\\", L""},
        {L"AppID\\" + appId + L"\\@", L"Drevok"},
        {L"AppID\\Drevok.EXE\\", L""},
        {L"AppID\\Drevok.EXE\\AppID", appId},
        {L"Drevok.ProviderImp.1\\", L""},
        {L"Drevok.ProviderImp.1\\@", L"ProviderImp Class"},
        {L"Drevok.ProviderImp.1\\CLSID\\", L""},
        {L"Drevok.ProviderImp.1\\CLSID\\@", clsid},
        {L"Drevok.ProviderImp\\", L""},
        {L"Drevok.ProviderImp\\@", L"ProviderImp Class"},
        {L"Drevok.ProviderImp\\CLSID\\", L""},
        {L"Drevok.ProviderImp\\CLSID\\@", clsid},
        {L"Drevok.ProviderImp\\CurVer\\", L""},
        {L"Drevok.ProviderImp\\CurVer\\@", L"Drevok.ProviderImp.1"},
        {L"CLSID\\", L""},
        {cls, L""},
        {cls + L"@", L"ProviderImp Class"},
        {cls + L"AppID", appId},
        {cls + L"ProgID\\", L""},
        {cls + L"ProgID\\@", L"Drevok.ProviderImp.1"},
        {cls + L"VersionIndependentProgID\\", L""},
        {cls + L"VersionIndependentProgID\\@", L"Drevok.ProviderImp"},
        {cls + L"Programmable\\", L""},
        {cls + L"LocalServer32\\", L""},
        {cls + L"LocalServer32\\@", ModulePath()},
        {cls + L"TypeLib\\", L""},
        {cls + L"TypeLib\\@", libid},
        {L"TypeLib\\", L""},
        {lib, L""},
        {lib + L"1.0\\", L""},
        {lib + L"1.0\\@", L"ZEB Diagnostics provider"},
        {lib + L"1.0\\0\\", L""},
        {lib + L"1.0\\0\\win64\\", L""},
        {lib + L"1.0\\0\\win64\\@", ModulePath()},
        {lib + L"1.0\\FLAGS\\", L""},
        {lib + L"1.0\\FLAGS\\@", L"8"},
        {lib + L"1.0\\HELPDIR\\", L""},
        {lib + L"1.0\\HELPDIR\\@", FolderOf(ModulePath())},
    };
}

const std::vector<std::wstring> NoDifference;

class RegistrationTest : public testing::Test
{
  protected:
    void SetUp() override { ASSERT_EQ(m_module.Init(GetModuleHandleW(nullptr)), S_OK); }
    void TearDown() override { m_module.Term(); }

    const CClassesRootScope m_classes;
    CServerModule& m_module = CServerModule::Instance();
};

TEST_F(RegistrationTest, LeavesExactlyTheDescribedKeys)
{
    EXPECT_EQ(m_module.RegisterServer(), S_OK);
    EXPECT_EQ(Differences(Collect(m_classes), Registered()), NoDifference);
}

TEST_F(RegistrationTest, OnceMoreChangesNothing)
{
    EXPECT_EQ(m_module.RegisterServer(), S_OK);
    EXPECT_EQ(m_module.RegisterServer(), S_OK);
    EXPECT_EQ(Differences(Collect(m_classes), Registered()), NoDifference);
}

TEST_F(RegistrationTest, UnregistrationLeavesOnlyTheSharedKeys)
{
    EXPECT_EQ(m_module.RegisterServer(), S_OK);
    EXPECT_EQ(m_module.UnregisterServer(), S_OK);
    const Values shared{{L"AppID\\", L""}, {L"CLSID\\", L""}, {L"TypeLib\\", L""}};
    EXPECT_EQ(Differences(Collect(m_classes), shared), NoDifference);
}

TEST_F(RegistrationTest, UnregistrationLeavesOthersAlone)
{
    CRegKey other;
    RegCreateKeyExW(m_classes.Root(), L"CLSID\\{00000000-1111-2222-3333-444444444444}", 0, nullptr,
                    REG_OPTION_NON_VOLATILE, KEY_ALL_ACCESS, nullptr, other.Put(), nullptr);
    EXPECT_EQ(m_module.RegisterServer(), S_OK);
    EXPECT_EQ(m_module.UnregisterServer(), S_OK);
    EXPECT_TRUE(Collect(m_classes).contains(L"CLSID\\{00000000-1111-2222-3333-444444444444}\\"));
}

TEST_F(RegistrationTest, UnregistrationOfNothingIsHarmless)
{
    EXPECT_EQ(m_module.UnregisterServer(), S_OK);
    EXPECT_EQ(m_module.UnregisterServer(), S_OK);
}

TEST(ServerResourcesTest, TypeLibraryDescribesTheProvidersClass)
{
    ITypeLib* raw = nullptr;
    ASSERT_EQ(LoadTypeLibEx(ModulePath().c_str(), REGKIND_NONE, &raw), S_OK);
    ComPtr<ITypeLib> library;
    library.Attach(raw);
    BSTR name = nullptr;
    ASSERT_EQ(library->GetDocumentation(-1, &name, nullptr, nullptr, nullptr), S_OK);
    EXPECT_STREQ(name, L"DREVOKLib");
    SysFreeString(name);
    std::map<std::wstring, TYPEKIND> kinds;
    for (UINT i = 0; i < library->GetTypeInfoCount(); ++i)
    {
        TYPEKIND kind{};
        library->GetTypeInfoType(i, &kind);
        library->GetDocumentation(static_cast<INT>(i), &name, nullptr, nullptr, nullptr);
        kinds[name] = kind;
        SysFreeString(name);
    }
    EXPECT_EQ(kinds[L"ProviderImp"], TKIND_COCLASS);
    for (const wchar_t* interfaceName :
         {L"IWbemProviderInit", L"IWbemServices", L"IWbemContext", L"IWbemCallResult", L"IWbemClassObject",
          L"IWbemQualifierSet", L"IWbemObjectSink", L"IEnumWbemClassObject", L"IWbemProviderInitSink"})
        EXPECT_EQ(kinds[interfaceName], TKIND_INTERFACE) << "interface";
}

TEST(ServerResourcesTest, StringTableHoldsTheModulesName)
{
    char name[64] = {};
    EXPECT_EQ(LoadStringA(GetModuleHandleW(nullptr), 100, name, 64), 6);
    EXPECT_STREQ(name, "Drevok");
}
} // namespace
