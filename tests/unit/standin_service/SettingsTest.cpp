// The settings, in a registry of the test's own.
#include "standin/service/Settings.h"
#include "standin/object/Strictness.h"
#include "tests/support/RegistryScope.h"

#include <gtest/gtest.h>

namespace
{
using namespace standin;

constexpr char kKey[] = "SOFTWARE\\WMI stand-in";

TEST(Settings, ProvidersAreKeptForMinutesUnlessToldOtherwise)
{
    CRegistryScope registry;
    EXPECT_EQ(ReadIdleTime(), 300000u);
    registry.SetNumber(kKey, "IdleMilliseconds", 100);
    EXPECT_EQ(ReadIdleTime(), 100u);
    registry.SetString(kKey, "IdleMilliseconds", "100");
    EXPECT_EQ(ReadIdleTime(), 300000u);
}

TEST(Settings, StrictnessIsOffUnlessSet)
{
    CRegistryScope registry;
    EXPECT_FALSE(IsStrict());
    registry.SetNumber(kKey, "Strict", 1);
    EXPECT_TRUE(IsStrict());
    registry.SetNumber(kKey, "Strict", 0);
    EXPECT_FALSE(IsStrict());
    registry.SetString(kKey, "Strict", "1");
    EXPECT_FALSE(IsStrict());
}

TEST(Settings, MofFilesComeBackInTheirOrder)
{
    CRegistryScope registry;
    registry.CreateKey(kKey);
    EXPECT_TRUE(ReadMofFiles().empty());
    const std::vector<std::wstring> files = {L"C:\\b.mof", L"C:\\a.mof"};
    EXPECT_TRUE(WriteMofFiles(files));
    EXPECT_EQ(ReadMofFiles(), files);
}
} // namespace
