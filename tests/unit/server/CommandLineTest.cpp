#include "CDM/src/server/CommandLine.h"
#include "tests/support/CaseName.h"

namespace
{
struct Case
{
    const char* name;
    const char* line;
    ServerAction action;
};

class CommandLineTest : public testing::TestWithParam<Case>
{
};

TEST_P(CommandLineTest, AsksFor)
{
    EXPECT_EQ(ScanCommandLine(GetParam().line), GetParam().action);
}

INSTANTIATE_TEST_SUITE_P(
    Lines, CommandLineTest,
    testing::Values(Case{"ProgramAlone", "C:\\zeb\\Drevok.EXE", ServerAction::Serve},
                    Case{"Empty", "", ServerAction::Serve},
                    Case{"StartedByCom", "C:\\zeb\\Drevok.EXE -Embedding", ServerAction::Serve},
                    Case{"SlashRegister", "Drevok.EXE /RegServer", ServerAction::Register},
                    Case{"DashRegister", "Drevok.EXE -RegServer", ServerAction::Register},
                    Case{"RegisterInLowerCase", "Drevok.EXE /regserver", ServerAction::Register},
                    Case{"RegisterInUpperCase", "Drevok.EXE -REGSERVER", ServerAction::Register},
                    Case{"SlashUnregister", "Drevok.EXE /UnregServer", ServerAction::Unregister},
                    Case{"DashUnregisterInLowerCase", "Drevok.EXE -unregserver", ServerAction::Unregister},
                    Case{"SomethingFollowsTheSwitch", "Drevok.EXE /RegServer /s", ServerAction::Serve},
                    Case{"BlankFollowsTheSwitch", "Drevok.EXE /RegServer ", ServerAction::Serve},
                    Case{"LastSwitchCounts", "Drevok.EXE /RegServer /UnregServer", ServerAction::Unregister},
                    Case{"SwitchAfterAnother", "Drevok.EXE /s -RegServer", ServerAction::Register},
                    Case{"LongerWord", "Drevok.EXE /RegServerNow", ServerAction::Serve},
                    Case{"NoIntroducer", "Drevok.EXE RegServer", ServerAction::Serve},
                    Case{"DoubledIntroducer", "Drevok.EXE --RegServer", ServerAction::Register},
                    Case{"DashInPath", "C:\\zeb-1.0\\Drevok.EXE /RegServer", ServerAction::Register},
                    Case{"SlashesInPath", "C:/zeb/Drevok.EXE -UnregServer", ServerAction::Unregister},
                    Case{"PathIsScannedToo", "C:\\tools\\a-RegServer", ServerAction::Register},
                    Case{"IntroducerAtTheEnd", "Drevok.EXE /", ServerAction::Serve}),
    NameOf<Case>);
} // namespace
