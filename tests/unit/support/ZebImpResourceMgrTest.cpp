#include "CDM/src/ZebImpResourceMgr.h"

#include "CDM/src/ZebRegistry.h"
#include "tests/support/ImportHook.h"
#include "tests/support/RegistryScope.h"
#include "tests/support/TempFolder.h"
#include "tests/support/TraceCapture.h"

#include <gtest/gtest.h>
#include <thread>

static HMODULE WINAPI LoadAsTheSystemDoes(const char* file)
{
    return LoadLibraryExA(file, nullptr, 0);
}
// There from the start: whatever is made before main() may load a library.
extern "C" decltype(&LoadLibraryA) __imp_LoadLibraryA;
decltype(&LoadLibraryA) __imp_LoadLibraryA = &LoadAsTheSystemDoes;

namespace
{
using Lines = std::vector<std::string>;

constexpr LCID kEnglish = 0x409;
constexpr LCID kGerman = 0x407;
constexpr LCID kFrench = 0x40C;
constexpr char kText[] = "first of its block";
constexpr UINT kNumber = 16;

// What the search says, without the steps of the lock.
Lines SearchLines(const CTraceCapture& trace)
{
    Lines lines = trace.Lines();
    std::erase_if(
        lines, [](const std::string& line)
        { return line.starts_with("Locking ") || line == "Entered" || line.starts_with("Unlocking "); });
    return lines;
}

// A registry and folders of the test's own, and libraries under a base name that no other test has: the
// system finds a library that is loaded already by its name alone.
class ResourceSearchTest : public testing::Test
{
  protected:
    ResourceSearchTest()
    {
        static int s_made = 0;
        BaseName = "Probe" + std::to_string(++s_made);
        File = "ENU" + BaseName + ".dll";
        for (const char* folder : {"override", "common", "image\\WMI Providers\\bin"})
            std::filesystem::create_directories(Folder.Path() / folder);
        Override = (Folder.Path() / "override").string();
        Common = (Folder.Path() / "common").string() + "\\";
        Image = (Folder.Path() / "image").string() + "\\";
        ImageFile = Image + "WMI Providers\\bin\\" + File;
    }
    ~ResourceSearchTest() override
    {
        // The manager keeps its libraries; their files shall go with the folder.
        for (const std::string& file : {File, GermanFile()})
            while (HMODULE library = GetModuleHandleA(file.c_str()))
                FreeLibrary(library);
    }

    void SetAllFolders()
    {
        Registry.SetString(kProvidersKey, "ResourcePath", Override.c_str());
        Registry.SetString(kZebKey, "ResourcePath", Common.c_str());
        Registry.SetString(kZebKey, "ImagePath", Image.c_str());
    }
    static void Install(const std::string& path, const char* library = "TestStrings.dll")
    {
        char program[MAX_PATH] = {};
        GetModuleFileNameA(nullptr, program, MAX_PATH);
        std::filesystem::copy_file(std::filesystem::path(program).replace_filename(library), path);
    }
    std::string GermanFile() const { return "DEU" + BaseName + ".dll"; }
    std::string Loaded() const
    {
        char path[MAX_PATH] = {};
        GetModuleFileNameA(GetModuleHandleA(File.c_str()), path, MAX_PATH);
        return path;
    }
    HMODULE Load(LCID locale = kEnglish, bool registerDefault = false)
    {
        HMODULE library = reinterpret_cast<HMODULE>(1);
        EXPECT_EQ(S_OK, Manager.LoadResourceDll(locale, BaseName.c_str(), registerDefault, &library));
        return library;
    }
    std::string Lookup(LCID locale = kEnglish, UINT number = kNumber)
    {
        return Manager.GetString(locale, number, BaseName.c_str());
    }

