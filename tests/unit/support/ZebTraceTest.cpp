#include "CDM/src/ZebTrace.h"
#include "CDM/src/ZebDebug.h"
#include "tests/support/TraceCapture.h"
#include "tests/unit/support/LogFile.h"

#include <gtest/gtest.h>
#include <stdexcept>
#include <thread>

namespace
{
using Lines = std::vector<std::string>;

TEST(FunctionTrace, IndentsByFourBlanksForEachLevel)
{
    const CTraceCapture trace;
    {
        const CZebTrace outer("COuter::Run");
        const CZebTrace inner("CInner::Run");
        ZebDebug().Write("work %d", 7);
    }
    EXPECT_EQ((Lines{" { --> COuter::Run", "     { --> CInner::Run", "work 7", "     } <-- CInner::Run",
                     " } <-- COuter::Run"}),
              trace.Lines());
}

TEST(FunctionTrace, WritesTheExitLineWhenAnExceptionPasses)
{
    const CTraceCapture trace;
    EXPECT_THROW(
        {
            const CZebTrace scope("CThrowing::Run");
            throw std::runtime_error("x");
        },
        std::runtime_error);
    EXPECT_EQ((Lines{" { --> CThrowing::Run", " } <-- CThrowing::Run"}), trace.Lines());
}

TEST(FunctionTrace, LeavesTheLastErrorAsItIs)
{
    SetLastError(ERROR_DISK_FULL);
    {
        const CZebTrace scope("CFailing::Run");
        EXPECT_EQ(DWORD{ERROR_DISK_FULL}, GetLastError());
        SetLastError(ERROR_BUSY);
    }
    EXPECT_EQ(DWORD{ERROR_BUSY}, GetLastError());
}

TEST(FailedCall, IsTracedAndSaidSo)
{
    const CTraceCapture trace;
    SetLastError(ERROR_DISK_FULL);
    EXPECT_TRUE(Failed(E_FAIL, "CSome::Run:Other failed, hr = <%x>"));
    EXPECT_TRUE(Failed(E_FAIL, "CSome::Run failed"));
    EXPECT_EQ(DWORD{ERROR_DISK_FULL}, GetLastError());
    EXPECT_EQ((Lines{"CSome::Run:Other failed, hr = <80004005>", "CSome::Run failed"}), trace.Lines());
}

TEST(FailedCall, LeavesNoLineOfASuccess)
{
    const CTraceCapture trace;
    EXPECT_FALSE(Failed(S_OK, "CSome::Run:Other failed, hr = <%x>"));
    EXPECT_FALSE(Failed(S_FALSE, "CSome::Run:Other failed, hr = <%x>"));
    EXPECT_TRUE(trace.Lines().empty());
}

TEST(FailedCall, WithoutACallIsTracedAndGivenBack)
{
    const CTraceCapture trace;
    EXPECT_EQ(E_INVALIDARG, TraceFailure(E_INVALIDARG, "CSome::Run: no name"));
    EXPECT_EQ(Lines{"CSome::Run: no name"}, trace.Lines());
}

TEST(FunctionTrace, CountsTheDepthOfEachThreadByItself)
{
    const CTraceCapture trace;
    const CZebTrace outer("COuter::Run");
    std::thread([] { const CZebTrace other("COther::Run"); }).join();
    EXPECT_EQ((Lines{" { --> COuter::Run", " { --> COther::Run", " } <-- COther::Run"}), trace.Lines());
}

TEST(FunctionTrace, KeepsTheDepthUpWhileNothingIsWritten)
{
    {
        const CTraceCapture open;
    }
    ZebDebug().Close();
    ASSERT_EQ(0, ZebDebug().Level());
    const CZebTrace unseen("CUnseen::Run");
    const CTraceCapture trace;
    {
        const CZebTrace seen("CSeen::Run");
    }
    EXPECT_EQ((Lines{"     { --> CSeen::Run", "     } <-- CSeen::Run"}), trace.Lines());
}

TEST(FunctionTrace, WritesNoMarksAtLevelOne)
{
    {
        const CTraceCapture open;
    }
    ZebDebug().Close();
    const CRegistryScope registry;
    const CTempFolder folder;
    const std::string path = folder.File("one.log");
    ASSERT_EQ(0, ZebDebug().Configure("t", path.c_str(), 1, 0, false, 0));
    {
        const CZebTrace scope("CUnseen::Run");
        ZebDebug().Error("F", 1, "seen");
    }
    ZebDebug().Close();
    const Lines lines = FileLines(path);
    ASSERT_EQ(3u, lines.size());
    EXPECT_TRUE(lines[2].ends_with(" F (1): seen")) << lines[2];
}

// Runs a program that stands beside this one and gives its exit code.
DWORD RunBeside(const char* program, const std::string& argument)
{
    char self[MAX_PATH] = {};
    GetModuleFileNameA(nullptr, self, MAX_PATH);
    const std::string path = std::filesystem::path(self).replace_filename(program).string();
    std::string command = "\"" + path + "\" \"" + argument + "\"";
    STARTUPINFOA startup = {};
    startup.cb = sizeof(startup);
    PROCESS_INFORMATION process = {};
    if (!CreateProcessA(path.c_str(), command.data(), nullptr, nullptr, FALSE, 0, nullptr, nullptr, &startup,
                        &process))
        return GetLastError();
    const CHandle thread(process.hThread);
    const CHandle handle(process.hProcess);
    WaitForSingleObject(handle.Get(), INFINITE);
    DWORD code = 0;
    GetExitCodeProcess(handle.Get(), &code);
    return code;
}

TEST(TraceLifetime, ReachesFromBeforeMainIntoTheDestructorsOfStatics)
{
    const CTempFolder folder;
    const std::string path = folder.File("life.log");
    ASSERT_EQ(0u, RunBeside("trace_lifetime.exe", path));
    const Lines lines = FileLines(path);
    ASSERT_EQ(6u, lines.size());
    EXPECT_TRUE(lines[2].ends_with(" in main")) << lines[2];
    EXPECT_TRUE(lines[3].ends_with("  { --> CSpeaker::~CSpeaker")) << lines[3];
    EXPECT_TRUE(lines[4].ends_with(" after main")) << lines[4];
    EXPECT_TRUE(lines[5].ends_with("  } <-- CSpeaker::~CSpeaker")) << lines[5];
}

TEST(LockTrace, ShowsTheStepsAndTheAddressOfTheLock)
{
    const CTraceCapture trace;
    CCriticalSection section;
    {
        const CZebLock lock(section);
        const CZebLock again(section);
    }
    char address[17] = {};
    _snprintf(address, 16, "%p", static_cast<void*>(&section));
    const std::string locking = std::string("Locking ") + address;
    const std::string unlocking = std::string("Unlocking ") + address;
    EXPECT_EQ((Lines{locking, "Entered", locking, "Entered", unlocking, unlocking}), trace.Lines());
    EXPECT_EQ(16u, std::string(address).size());
}
} // namespace
