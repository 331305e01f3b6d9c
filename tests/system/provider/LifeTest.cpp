// The provider process from activation to its end: one trace, no unbalanced mark, nothing left behind.
#include "tests/support/TraceMarks.h"
#include "tests/system/provider/EndedProvider.h"

#include <gmock/gmock.h>

namespace
{
TEST_F(EndedProvider, EndedByItselfAfterTheLastClient)
{
    EXPECT_FALSE(Story().Listed.empty());
    EXPECT_TRUE(Story().WasOneProcess);
    EXPECT_TRUE(Story().ProviderEnded);
    EXPECT_TRUE(Story().AllEnded);
}

TEST_F(EndedProvider, TraceShowsNestedMarksWithNoUnbalancedPair)
{
    const std::string& log = Story().Trace;
    EXPECT_TRUE(log.starts_with("<center><h1>ZebDiag</h1></center>\r\n<xmp>\r\n")) << log.substr(0, 80);
    EXPECT_NE(std::string::npos, log.find(" { --> CProviderImp::Initialize"));
    EXPECT_NE(std::string::npos, log.find("Sending INITIALIZED"));
    EXPECT_NE(std::string::npos, log.find(" { --> CTolva_DiagTest::CreateInstanceEnumAsync"));
    const CTraceFindings findings = CheckTrace(log);
    EXPECT_GT(findings.Marks, 100u);
    EXPECT_THAT(findings.Faults, testing::IsEmpty());
}
} // namespace