    CRegistryScope Registry;
    CTempFolder Folder;
    std::string BaseName, File, Override, Common, Image, ImageFile;
    CZebImpResourceMgr Manager;
};

TEST_F(ResourceSearchTest, TheOverrideFolderComesFirst)
{
    SetAllFolders();
    const std::string path = Override + "\\" + File;
    for (const std::string& place : {path, Common + File, ImageFile})
        Install(place);
    const CTraceCapture trace;
    EXPECT_NE(nullptr, Load());
    EXPECT_EQ((Lines{" { --> CZebImpResourceMgr::LoadResourceDll", "Locale: 0x 409", "Language code: ENU",
                     "Check for override", "Looking in " + path, "Loaded " + path, "load succeeded",
                     " } <-- CZebImpResourceMgr::LoadResourceDll"}),
              SearchLines(trace));
    EXPECT_EQ(path, Loaded());
    EXPECT_EQ(kText, Lookup());
}

TEST_F(ResourceSearchTest, TheCommonFolderComesSecond)
{
    SetAllFolders();
    for (const std::string& place : {Common + File, ImageFile})
        Install(place);
    const CTraceCapture trace;
    EXPECT_NE(nullptr, Load());
    EXPECT_EQ((Lines{" { --> CZebImpResourceMgr::LoadResourceDll", "Locale: 0x 409", "Language code: ENU",
                     "Check for override", "Looking in " + Override + "\\" + File,
                     "Check in common resource folder", "Looking in " + Common + File, "Loaded " + File,
                     "load succeeded", " } <-- CZebImpResourceMgr::LoadResourceDll"}),
              SearchLines(trace));
    EXPECT_EQ(Common + File, Loaded());
}

TEST_F(ResourceSearchTest, TheProvidersFolderComesThird)
{
    Registry.SetString(kZebKey, "ImagePath", Image.c_str());
    Install(ImageFile);
    const CTraceCapture trace;
    EXPECT_NE(nullptr, Load());
    EXPECT_EQ((Lines{" { --> CZebImpResourceMgr::LoadResourceDll", "Locale: 0x 409", "Language code: ENU",
                     "Check for override", "Check in common resource folder", "Looking in provider directory",
                     "Looking for resource DLL in image path " + File, "Loaded " + ImageFile,
                     "load succeeded", " } <-- CZebImpResourceMgr::LoadResourceDll"}),
              SearchLines(trace));
    EXPECT_EQ(ImageFile, Loaded());
}

TEST_F(ResourceSearchTest, TheSystemsSearchOrderComesLast)
{
    const CTraceCapture trace;
    HMODULE library = nullptr;
    EXPECT_EQ(S_OK, Manager.LoadResourceDll(kEnglish, "_NWR", false, &library));
    EXPECT_NE(nullptr, library);
    EXPECT_EQ((Lines{" { --> CZebImpResourceMgr::LoadResourceDll", "Locale: 0x 409", "Language code: ENU",
                     "Check for override", "Check in common resource folder", "Looking locally",
                     "Looking for resource DLL on default path ENU_NWR.dll", "Loaded ENU_NWR.dll",
                     "load succeeded", " } <-- CZebImpResourceMgr::LoadResourceDll"}),
              SearchLines(trace));
}

TEST_F(ResourceSearchTest, EveryShippedLibraryLoadsAsTheProviderLoadsIt)
{
    struct CRow
    {
        const char* BaseName;
        UINT Number;
        const char* English;
        const char* German; // in the code page of its language
    };
    for (const CRow& row : {CRow{"_NWR", 1000, "(no management object)", "(kein Verwaltungsobjekt)"},
                            CRow{"_8023", 3507, "Name resolution", "Namensaufl\xF6sung"},
                            CRow{"Diag", 11, "Longest round trip in milliseconds: ",
                                 "L\xE4ngste Umlaufzeit in Millisekunden: "}})
    {
        EXPECT_EQ(row.English, Manager.GetString(kEnglish, row.Number, row.BaseName));
        EXPECT_EQ(row.German, Manager.GetString(kGerman, row.Number, row.BaseName));
    }
}

TEST_F(ResourceSearchTest, AFolderWithoutItsTrailingBackslashIsNotUsed)
{
    Registry.SetString(kZebKey, "ResourcePath", (Folder.Path() / "common").string().c_str());
    Registry.SetString(kZebKey, "ImagePath", Image.c_str());
    Install(Common + File);
    Install(ImageFile);
    const CTraceCapture trace;
    EXPECT_NE(nullptr, Load());
    EXPECT_TRUE(trace.Has("Looking in " + (Folder.Path() / "common").string() + File));
    EXPECT_EQ(ImageFile, Loaded());
}

TEST_F(ResourceSearchTest, AFolderThatIsNotProperlyTerminatedIsSkipped)
{
    Registry.SetRaw(kProvidersKey, "ResourcePath", REG_SZ, Override);
    Registry.SetRaw(kZebKey, "ResourcePath", REG_BINARY, Common + '\0');
    Registry.SetString(kZebKey, "ImagePath", std::string(260, 'x').c_str());
    Install(Override + "\\" + File);
    Install(Common + File);
    const CTraceCapture trace;
    EXPECT_EQ(nullptr, Load());
    EXPECT_FALSE(trace.Has("Looking in "));
}

TEST_F(ResourceSearchTest, WhatIsMissingEverywhereIsToldAndNotLookedForAgain)
{
    SetAllFolders();
    const CTraceCapture trace;
    EXPECT_EQ("No string found. Id 16 DLL " + BaseName + " Locale 409", Lookup());
    EXPECT_EQ((Lines{" { --> CZebImpResourceMgr::LoadResourceDll", "Locale: 0x 409", "Language code: ENU",
                     "Check for override", "Looking in " + Override + "\\" + File,
                     "Check in common resource folder", "Looking in " + Common + File,
                     "Looking in provider directory", "Looking for resource DLL in image path " + File,
                     "Looking locally", "Looking for resource DLL on default path " + File, "load failed",
                     " } <-- CZebImpResourceMgr::LoadResourceDll"}),
              SearchLines(trace));
    // Also not when it has been installed meanwhile.
    Install(Common + File);
    const CTraceCapture again;
    EXPECT_EQ("No string found. Id 16 DLL " + BaseName + " Locale 409", Lookup());
    EXPECT_EQ(Lines{}, SearchLines(again));
    EXPECT_EQ(nullptr, Load());
}

TEST_F(ResourceSearchTest, AStringOfAMissingLibraryNamesNumberLibraryAndLocale)
{
    const CTraceCapture trace;
    EXPECT_EQ("No string found. Id 1000 DLL _NWR Locale 40c", Manager.GetString(kFrench, 1000, "_NWR"));
    EXPECT_EQ("No string found. Id 1000 DLL _NWR Locale 40c", Manager.GetString(kFrench, 1000, "_NWR"));
    EXPECT_EQ(1u, trace.Count("Language code: FRA"));
    EXPECT_EQ(1u, trace.Count("load failed"));
}

TEST_F(ResourceSearchTest, TheTextForAMissingStringEndsAfter511Characters)
{
    const std::string text = Manager.GetString(kEnglish, 16, std::string(600, 'x').c_str());
    const std::string start = "No string found. Id 16 DLL ";
    EXPECT_EQ(start + std::string(511 - start.size(), 'x'), text);
}

TEST_F(ResourceSearchTest, AMissingStringOfALibraryIsToldToo)
{
    SetAllFolders();
    Install(Common + File);
    EXPECT_EQ("No string found. Id 500 DLL " + BaseName + " Locale 409", Lookup(kEnglish, 500));
    EXPECT_EQ("No string found. Id 17 DLL " + BaseName + " Locale 409", Lookup(kEnglish, 17));
}

TEST_F(ResourceSearchTest, ALocaleIsLoadedOnce)
{
    SetAllFolders();
    Install(Common + File);
    HMODULE first = Load();
    const CTraceCapture trace;
    EXPECT_EQ(first, Load());
    EXPECT_EQ((Lines{" { --> CZebImpResourceMgr::LoadResourceDll", "Locale: 0x 409", "Already loaded",
                     " } <-- CZebImpResourceMgr::LoadResourceDll"}),
              SearchLines(trace));
}

TEST_F(ResourceSearchTest, BaseNamesAreCaseSensitive)
{
    SetAllFolders();
    Install(Common + File);
    Load();
    std::string other = BaseName;
    other[0] = 'p';
    const CTraceCapture trace;
    EXPECT_EQ(S_OK, Manager.LoadResourceDll(kEnglish, other.c_str(), false));
    EXPECT_FALSE(trace.Has("Already loaded"));
}

TEST_F(ResourceSearchTest, TheDefaultStandsInForALanguageWithoutALibrary)
{
    SetAllFolders();
    Install(Common + File);
    Load(kEnglish, true);
    EXPECT_EQ(kText, Lookup(kGerman));
    EXPECT_EQ("No string found. Id 500 DLL " + BaseName + " Locale 407", Lookup(kGerman, 500));
}

TEST_F(ResourceSearchTest, ALibraryThatIsNotTheDefaultDoesNotStandIn)
{
    SetAllFolders();
    Install(Common + File);
    Load(kEnglish, false);
    EXPECT_EQ("No string found. Id 16 DLL " + BaseName + " Locale 407", Lookup(kGerman));
}

TEST_F(ResourceSearchTest, ALookupRegistersNoDefault)
{
    SetAllFolders();
    Install(Common + File);
    EXPECT_EQ(kText, Lookup(kEnglish));
    EXPECT_EQ("No string found. Id 16 DLL " + BaseName + " Locale 407", Lookup(kGerman));
}

TEST_F(ResourceSearchTest, ALaterDefaultDoesNotReplaceTheFirst)
{
    SetAllFolders();
    Install(Common + File);
    Install(Common + GermanFile(), "ENU_8023.dll"); // has other numbers
    EXPECT_NE(nullptr, Load(kEnglish, true));
    EXPECT_NE(nullptr, Load(kGerman, true));
    EXPECT_EQ("No string found. Id 16 DLL " + BaseName + " Locale 407", Lookup(kGerman));
    EXPECT_EQ(kText, Lookup(kFrench));
}

TEST_F(ResourceSearchTest, TheFirstDefaultStays)
{
    SetAllFolders();
    Install(Common + File);
    EXPECT_EQ(nullptr, Load(kGerman, true));
    EXPECT_NE(nullptr, Load(kEnglish, true));
    // A language that was looked for in vain is no default.
    EXPECT_EQ(kText, Lookup(kGerman));
}

TEST_F(ResourceSearchTest, LocaleZeroEightHundredUsesTheSystemsLoader)
{
    char language[9] = {}; // the system's own
    ASSERT_NE(0, GetLocaleInfoA(0x0800, LOCALE_SABBREVLANGNAME, language, sizeof language));
    File = language + BaseName + ".dll";
    SetAllFolders();
    Install(Common + File);
    EXPECT_EQ(kText, Lookup(0x0800));
    const CTraceCapture trace;
    EXPECT_EQ("No string found. Id 500 DLL " + BaseName + " Locale 800", Lookup(0x0800, 500));
    EXPECT_TRUE(trace.Has("Error in LoadString"));
    EXPECT_FALSE(trace.Has("Failed to find resource"));
}

TEST_F(ResourceSearchTest, ALookupShowsItsLock)
{
    Load();
    const CTraceCapture trace;
    Lookup();
    const Lines lines = trace.Lines();
    ASSERT_EQ(3u, lines.size());
    EXPECT_TRUE(lines[0].starts_with("Locking ")) << lines[0];
    EXPECT_EQ("Entered", lines[1]);
    EXPECT_TRUE(lines[2].starts_with("Unlocking ")) << lines[2];
}

TEST_F(ResourceSearchTest, TheWideFormIsTheSameText)
{
    SetAllFolders();
    Install(Common + File);
    EXPECT_STREQ(L"first of its block", Manager.GetStringBstr(kEnglish, kNumber, BaseName.c_str()).Get());
    EXPECT_STREQ(
        (L"No string found. Id 17 DLL " + std::wstring(BaseName.begin(), BaseName.end()) + L" Locale 409")
            .c_str(),
        Manager.GetStringBstr(kEnglish, 17, BaseName.c_str()).Get());
}

TEST_F(ResourceSearchTest, TheWideFormIsReadInTheAnsiCodePage)
{
    SetAllFolders();
    Install(Common + File);
    EXPECT_EQ("gr\xFCn", Lookup(kEnglish, 2011));
    EXPECT_STREQ(L"gr\u00FCn", Manager.GetStringBstr(kEnglish, 2011, BaseName.c_str()).Get());
}

TEST_F(ResourceSearchTest, AnEmptyTextHasNoWideForm)
{
    struct CEmpty : CZebImpResourceMgr
    {
        std::string GetString(LCID, UINT, const char*) override { return {}; }
    } empty;
    EXPECT_EQ(nullptr, empty.GetStringBstr(kEnglish, 1, "x").Get());
}

TEST_F(ResourceSearchTest, AnUnknownLocaleLooksForTheBareName)
{
    const CTraceCapture trace;
    Load(0xFFFF);
    EXPECT_TRUE(trace.Has("Looking for resource DLL on default path " + BaseName + ".dll"));
    EXPECT_TRUE(trace.Has("load failed"));
}

bool ThreadHasAToken()
{
    HANDLE token = nullptr;
    const bool has = OpenThreadToken(GetCurrentThread(), TOKEN_QUERY, TRUE, &token);
    if (token)
        CloseHandle(token);
    return has;
}

int s_loads;
HMODULE WINAPI LoadAsTheProcess(const char* file)
{
    ++s_loads;
    EXPECT_FALSE(ThreadHasAToken()) << file;
    return LoadAsTheSystemDoes(file);
}

TEST_F(ResourceSearchTest, LibrariesAreLoadedUnderTheProcesssIdentityWhoeverTheClientIs)
{
    SetAllFolders();
    Install(Common + File);
    ASSERT_TRUE(ImpersonateSelf(SecurityImpersonation));
    ASSERT_TRUE(ThreadHasAToken());
    s_loads = 0;
    {
        const CImportHook hook(__imp_LoadLibraryA, &LoadAsTheProcess);
        EXPECT_EQ(kText, Lookup());
    }
    EXPECT_EQ(2, s_loads) << "in two of the folders";
    EXPECT_TRUE(ThreadHasAToken()) << "the request goes on as its client";
    RevertToSelf();
}

TEST_F(ResourceSearchTest, SeveralThreadsMayAskAtOnce)
{
    SetAllFolders();
    Install(Common + File);
    std::vector<std::thread> threads;
    for (int i = 0; i < 8; ++i)
        threads.emplace_back(
            [this, i]
            {
                if (i % 2)
                    Manager.LoadResourceDll(kEnglish, BaseName.c_str(), true);
                for (int n = 0; n < 20; ++n)
                    EXPECT_EQ(kText, Lookup(kEnglish));
            });
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(Common + File, Loaded());
}
} // namespace
