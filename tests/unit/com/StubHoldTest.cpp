#include "Common/src/wine/StubHold.h"

#include "Common/src/com/ComObject.h"
#include "Common/src/com/ComPtr.h"

#include <gtest/gtest.h>
#include <objbase.h>
#include <servprov.h>

namespace
{
// Nothing marshals it.
constexpr IID kUnknownInterface = {
    0x1c3e0a52, 0x7d0f, 0x4a55, {0x90, 0x3b, 0x5e, 0x1f, 0x6a, 0x22, 0x41, 0x07}};

TEST(StubHold, HoldsWhatActivationUsesAndAsOftenAsOneLikes)
{
    EXPECT_EQ(HoldActivationStubs(), S_OK);
    EXPECT_EQ(HoldActivationStubs(), S_OK);
}

TEST(StubHold, SaysWhichInterfaceCannotBeMarshalled)
{
    EXPECT_EQ(HoldStubs({__uuidof(IClassFactory), kUnknownInterface}), E_NOINTERFACE);
}
} // namespace
