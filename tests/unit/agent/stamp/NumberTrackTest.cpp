#include "agent/host/stamp/NumberTrack.h"

#include "tests/support/CaseName.h"

#include <vector>

namespace
{
struct Case
{
    const char* name;
    std::vector<uint32_t> numbers;
    uint64_t sent;
    uint64_t different;
    uint64_t repeated;
    uint64_t outOfOrder;
};
class NumberTrack : public testing::TestWithParam<Case>
{
};

TEST_P(NumberTrack, Counts)
{
    CNumberTrack track;
    CTrackCounts counts;
    for (const uint32_t number : GetParam().numbers)
        track.Add(number, counts);
    EXPECT_EQ(GetParam().sent, counts.Sent);
    EXPECT_EQ(GetParam().different, counts.Different);
    EXPECT_EQ(GetParam().repeated, counts.Repeated);
    EXPECT_EQ(GetParam().outOfOrder, counts.OutOfOrder);
}

INSTANTIATE_TEST_SUITE_P(Numbers, NumberTrack,
                         testing::Values(Case{"None", {}, 0, 0, 0, 0},
                                         Case{"InOrder", {0, 1, 2, 3}, 4, 4, 0, 0},
                                         Case{"FirstIsWhereverItBegins", {1000, 1001}, 2, 2, 0, 0},
                                         Case{"Lost", {0, 1, 4}, 5, 3, 0, 0},
                                         Case{"Twice", {0, 1, 1, 2, 0}, 3, 3, 2, 0},
                                         Case{"Swapped", {0, 2, 1, 3}, 4, 4, 0, 1},
                                         Case{"SwappedAndTwice", {0, 2, 1, 1}, 3, 3, 1, 1},
                                         Case{"OverTheEnd", {0xFFFFFFFE, 0xFFFFFFFF, 0, 1}, 4, 4, 0, 0},
                                         Case{"FarJumpIsABeginning", {5, 6, 500'000, 500'001}, 4, 4, 0, 0},
                                         Case{"NewBeginning", {50'000, 50'001, 0, 1}, 4, 4, 0, 0},
                                         Case{"LargestGap", {0, 10'000}, 10'001, 2, 0, 0},
                                         Case{"OlderThanWhatIsRemembered", {0, 2, 100, 1}, 101, 4, 0, 1},
                                         Case{"BeforeTheFirst", {7, 6}, 1, 1, 0, 1}),
                         NameOf<Case>);
} // namespace
