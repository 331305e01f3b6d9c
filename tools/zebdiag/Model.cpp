#include "tools/zebdiag/Model.h"

#include <algorithm>

namespace zebdiag
{
namespace
{
// The code in a test's Characteristics that says that it honours the percentage of coverage.
constexpr long kSupportsCoverage = 7;

constexpr unsigned long kSenderNumber = 9;
} // namespace

bool CTest::SendsPackets() const
{
    return std::find(Characteristics.begin(), Characteristics.end(), kSupportsCoverage) !=
           Characteristics.end();
}

bool CTest::IsSender() const
{
    return Number == kSenderNumber;
}

size_t CInventory::TestCount() const
{
    size_t count = 0;
    for (const CAdapter& adapter : Adapters)
        count += adapter.Tests.size();
    return count;
}
} // namespace zebdiag
