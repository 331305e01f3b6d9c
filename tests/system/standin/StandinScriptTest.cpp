// A client that nobody here wrote: the system's scripting objects.
#include "tests/system/standin/StandinFixture.h"
#include "tests/system/support/Process.h"

namespace
{
class CStandinScript : public CStandinTest
{
};

TEST_F(CStandinScript, WorksWithTheScriptingObjects)
{
    const std::wstring script = BinFolder() + L"standin-test\\script.vbs";
    const CRunResult result = RunProgram(L"cscript.exe /nologo \"" + script + L"\"");
    EXPECT_EQ(0u, result.ExitCode);
    std::string text = result.Output;
    std::erase(text, '\r');
    EXPECT_EQ("instances: n1 n2 n3\n"
              "query: n2\n"
              "associators: n1 n3\n"
              "get: n3 15000000000\n"
              "method: 14 0\n"
              "method of the object: 14\n"
              "unknown class: 80041002\n",
              text);
}
} // namespace
