// What the doctor reads from the computer that it runs on.
#include "Common/src/com/Text.h"
#include "tests/support/RegistryScope.h"
#include "tests/support/TempFolder.h"
#include "tools/zebdiag/AdapterNames.h"
#include "tools/zebdiag/doctor/Machine.h"

#include <gtest/gtest.h>
#include <sstream>

namespace zebdiag
{
namespace
{
std::wstring OwnPath()
{
    wchar_t path[MAX_PATH] = {};
    GetModuleFileNameW(nullptr, path, MAX_PATH);
    return path;
}

std::wstring OwnFolder()
{
    const std::wstring path = OwnPath();
    return path.substr(0, path.rfind(L'\\') + 1);
}

TEST(ThisMachineTest, ReadsValuesOfTheirTypeOnly)
{
    CRegistryScope registry;
    registry.SetString("SOFTWARE\\Doctor", "Text", "some text");
    registry.SetString("SOFTWARE\\Doctor", "Long", std::string(3000, 'x').c_str());
    registry.SetString("SOFTWARE\\Doctor", "", "own");
    registry.SetNumber("SOFTWARE\\Doctor", "Number", 7);
    registry.SetBinary("SOFTWARE\\Doctor", "Bytes", "ab");
    const IMachine& machine = ThisMachine();
    EXPECT_EQ(machine.Text(L"SOFTWARE\\Doctor", L"Text"), L"some text");
    EXPECT_EQ(machine.Text(L"SOFTWARE\\Doctor", L"Long"), std::wstring(3000, L'x'));
    EXPECT_EQ(machine.Text(L"SOFTWARE\\Doctor", L""), L"own");
    EXPECT_EQ(machine.Number(L"SOFTWARE\\Doctor", L"Number"), 7u);
    EXPECT_EQ(machine.Bytes(L"SOFTWARE\\Doctor", L"Bytes"), (std::vector<BYTE>{'a', 'b'}));

    EXPECT_EQ(machine.Text(L"SOFTWARE\\Doctor", L"Number"), std::nullopt);
    EXPECT_EQ(machine.Number(L"SOFTWARE\\Doctor", L"Text"), std::nullopt);
    EXPECT_EQ(machine.Bytes(L"SOFTWARE\\Doctor", L"Nothing"), std::nullopt);
    EXPECT_EQ(machine.Text(L"SOFTWARE\\Nothing", L"Text"), std::nullopt);
}

TEST(ThisMachineTest, LooksAtFilesAndFolders)
{
    EXPECT_EQ(ThisMachine().Look(OwnPath()), FileState::There);
    EXPECT_EQ(ThisMachine().Look(L"C:\\windows"), FileState::There);
    EXPECT_EQ(ThisMachine().Look(L"C:\\windows\\no-such-file"), FileState::Missing);
    EXPECT_EQ(ThisMachine().Look(L"C:\\no-such-folder\\file"), FileState::Missing);
}

TEST(ThisMachineTest, ReadsStringsOfLibraries)
{
    const std::wstring library = OwnFolder() + L"ENU_8023.dll";
    EXPECT_TRUE(ThisMachine().StringIn(library, 0x8308).starts_with(L"The system did not give the list"));
    EXPECT_EQ(ThisMachine().StringIn(library, 1), L"");
    EXPECT_EQ(ThisMachine().StringIn(OwnFolder() + L"no-such.dll", 0x8308), L"");
}

// What ships carries the product's version; a test program has none.
TEST(ThisMachineTest, ReadsVersions)
{
    std::vector<std::wstring> files = {L"Drevok.EXE", L"Vorl.dll", L"zebdiag.exe"};
    std::wistringstream languages(L"" ZEB_TEXT_LANGUAGES);
    for (std::wstring language; languages >> language;)
        for (const wchar_t* end : {L"_NWR.dll", L"_8023.dll", L"Diag.dll"})
            files.push_back(language + end);
    for (const std::wstring& file : files)
        EXPECT_EQ(ThisMachine().VersionOf(OwnFolder() + file), L"" ZEB_VERSION) << Utf8Text(file);
    EXPECT_EQ(ThisMachine().VersionOf(OwnPath()), L"");
    EXPECT_EQ(ThisMachine().VersionOf(L"C:\\no-such-file"), L"");
}

TEST(ThisMachineTest, KnowsAccounts)
{
    for (const wchar_t* account :
         {L"NT AUTHORITY\\LocalService", L"nt authority\\networkservice", L"Interactive User"})
        EXPECT_EQ(ThisMachine().Exists(account), Right::Yes) << NarrowText(account);
    wchar_t own[256] = {};
    DWORD size = 256;
    ASSERT_TRUE(GetUserNameW(own, &size));
    EXPECT_EQ(ThisMachine().Exists(own), Right::Yes);
    EXPECT_EQ(ThisMachine().Exists(L".\\no-such-account"), Right::No);
}

TEST(ThisMachineTest, TellsWhoMayWriteAndWritesNothing)
{
    const CTempFolder temporary;
    const std::wstring folder = temporary.Path().wstring() + L"\\";
    EXPECT_EQ(ThisMachine().MayWrite(folder, L""), Right::Yes);
    EXPECT_EQ(ThisMachine().MayWrite(folder + L"no-such-folder", L""), Right::NotTold);
    EXPECT_EQ(ThisMachine().MayWrite(folder, L".\\no-such-account"), Right::NotTold);
    WIN32_FIND_DATAW found = {};
    const HANDLE search = FindFirstFileW((folder + L"*").c_str(), &found);
    ASSERT_NE(search, INVALID_HANDLE_VALUE);
    do
        EXPECT_TRUE(std::wstring(found.cFileName) == L"." || std::wstring(found.cFileName) == L"..");
    while (FindNextFileW(search, &found));
    FindClose(search);
}

TEST(ThisMachineTest, ListsInterfaces)
{
    const std::vector<CInterface> all = ThisMachine().Interfaces();
    bool loopback = false;
    for (const CInterface& one : all)
    {
        EXPECT_EQ(one.Key, AdapterNameKey(one.Key));
        EXPECT_NE(one.Name, L"");
        loopback = loopback || one.LeftOut == L"loopback";
    }
    EXPECT_TRUE(loopback) << "every system has one";
}
} // namespace
} // namespace zebdiag
