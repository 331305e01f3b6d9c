#include "CDM/src/ZebDebug.h"
#include "CDM/src/ZebLock.h"
#include "CDM/src/ZebTrace.h"
#include "tests/support/TraceCapture.h"

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

TEST(FunctionTrace, CountsTheDepthOfEachThreadByItself)
{
    const CTraceCapture trace;
    const CZebTrace outer("COuter::Run");
    std::thread([] { const CZebTrace other("COther::Run"); }).join();
    EXPECT_EQ((Lines{" { --> COuter::Run", " { --> COther::Run", " } <-- COther::Run"}), trace.Lines());
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
