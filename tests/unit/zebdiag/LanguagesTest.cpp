// The program in other languages: nothing is missing in any, and what it prints follows the user's.
#include "CommandsFixture.h"
#include "Common/src/com/WmiStatus.h"
#include "tools/zebdiag/DateTime.h"
#include "tools/zebdiag/languages/Said.h"

#include <fstream>
#include <iterator>
#include <set>

namespace zebdiag
{
namespace
{
// All texts of the program, as the build finds them in its sources.
constexpr const wchar_t* kTexts[] = {
#include "Texts.inc"
};

// "{1}", "{computer}" and so on.
std::multiset<std::wstring> PlacesOf(const std::wstring& text)
{
    std::multiset<std::wstring> places;
    for (size_t at = text.find(L'{'); at != std::wstring::npos; at = text.find(L'{', at + 1))
        if (const size_t end = text.find(L'}', at); end != std::wstring::npos)
            places.insert(text.substr(at, end - at + 1));
    return places;
}

// What is wrong with a language, a line for each text.
std::vector<std::string> FaultsOf(const CLanguage& language, std::span<const wchar_t* const> texts)
{
    std::vector<std::string> faults;
    std::multiset<std::wstring> translated;
    for (const CTranslation& one : language.Texts)
    {
        translated.insert(one.English);
        if (PlacesOf(one.English) != PlacesOf(one.Text))
            faults.push_back("other places: " + Utf8Text(one.Text));
        if (std::wstring_view(one.Text).empty())
            faults.push_back("empty: " + Utf8Text(one.English));
        if (std::ranges::find(texts, std::wstring_view(one.English)) == texts.end())
            faults.push_back("not used: " + Utf8Text(one.English));
    }
    for (const std::wstring text : texts)
        if (translated.count(text) != 1)
            faults.push_back((translated.contains(text) ? "twice: " : "missing: ") + Utf8Text(text));
    return faults;
}

TEST(LanguagesTest, NothingIsMissingInAny)
{
    EXPECT_GT(std::size(kTexts), 300u) << "the texts were not found";
    EXPECT_GE(Languages().size(), 1u);
    for (const CLanguage& language : Languages())
        for (const std::string& fault : FaultsOf(language, kTexts))
            ADD_FAILURE() << Utf8Text(language.Name) << ": " << fault;
}

// The check itself: each way to get a language wrong is found.
TEST(LanguagesTest, FaultsAreFound)
{
    constexpr const wchar_t* texts[] = {L"{1} of {2}", L"Number", L"Name"};
    constexpr CTranslation good[] = {
        {L"{1} of {2}", L"{2}: {1}"}, {L"Number", L"Nummer"}, {L"Name", L"Name"}};
    EXPECT_TRUE(FaultsOf({L"xx", good}, texts).empty());

    EXPECT_EQ(FaultsOf({L"xx", std::span(good).first(2)}, texts), std::vector<std::string>{"missing: Name"});
    constexpr CTranslation lostPlace[] = {{L"{1} of {2}", L"{1}"}, good[1], good[2]};
    EXPECT_EQ(FaultsOf({L"xx", lostPlace}, texts), std::vector<std::string>{"other places: {1}"});
    constexpr CTranslation twice[] = {good[0], good[1], good[2], good[1]};
    EXPECT_EQ(FaultsOf({L"xx", twice}, texts), std::vector<std::string>{"twice: Number"});
    constexpr CTranslation unused[] = {good[0], good[1], good[2], {L"Gone", L"Weg"}};
    EXPECT_EQ(FaultsOf({L"xx", unused}, texts), std::vector<std::string>{"not used: Gone"});
    constexpr CTranslation empty[] = {good[0], good[1], {L"Name", L""}};
    EXPECT_EQ(FaultsOf({L"xx", empty}, texts), std::vector<std::string>{"empty: Name"});
}

using GermanTest = CommandsTest;

TEST_F(GermanTest, FollowsTheOption)
{
    EXPECT_EQ(Run({L"list", L"--locale", L"de-DE"}), ExitCode::Passed);
    EXPECT_TRUE(m_console.Output.ends_with(
        L"4 Tests, 2 Adapter, Computer WS42, bereitgestellt von Drevok.EXE (Prozess 312).\n"))
        << Utf8Text(m_console.Output);
    m_console.Output.clear();
    EXPECT_EQ(Run({L"list"}), ExitCode::Passed);
    EXPECT_TRUE(m_console.Output.ends_with(
        L"4 tests on 2 adapters of WS42, delivered by Drevok.EXE (process 312).\n"));
}

TEST_F(GermanTest, FollowsTheUsersOwnLanguage)
{
    for (const wchar_t* locale : {L"MS_407", L"MS_c07"}) // Germany, Austria
    {
        m_seams.Locale = locale;
        m_console.Errors.clear();
        EXPECT_EQ(Run({L"run"}), ExitCode::Usage);
        EXPECT_EQ(m_console.Errors,
                  L"zebdiag: Geben Sie mit --test einen Test oder mit --all alle Tests an.\n"
                  L"Hilfe: zebdiag run --help\n");
    }
    m_console.Errors.clear();
    EXPECT_EQ(Run({L"run", L"--locale=en-US"}), ExitCode::Usage);
    EXPECT_TRUE(m_console.Errors.starts_with(L"zebdiag: Name a test")) << "the option counts more";
}

TEST_F(GermanTest, HelpFollowsToo)
{
    for (const std::vector<std::wstring>& line :
         {std::vector<std::wstring>{L"help", L"--locale", L"de-DE"}, {L"--help", L"--locale=de-DE"}})
    {
        m_console.Output.clear();
        EXPECT_EQ(Run(line), ExitCode::Passed);
        EXPECT_TRUE(m_console.Output.starts_with(
            L"Diagnose kabelgebundener Ethernet-Adapter: Tests auflisten, ausführen und anhalten, Ergebnisse lesen.\n"
            L"\n"
            L"Aufruf: zebdiag BEFEHL [OPTIONEN]\n"))
            << Utf8Text(m_console.Output);
    }
    m_console.Output.clear();
    EXPECT_EQ(Run({L"help", L"stop", L"--locale", L"de-DE"}), ExitCode::Passed);
    EXPECT_NE(m_console.Output.find(L"  -t, --test NAME       Nur diesen Test.\n"), std::wstring::npos)
        << Utf8Text(m_console.Output);
}

TEST_F(GermanTest, LanguageWithoutTextsIsEnglish)
{
    EXPECT_EQ(Run({L"stop", L"--locale", L"fr-FR"}), ExitCode::Passed);
    EXPECT_EQ(m_console.Output, L"No test is running.\n");
}

TEST_F(GermanTest, TimesAndNumbersAreWrittenAsTheLanguageWritesThem)
{
    m_world->Results[L"1@{AAAA}"] = {TestState::Passed, 100, {}, {}};
    EXPECT_EQ(Run({L"results", L"--locale", L"de-DE"}), ExitCode::Passed);
    EXPECT_EQ(m_console.Output, L"Ethernet (Contoso)\n"
                                L"  Test  Zustand    Begonnen             Beendet   Befunde\n"
                                L"  Link  Bestanden  01.05.2024 13:45:10  13:45:11\n"
                                L"\n"
                                L"1 Ergebnis: 1 bestanden.\n");
    m_console.Output.clear();
    EXPECT_EQ(Run({L"doctor", L"--locale", L"de-DE"}), ExitCode::Passed);
    EXPECT_NE(m_console.Output.find(L"Er hat in 0,0 s 4 Tests genannt."), std::wstring::npos)
        << Utf8Text(m_console.Output);
}

// Programs read the documents, in whatever language their user works.
TEST_F(GermanTest, DocumentsStayEnglish)
{
    m_world->Failures[L"Enum Tolva_DiagTest"] = {wmi::InvalidClass, L""};
    EXPECT_EQ(Run({L"results", L"--json", L"--locale", L"de-DE"}), ExitCode::NotReachable);
    EXPECT_EQ(Document()["error"]["cause"],
              "The class Tolva_DiagTest is not known in root\\cimv2 on this computer.");
}

// A page is for people.
TEST_F(GermanTest, PagesAreGermanDocumentsBesideThemOrNot)
{
    for (const std::vector<std::wstring>& document :
         {std::vector<std::wstring>{}, {L"--json"}, {L"--json", (m_folder.Path() / L"r.json").wstring()}})
    {
        const std::wstring file = (m_folder.Path() / L"r.html").wstring();
        std::vector<std::wstring> line = {L"report", L"--locale", L"de-DE", L"--html", file};
        line.insert(line.end(), document.begin(), document.end());
        EXPECT_EQ(Run(line), ExitCode::Passed);
        std::ifstream opened(std::filesystem::path(file), std::ios::binary);
        const std::string page{std::istreambuf_iterator<char>(opened), {}};
        EXPECT_NE(page.find("<html lang=\"de\">"), std::string::npos);
        EXPECT_NE(page.find("<title>Diagnosebericht von WS42</title>"), std::string::npos);
    }
}

TEST_F(GermanTest, SentencesBeginWithACapital)
{
    m_world->Failures[L"Enum Tolva_DiagTest"] = {wmi::OutOfMemory, L""};
    EXPECT_EQ(Run({L"results", L"--locale", L"de-DE"}), ExitCode::CouldNotRun);
    EXPECT_TRUE(
        m_console.Errors.starts_with(L"zebdiag: Auf diesem Computer ist kein Arbeitsspeicher mehr frei.\n"))
        << Utf8Text(m_console.Errors);
}
} // namespace
} // namespace zebdiag
