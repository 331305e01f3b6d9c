#include "CDM/src/ZebHelpers.h"

#include <gtest/gtest.h>

namespace
{
bool ThreadHasToken()
{
    CHandle token;
    return OpenThreadToken(GetCurrentThread(), TOKEN_QUERY, TRUE, token.Put());
}

TEST(ProcessIdentityTest, AThreadWithoutAClientStaysAsItIs)
{
    {
        const CProcessIdentity process;
        EXPECT_FALSE(ThreadHasToken());
    }
    EXPECT_FALSE(ThreadHasToken());
}

TEST(ProcessIdentityTest, TheClientIsBackInTheEnd)
{
    ASSERT_TRUE(ImpersonateSelf(SecurityImpersonation));
    ASSERT_TRUE(ThreadHasToken());
    {
        const CProcessIdentity process;
        EXPECT_FALSE(ThreadHasToken());
    }
    EXPECT_TRUE(ThreadHasToken());
    RevertToSelf();
}
} // namespace
