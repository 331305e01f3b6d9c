// The command that writes the metrics, and the file that it replaces in one step.
#include "CommandsFixture.h"
#include "tools/zebdiag/WholeFile.h"

#include <fstream>
#include <sstream>

namespace zebdiag
{
namespace
{
class MetricsCommandTest : public CommandsTest
{
  protected:
    std::wstring File() const { return (m_folder.Path() / "zebdiag.prom").wstring(); }
    std::string Contents() const
    {
        std::ostringstream text;
        text << std::ifstream(std::filesystem::path(File()), std::ios::binary).rdbuf();
        return text.str();
    }
    // Nothing is left beside the file.
    size_t Files() const
    {
        return static_cast<size_t>(std::distance(std::filesystem::directory_iterator(m_folder.Path()), {}));
    }
};

TEST_F(MetricsCommandTest, WritesToStandardOutput)
{
    m_world->Results[L"1@{AAAA}"] = {TestState::Failed, 100, {}, {}};
    EXPECT_EQ(Run({L"metrics"}), ExitCode::Passed) << "a failed test is no failure of the command";
    const std::string document = Utf8Text(m_console.Output);
    EXPECT_NE(document.find("\nzeb_up 1\n"), std::string::npos) << document;
    EXPECT_NE(document.find("zeb_test_state{adapter=\"Ethernet\",test=\"1\",state=\"failed\"} 1\n"),
              std::string::npos);
    EXPECT_TRUE(document.ends_with("\n# EOF\n"));
    EXPECT_EQ(m_console.Errors, L"");
}

TEST_F(MetricsCommandTest, WritesAFileAndNothingElse)
{
    std::ofstream(std::filesystem::path(File())) << "former contents";
    EXPECT_EQ(Run({L"metrics", L"--out", File()}), ExitCode::Passed);
    EXPECT_TRUE(Contents().starts_with("# HELP zeb_build_info"));
    EXPECT_TRUE(Contents().ends_with("\n# EOF\n"));
    EXPECT_EQ(Contents().find('\r'), std::string::npos);
    EXPECT_EQ(Files(), 1u);
    EXPECT_EQ(m_console.Output + m_console.Errors, L"");
}

TEST_F(MetricsCommandTest, TellsThatTheProviderDoesNotAnswer)
{
    m_world->Failures[L"Enum Tolva_DiagTest"] = {wmi::ProviderLoadFailure, L"No agent."};
    EXPECT_EQ(Run({L"metrics", L"--out", File()}), ExitCode::NotReachable);
    EXPECT_NE(Contents().find("\nzeb_up 0\n"), std::string::npos);
    EXPECT_NE(Contents().find(
                  "zeb_failure_info{reason=\"not_reachable\",exit_code=\"6\",status=\"0x80041013\"} 1\n"),
              std::string::npos)
        << Contents();
    EXPECT_EQ(Contents().find("zeb_test_"), std::string::npos);
    EXPECT_TRUE(
        m_console.Errors.starts_with(L"zebdiag: The diagnostics provider could not be started on this "))
        << Utf8Text(m_console.Errors);
}

TEST_F(MetricsCommandTest, ResultsThatCannotBeReadAreAFailureToo)
{
    m_world->Failures[L"Enum Tolva_DiagResult"] = {wmi::Failed, L""};
    EXPECT_NE(Run({L"metrics"}), ExitCode::Passed);
    const std::string document = Utf8Text(m_console.Output);
    EXPECT_NE(document.find("\nzeb_up 0\n"), std::string::npos);
    EXPECT_EQ(document.find("zeb_test_"), std::string::npos);
}

TEST_F(MetricsCommandTest, ProviderThatNeverAnswersIsGivenUp)
{
    m_world->NeverAnswers = true;
    EXPECT_EQ(Run({L"metrics"}), ExitCode::NotReachable);
    EXPECT_NE(Utf8Text(m_console.Output).find("\nzeb_up 0\n"), std::string::npos);
}

TEST_F(MetricsCommandTest, MissingNamespaceIsToldInTheDocument)
{
    m_seams.Connect = [](const CTarget& target, const std::wstring&) -> CWmiSession
    { throw zebdiag::FailureOf(wmi::InvalidNamespace, Step::Connect, target); };
    EXPECT_EQ(Run({L"metrics", L"--out", File(), L"--namespace", L"root\\nope"}), ExitCode::NotReachable);
    EXPECT_NE(Contents().find("status=\"0x8004100E\""), std::string::npos) << Contents();
}

TEST_F(MetricsCommandTest, NamesAreEnglishUnlessAnotherLanguageIsAskedFor)
{
    std::vector<std::wstring> locales;
    m_seams.Connect = [&](const CTarget& target, const std::wstring&)
    {
        locales.push_back(target.Locale);
        return CWmiSession(m_world, target);
    };
    Run({L"metrics"});
    Run({L"metrics", L"--locale", L"de-DE"});
    EXPECT_EQ(locales, (std::vector<std::wstring>{L"MS_409", L"MS_407"}));
}

TEST_F(MetricsCommandTest, FileThatCannotBeWrittenIsNamed)
{
    const std::wstring file = (m_folder.Path() / "no" / "such" / "zebdiag.prom").wstring();
    EXPECT_EQ(Run({L"metrics", L"--out", file}), ExitCode::CouldNotRun);
    EXPECT_TRUE(m_console.Errors.starts_with(L"zebdiag: " + file + L" was not written.\n"))
        << Utf8Text(m_console.Errors);
    EXPECT_EQ(m_console.Output, L"");
}

// Another program that reads the file and does not share the right to replace it.
class MetricsFileTest : public MetricsCommandTest
{
  protected:
    CFileHandle Held() const
    {
        std::ofstream(std::filesystem::path(File())) << "former contents";
        return CFileHandle(CreateFileW(File().c_str(), GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE,
                                       nullptr, OPEN_EXISTING, 0, nullptr));
    }
};

TEST_F(MetricsFileTest, ReaderThatHoldsItForAMomentIsWaitedFor)
{
    CFileHandle held = Held();
    ASSERT_TRUE(held);
    const CHandle reader(CreateThread(
        nullptr, 0,
        [](void* file) -> DWORD
        {
            Sleep(250);
            static_cast<CFileHandle*>(file)->Reset();
            return 0;
        },
        &held, 0, nullptr));
    WriteWholeFile(File(), "new contents");
    WaitForSingleObject(reader.Get(), INFINITE);
    EXPECT_EQ(Contents(), "new contents");
    EXPECT_EQ(Files(), 1u);
}

TEST_F(MetricsFileTest, ReaderThatHoldsItForGoodLeavesTheFormerContents)
{
    const CFileHandle held = Held();
    ASSERT_TRUE(held);
    EXPECT_THROW(WriteWholeFile(File(), "new contents"), CFailure);
    EXPECT_EQ(Contents(), "former contents");
    EXPECT_EQ(Files(), 1u);
}

// What is written first goes to another file: that one cannot be made here, and the former contents stay.
TEST_F(MetricsFileTest, IsNeverWrittenInPlace)
{
    std::ofstream(std::filesystem::path(File())) << "former contents";
    std::filesystem::create_directory(std::filesystem::path(File() + L".new"));
    EXPECT_THROW(WriteWholeFile(File(), "new contents"), CFailure);
    EXPECT_EQ(Contents(), "former contents");
}
} // namespace
} // namespace zebdiag
