#include "CDM/src/server/CommandLine.h"
#include "Common/src/com/Owned.h"

#include <gtest/gtest.h>

namespace
{
TEST(RegistrationReport, NamesTheCauseTheCodeAndTheNextStep)
{
    const std::string text = RegistrationFailureText(ServerAction::Register, E_ACCESSDENIED);
    EXPECT_TRUE(text.starts_with("Drevok.EXE could not be registered: ")) << text;
    EXPECT_NE(text.npos, text.find(" (0x80070005).\r\n")) << text;
    EXPECT_EQ(text.npos, text.find("no words")) << text;
    EXPECT_NE(text.npos, text.find("Run \"Drevok.EXE /RegServer\" as an administrator"));
}

TEST(RegistrationReport, HasWordsForACodeThatTheSystemDoesNotKnow)
{
    const std::string text =
        RegistrationFailureText(ServerAction::Unregister, static_cast<HRESULT>(0x8004ABCD));
    EXPECT_TRUE(text.starts_with(
        "Drevok.EXE could not be unregistered: the system has no words for the code (0x8004ABCD).\r\n"))
        << text;
    EXPECT_NE(text.npos, text.find("/UnregServer"));
}

TEST(RegistrationReport, GoesToTheErrorOutput)
{
    CHandle read;
    CHandle write;
    ASSERT_TRUE(CreatePipe(read.Put(), write.Put(), nullptr, 4096));
    const HANDLE before = GetStdHandle(STD_ERROR_HANDLE);
    SetStdHandle(STD_ERROR_HANDLE, write.Get());
    ReportRegistrationFailure(ServerAction::Register, E_ACCESSDENIED);
    SetStdHandle(STD_ERROR_HANDLE, before);
    write.Reset();
    char text[1024];
    DWORD size = 0;
    ASSERT_TRUE(ReadFile(read.Get(), text, sizeof(text), &size, nullptr));
    EXPECT_EQ(RegistrationFailureText(ServerAction::Register, E_ACCESSDENIED), std::string(text, size));
}
} // namespace
