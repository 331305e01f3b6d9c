// Profiles: what the file keeps, and that a run gets it.
#include "tools/zebdiag/Profiles.h"
#include "CommandsFixture.h"
#include "tests/support/CaseName.h"
#include "tools/zebdiag/Failure.h"

#include <cstring>
#include <fstream>

namespace zebdiag
{
namespace
{
class ProfilesTest : public CommandsTest
{
  protected:
    std::wstring File() const { return m_seams.Surroundings.ProfileFile; }
    void Write(const std::string& bytes)
    {
        StoreProfiles(File(), {}); // makes the folder
        std::ofstream(std::filesystem::path(File()), std::ios::binary) << bytes;
    }
};

TEST_F(ProfilesTest, NoFileIsNoProfile)
{
    EXPECT_TRUE(LoadProfiles(File()).empty());
    EXPECT_EQ(Run({L"profiles"}), ExitCode::Passed);
    EXPECT_EQ(m_console.Output,
              L"There are no profiles. Keep one with \"zebdiag profiles --save NAME\" and the "
              L"settings to run with.\n");
    EXPECT_FALSE(std::filesystem::exists(File())) << "showing changes nothing";
}

TEST_F(ProfilesTest, AreKeptShownAndDeleted)
{
    EXPECT_EQ(Run({L"profiles", L"--save", L"Größe", L"--coverage", L"20", L"--quick", L"on"}),
              ExitCode::Passed);
    m_console.Output.clear();
    EXPECT_EQ(Run({L"profiles", L"--save", L"all", L"--quick", L"off", L"--report", L"on"}),
              ExitCode::Passed);
    EXPECT_EQ(m_console.Output.substr(0, m_console.Output.find(L"\n\n")),
              L"  Profile  Coverage  Quick  Report\n"
              L"  all      -         off    on\n"
              L"  Größe    20 %      on     -");
    EXPECT_EQ(Run({L"profiles", L"--delete", L"ALL"}), ExitCode::Passed);
    const Profiles left = LoadProfiles(File());
    ASSERT_EQ(left.size(), 1u);
    EXPECT_EQ(left.begin()->first, L"Größe");
    EXPECT_EQ(left.begin()->second.Coverage, 20);
    EXPECT_EQ(left.begin()->second.Quick, true);
    EXPECT_EQ(left.begin()->second.Report, std::nullopt);
}

TEST_F(ProfilesTest, SavingReplacesTheWholeProfile)
{
    Run({L"profiles", L"--save", L"a", L"--coverage", L"20", L"--quick", L"on"});
    Run({L"profiles", L"--save", L"A", L"--report", L"off"});
    const Profiles profiles = LoadProfiles(File());
    ASSERT_EQ(profiles.size(), 1u);
    EXPECT_EQ(profiles.begin()->second.Coverage, std::nullopt);
    EXPECT_EQ(profiles.begin()->second.Report, false);
}

TEST_F(ProfilesTest, AreADocumentToo)
{
    EXPECT_EQ(Run({L"profiles", L"--save", L"a", L"--coverage", L"20", L"--json"}), ExitCode::Passed);
    EXPECT_EQ(Document(), nlohmann::json::parse(R"({"version": 2, "command": "profiles", "profiles":
        [{"name": "a", "coverage": 20, "quick": null, "report": null}]})"));
}

TEST_F(ProfilesTest, NeedNoService)
{
    m_seams.Connect = [](const CTarget&, const std::wstring&) -> CWmiSession
    { throw std::runtime_error("connected"); };
    EXPECT_EQ(Run({L"profiles"}), ExitCode::Passed);
}

TEST_F(ProfilesTest, RunGetsTheSettingsAndPutsTheFormerOnesBack)
{
    Run({L"profiles", L"--save", L"short", L"--coverage", L"20", L"--quick", L"off"});
    m_console.Output.clear();
    EXPECT_EQ(Run({L"run", L"--test", L"sender", L"--profile", L"SHORT", L"--json"}), ExitCode::Passed);
    const nlohmann::json setting = Document()["runs"][0]["result"]["setting"];
    EXPECT_EQ(setting["coverage"], 20);
    EXPECT_EQ(setting["quick"], false);
    EXPECT_EQ(setting["report"], true) << "the profile says nothing of it";
    EXPECT_EQ(m_world->Settings[L"9@{BBBB}"].Coverage, 100);
    EXPECT_EQ(m_world->Settings[L"9@{BBBB}"].Quick, true);
}

TEST_F(ProfilesTest, CommandLineCountsMoreThanTheProfile)
{
    Run({L"profiles", L"--save", L"short", L"--coverage", L"20", L"--quick", L"on"});
    m_console.Output.clear();
    EXPECT_EQ(Run({L"run", L"--test", L"sender", L"--profile", L"short", L"--coverage", L"70", L"--no-quick",
                   L"--json"}),
              ExitCode::Passed);
    EXPECT_EQ(Document()["runs"][0]["result"]["setting"]["coverage"], 70);
    EXPECT_EQ(Document()["runs"][0]["result"]["setting"]["quick"], false);
}

TEST_F(ProfilesTest, UnknownOneRunsNothingAndNamesThoseThereAre)
{
    Run({L"profiles", L"--save", L"short", L"--coverage", L"20"});
    EXPECT_EQ(Run({L"run", L"--test", L"sender", L"--profile", L"long"}), ExitCode::NotFound);
    EXPECT_TRUE(
        m_console.Errors.starts_with(L"zebdiag: There is no profile \"long\". There is:\n  short\nKeep one"))
        << Utf8Text(m_console.Errors);
    EXPECT_TRUE(m_world->Calls.empty());
    EXPECT_EQ(Run({L"profiles", L"--delete", L"long"}), ExitCode::NotFound);
    EXPECT_EQ(LoadProfiles(File()).size(), 1u);
}

TEST_F(ProfilesTest, FileThatCannotBeReplacedIsNamed)
{
    m_seams.Surroundings.ProfileFile =
        (m_folder.Path() / "no" / "such" / "folder" / "profiles.json").wstring();
    EXPECT_EQ(Run({L"profiles", L"--save", L"a", L"--coverage", L"20"}), ExitCode::CouldNotRun);
    EXPECT_TRUE(m_console.Errors.starts_with(L"zebdiag: " + File() + L" was not written.\n"));
}

TEST_F(ProfilesTest, UserWithoutApplicationDataIsTold)
{
    m_seams.Surroundings.ProfileFile.clear();
    EXPECT_EQ(Run({L"profiles"}), ExitCode::CouldNotRun);
    EXPECT_TRUE(m_console.Errors.starts_with(L"zebdiag: There is no folder for the profiles"));
}

struct DamagedCase
{
    const char* name;
    const char* bytes;
};

class DamagedProfilesTest : public ProfilesTest, public testing::WithParamInterface<DamagedCase>
{
};

// It is named and left as it is.
TEST_P(DamagedProfilesTest, CannotBeUnderstood)
{
    Write(GetParam().bytes);
    for (const std::vector<std::wstring>& arguments : {std::vector<std::wstring>{L"profiles"},
                                                       {L"profiles", L"--save", L"a", L"--coverage", L"1"},
                                                       {L"run", L"--test", L"sender", L"--profile", L"a"}})
    {
        m_console.Errors.clear();
        EXPECT_EQ(Run(arguments), ExitCode::CouldNotRun);
        EXPECT_TRUE(m_console.Errors.starts_with(L"zebdiag: The profiles in " + File() +
                                                 L" cannot be understood.\n"));
    }
    EXPECT_EQ(std::filesystem::file_size(File()), strlen(GetParam().bytes));
}

INSTANTIATE_TEST_SUITE_P(
    Files, DamagedProfilesTest,
    testing::Values(DamagedCase{"NoDocument", "profiles"}, DamagedCase{"CutOff", R"({"version": 1, "profi)"},
                    DamagedCase{"OfALaterVersion", R"({"version": 2, "profiles": {}})"},
                    DamagedCase{"NoProfiles", R"({"version": 1})"},
                    DamagedCase{"CoverageOutOfRange",
                                R"({"version": 1, "profiles": {"a": {"coverage": 101}}})"},
                    DamagedCase{"CoverageAsText", R"({"version": 1, "profiles": {"a": {"coverage": "20"}}})"},
                    DamagedCase{"SwitchAsNumber", R"({"version": 1, "profiles": {"a": {"quick": 1}}})"}),
    NameOf<DamagedCase>);

TEST_F(ProfilesTest, FileOfTheUserIsInTheApplicationData)
{
    const std::wstring file = ProfileFile();
    EXPECT_TRUE(file.ends_with(L"\\Veltrane\\ZEB\\profiles.json")) << Utf8Text(file);
}
} // namespace
} // namespace zebdiag
