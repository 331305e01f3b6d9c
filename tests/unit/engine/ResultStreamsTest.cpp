// A result as bytes, and back.
#include "tests/support/CaseName.h"
#include "tests/unit/engine/StoreFixture.h"

namespace
{
class ResultStreamsTest : public CStoreTest
{
};

class StoredStateTest : public CStoreTest, public testing::WithParamInterface<ULONG>
{
};

TEST_P(StoredStateTest, ReadsBackEqualFieldByField)
{
    const auto stored = SomeResult(L"A@K1", static_cast<TestState>(GetParam()));
    ASSERT_EQ(S_OK, Store(*stored));
    auto loaded = EmptyResult();
    ASSERT_EQ(S_OK, Load(*loaded));
    ExpectSame(stored->Data(), loaded->Data());
}

INSTANTIATE_TEST_SUITE_P(States, StoredStateTest, testing::Range<ULONG>(0, 6));

TEST_F(ResultStreamsTest, DefaultsAndAbsentTimesReadBackEqual)
{
    const auto stored = EmptyResult();
    ASSERT_EQ(S_OK, Store(*stored));
    auto loaded = SomeResult();
    loaded->ClearMessages();
    ASSERT_EQ(S_OK, Load(*loaded));
    ExpectSame(stored->Data(), loaded->Data());
}

TEST_F(ResultStreamsTest, StreamsHoldTheDescribedTexts)
{
    ASSERT_EQ(S_OK, Store(*SomeResult()));
    const struct
    {
        const wchar_t* stream;
        const wchar_t* text;
    } kStreams[] = {
        {L"ntA@0", L"21"},      {L"agA@0", L"K1"},
        {L"rseA@0", L"TRUE"},   {L"rsmA@0", L"FALSE"},
        {L"qmA@0", L"TRUE"},    {L"hoeA@0", L"TRUE"},
        {L"twlA@0", L"65535"},  {L"ptcA@0", L"255"},
        {L"kA@0", L"A@K1"},     {L"dccnA@0", L"Tolva_DiagTest"},
        {L"eidA@0", L"K1"},     {L"etopA@0", L"12"},
        {L"ipA@0", L"TRUE"},    {L"osdridA@0", L"-1"},
        {L"pcA@0", L"120"},     {L"tstateA@0", L"2"},
        {L"nridA@0", L"5010"},  {L"tmcA@0", L"3"},
        {L"tidbA@00", L"0"},    {L"tmbA@00", L"-2147221213"},
        {L"tidbA@01", L"3810"}, {L"tmbA@01", L"0"},
        {L"tidbA@02", L"13"},   {L"tmbA@02", L"-1"},
        {L"tidbA@03", nullptr}, {L"tmbA@03", nullptr},
        {L"sflA@0", nullptr},
    };
    for (const auto& [stream, text] : kStreams)
        EXPECT_EQ(text ? TextBytes(text) : "missing", Bytes(L"A@0", stream)) << stream;
    // The times carry the offset of whatever zone the machine is in.
    EXPECT_EQ(TextBytes(L"20240305060809.000000").substr(4, 42), Bytes(L"A@0", L"tctA@0").substr(4, 42));
    EXPECT_EQ(TextBytes(L"20240305060708.000000").substr(4, 42), Bytes(L"A@0", L"tstA@0").substr(4, 42));
    EXPECT_EQ(TextBytes(L"20241231235959.000000").substr(4, 42), Bytes(L"A@0", L"tsA@0").substr(4, 42));
    EXPECT_EQ(4u + 2u * (38 + 1), Bytes(L"A@0", L"vgA@0").size());
}

TEST_F(ResultStreamsTest, MissingStreamsLeaveTheirDefaults)
{
    ASSERT_EQ(S_OK, Store(*SomeResult()));
    for (const wchar_t* stream : {L"ntA@0", L"rseA@0", L"kA@0", L"tctA@0", L"pcA@0", L"tmcA@0"})
        Remove(stream);
    auto loaded = EmptyResult();
    ASSERT_EQ(S_OK, Load(*loaded));
    EXPECT_TRUE(trace.Has("CResultsStore::Get Exception:OpenStream"));
    const CResultData data = loaded->Data();
    EXPECT_EQ(0u, data.ReportSoftErrors);
    EXPECT_STREQ(L"A@K1", data.ResultID.Text());
    EXPECT_FALSE(data.TestCompletionTime);
    EXPECT_EQ(0, data.PercentComplete);
    EXPECT_EQ(0u, data.MessageCount);
    EXPECT_TRUE(data.StringIDs.empty());
    EXPECT_EQ(2u, data.TestState); // what is there is read
}

TEST_F(ResultStreamsTest, MissingMessageStreamsLeaveTheirDefaults)
{
    ASSERT_EQ(S_OK, Store(*SomeResult()));
    Remove(L"tidbA@01");
    Remove(L"tmbA@02");
    Spoil(L"tmcA@0", TextBytes(L"4"));
    auto loaded = EmptyResult();
    ASSERT_EQ(S_OK, Load(*loaded));
    const CResultData data = loaded->Data();
    EXPECT_EQ(4u, data.MessageCount);
    EXPECT_EQ((std::vector<ULONG>{0, 0, 13, 0}), data.StringIDs);
    EXPECT_EQ((std::vector<ULONG>{0x80040123, 0, 0, 0}), data.TestMessages);
}

struct Damage
{
    const char* name;
    const wchar_t* stream;
    std::string bytes;
};

std::string Count(ULONG count, std::string_view rest = {})
{
    return std::string(reinterpret_cast<const char*>(&count), sizeof(count)) + std::string(rest);
}

class DamageTest : public CStoreTest, public testing::WithParamInterface<Damage>
{
  public:
    static std::string Text(std::wstring_view text) { return TextBytes(text); }
};

TEST_P(DamageTest, EndsInATraceLineAndNoResult)
{
    ASSERT_EQ(S_OK, Store(*SomeResult()));
    ASSERT_EQ(S_OK, Store(*SomeResult(L"1@K1"), L"1@0"));
    Spoil(GetParam().stream, GetParam().bytes);
    auto loaded = EmptyResult();
    EXPECT_EQ(wmi::Failed, Load(*loaded));
    ExpectSame(EmptyResult()->Data(), loaded->Data());
    EXPECT_TRUE(trace.Has("cannot be used"));
    // The other result of the file is as good as before, and the damaged one can be stored anew.
    EXPECT_EQ(S_OK, Load(*EmptyResult(L"1@K1"), L"1@0"));
    ASSERT_EQ(S_OK, Store(*SomeResult()));
    ASSERT_EQ(S_OK, Load(*loaded));
    ExpectSame(SomeResult()->Data(), loaded->Data());
}

const std::string kThree = std::string("A\0@\0K\0", 6);
const Damage kDamages[] = {
    {"Empty", L"kA@0", ""},
    {"CountCut", L"kA@0", "\x04"},
    {"CountAlone", L"kA@0", Count(10)},
    {"CountZero", L"kA@0", Count(0)},
    {"CountOdd", L"kA@0", Count(5, std::string("A\0\0\0\0", 5))},
    {"CountOne", L"kA@0", Count(1, std::string("\0", 1))},
    {"CountLargerThanStream", L"kA@0", Count(100, kThree)},
    {"CountHuge", L"kA@0", Count(0xFFFFFFFE, kThree)},
    {"CountNegative", L"kA@0", Count(0x80000000, kThree)},
    {"LongTextCut", L"eidA@0", Count(4000, std::string(2000, '\x41'))},
    {"NoTerminator", L"kA@0", Count(6, kThree)},
    {"TerminatorInside", L"eidA@0", Count(8, std::string("A\0\0\0B\0\0\0", 8))},
    {"BooleanWord", L"rseA@0", DamageTest::Text(L"yes")},
    {"BooleanLowerCase", L"ipA@0", DamageTest::Text(L"true")},
    {"NumberWord", L"etopA@0", DamageTest::Text(L"many")},
    {"NumberEmpty", L"etopA@0", DamageTest::Text(L"")},
    {"NumberWithTail", L"etopA@0", DamageTest::Text(L"1x")},
    {"NumberTooLarge", L"etopA@0", DamageTest::Text(L"99999999999")},
    {"StateTooLarge", L"tstateA@0", DamageTest::Text(L"6")},
    {"PercentTooLarge", L"pcA@0", DamageTest::Text(L"256")},
    {"CoverageNegative", L"ptcA@0", DamageTest::Text(L"-1")},
    {"LevelTooLarge", L"twlA@0", DamageTest::Text(L"65536")},
    {"TimeWord", L"tctA@0", DamageTest::Text(L"never")},
    {"OtherKey", L"kA@0", DamageTest::Text(L"B@K1")},
    {"MessageCountHuge", L"tmcA@0", DamageTest::Text(L"2147483647")},
    {"MessageCountNegative", L"tmcA@0", DamageTest::Text(L"-1")},
    {"MessageIdWord", L"tidbA@01", DamageTest::Text(L"x")},
    {"MessageValueCut", L"tmbA@02", Count(8, "1")},
    {"AdapterCut", L"agA@0", Count(60, kThree)},
};
INSTANTIATE_TEST_SUITE_P(Streams, DamageTest, testing::ValuesIn(kDamages), NameOf<Damage>);

TEST_F(ResultStreamsTest, LongTextsReadBackWhole)
{
    const std::wstring adapter(10000, L'K');
    const std::wstring key = L"A@" + adapter;
    const auto stored = SomeResult(key.c_str());
    ASSERT_EQ(S_OK, Store(*stored, L"A@0", adapter.c_str()));
    auto loaded = EmptyResult(key.c_str());
    ASSERT_EQ(S_OK, Load(*loaded, L"A@0", adapter.c_str()));
    ExpectSame(stored->Data(), loaded->Data());
}

TEST_F(ResultStreamsTest, ManyMessagesReadBackInOrder)
{
    const auto stored = EmptyResult();
    CResultMessages messages;
    for (ULONG i = 0; i < 300; ++i)
        messages.Add(i, 1000 - i);
    stored->SetMessages(messages);
    ASSERT_EQ(S_OK, Store(*stored));
    auto loaded = EmptyResult();
    ASSERT_EQ(S_OK, Load(*loaded));
    ExpectSame(stored->Data(), loaded->Data());
}
} // namespace
