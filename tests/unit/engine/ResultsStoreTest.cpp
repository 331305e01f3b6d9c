#include "tests/unit/engine/StoreFixture.h"

#include "Common/src/com/Text.h"
#include "tests/support/CaseName.h"

#include <algorithm>
#include <cstring>
#include <random>

namespace
{
class ResultsStoreTest : public CStoreTest
{
};

TEST_F(ResultsStoreTest, NothingIsFoundWhereThereIsNoFile)
{
    auto result = EmptyResult();
    EXPECT_EQ(STG_E_FILENOTFOUND, Load(*result));
    ExpectSame(EmptyResult()->Data(), result->Data());
    EXPECT_FALSE(std::filesystem::exists(path));
}

TEST_F(ResultsStoreTest, FirstStoreMakesTheFile)
{
    EXPECT_EQ(S_OK, Store(*SomeResult()));
    EXPECT_EQ(S_OK, PlatformStoreFiles().IsStorageFile(path.c_str()));
    EXPECT_FALSE(std::filesystem::exists(path + L".new"));
}

class StoredStateTest : public CStoreTest, public testing::WithParamInterface<ULONG>
{
};

TEST_P(StoredStateTest, ReadsBackEqualFieldByField)
{
    const auto stored = SomeResult(L"A@K1", GetParam());
    ASSERT_EQ(S_OK, Store(*stored));
    auto loaded = EmptyResult();
    ASSERT_EQ(S_OK, Load(*loaded));
    ExpectSame(stored->Data(), loaded->Data());
}

INSTANTIATE_TEST_SUITE_P(States, StoredStateTest, testing::Range<ULONG>(0, 6));

TEST_F(ResultsStoreTest, DefaultsAndAbsentTimesReadBackEqual)
{
    const auto stored = EmptyResult();
    ASSERT_EQ(S_OK, Store(*stored));
    auto loaded = SomeResult();
    loaded->ClearMessages();
    ASSERT_EQ(S_OK, Load(*loaded));
    ExpectSame(stored->Data(), loaded->Data());
}

TEST_F(ResultsStoreTest, StreamsHoldTheDescribedTexts)
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

TEST_F(ResultsStoreTest, AResultIsReplacedWhole)
{
    ASSERT_EQ(S_OK, Store(*SomeResult()));
    ASSERT_EQ(S_OK, Store(*EmptyResult()));
    EXPECT_EQ("missing", Bytes(L"A@0", L"tidbA@00"));
    auto loaded = EmptyResult();
    ASSERT_EQ(S_OK, Load(*loaded));
    ExpectSame(EmptyResult()->Data(), loaded->Data());
}

TEST_F(ResultsStoreTest, ResultsOfOtherNamesStay)
{
    ASSERT_EQ(S_OK, Store(*SomeResult(L"A@K1")));
    ASSERT_EQ(S_OK, Store(*SomeResult(L"1@K2"), L"1@1", L"K2"));
    ASSERT_EQ(S_OK, Store(*EmptyResult(L"A@K1")));
    auto loaded = EmptyResult(L"1@K2");
    ASSERT_EQ(S_OK, Load(*loaded, L"1@1", L"K2"));
    ExpectSame(SomeResult(L"1@K2")->Data(), loaded->Data());
    EXPECT_EQ(STG_E_FILENOTFOUND, Load(*loaded, L"2@1", L"K2"));
}

TEST_F(ResultsStoreTest, OtherVersionDropsTheFile)
{
    ASSERT_EQ(S_OK, Store(*SomeResult()));
    Spoil(L"vgA@0", TextBytes(L"{00000000-0000-0000-0000-000000000000}"));
    auto loaded = EmptyResult();
    EXPECT_EQ(wmi::Failed, Load(*loaded));
    ExpectSame(EmptyResult()->Data(), loaded->Data());
    EXPECT_FALSE(std::filesystem::exists(path));
    EXPECT_EQ(STG_E_FILENOTFOUND, Load(*loaded));
}

TEST_F(ResultsStoreTest, AnIllegibleVersionIsAnotherOne)
{
    ASSERT_EQ(S_OK, Store(*SomeResult()));
    Spoil(L"vgA@0", std::string("\x4e\0\0\0A", 5));
    EXPECT_EQ(wmi::Failed, Load(*EmptyResult()));
    EXPECT_FALSE(std::filesystem::exists(path));
}

// As a start-up does: one session for all loads.
TEST_F(ResultsStoreTest, LaterLoadsOfTheSessionThatDroppedTheFileFindNone)
{
    for (const wchar_t* id : {L"A@0", L"B@0", L"C@0"})
        ASSERT_EQ(S_OK, Store(*SomeResult(), id));
    Spoil(L"vgB@0", TextBytes(L"{00000000-0000-0000-0000-000000000000}"), L"B@0");
    CStoreSession session(PlatformStoreFiles(), path, CStoreSession::Purpose::Read);
    const auto load = [&](const wchar_t* id)
    { return CResultsStore(session).LoadResult(CBstr(id), CBstr(L"K1"), *EmptyResult()); };
    EXPECT_EQ(S_OK, load(L"A@0"));
    EXPECT_EQ(wmi::Failed, load(L"B@0"));
    EXPECT_FALSE(std::filesystem::exists(path));
    EXPECT_EQ(STG_E_FILENOTFOUND, load(L"C@0"));
    EXPECT_EQ(STG_E_FILENOTFOUND, load(L"A@0"));
}

TEST_F(ResultsStoreTest, ResultOfAnotherAdapterIsRemoved)
{
    ASSERT_EQ(S_OK, Store(*SomeResult()));
    ASSERT_EQ(S_OK, Store(*SomeResult(L"1@K1"), L"1@0"));
    auto loaded = EmptyResult(L"A@K2");
    EXPECT_EQ(wmi::Failed, Load(*loaded, L"A@0", L"K2"));
    ExpectSame(EmptyResult(L"A@K2")->Data(), loaded->Data());
    EXPECT_EQ(STG_E_FILENOTFOUND, Load(*loaded, L"A@0", L"K2"));
    EXPECT_EQ(S_OK, Load(*EmptyResult(L"1@K1"), L"1@0"));
}

TEST_F(ResultsStoreTest, MissingStreamsLeaveTheirDefaults)
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

TEST_F(ResultsStoreTest, MissingMessageStreamsLeaveTheirDefaults)
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

// Readers that trust the length in a directory entry find every storage and stream.
TEST_F(ResultsStoreTest, NamesStandInTheFileWithTheirLengths)
{
    ASSERT_EQ(S_OK, Store(*SomeResult()));
    ASSERT_EQ(S_OK, Store(*SomeResult(L"1@K1"), L"1@0"));
    ASSERT_EQ(S_OK, Store(*SomeResult()));
    const std::string bytes = FileBytes();
    constexpr size_t kEntry = 128;
    constexpr size_t kNameSize = 64;
    std::vector<std::wstring> storages;
    for (size_t at = 512; at + kEntry <= bytes.size(); at += kEntry)
    {
        // A name of a directory entry is followed by its size in bytes and by what it names.
        wchar_t name[kNameSize / sizeof(wchar_t)];
        std::memcpy(name, bytes.data() + at, kNameSize);
        const BYTE kind = static_cast<BYTE>(bytes[at + 0x42]);
        const size_t size = static_cast<BYTE>(bytes[at + 0x40]) + 256u * static_cast<BYTE>(bytes[at + 0x41]);
        if (kind == STGTY_STORAGE && size >= 4 && size <= kNameSize && std::wcschr(name, L'@'))
        {
            EXPECT_EQ(std::wcslen(name) + 1, size / sizeof(wchar_t)) << NarrowText(name);
            storages.emplace_back(name);
        }
    }
    std::sort(storages.begin(), storages.end());
    EXPECT_EQ((std::vector<std::wstring>{L"1@0", L"A@0"}), storages);
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

TEST_F(ResultsStoreTest, WithoutAVersionTheFileIsOfAnotherOne)
{
    ASSERT_EQ(S_OK, Store(*SomeResult()));
    Remove(L"vgA@0");
    auto loaded = EmptyResult();
    EXPECT_EQ(wmi::Failed, Load(*loaded));
    ExpectSame(EmptyResult()->Data(), loaded->Data());
    EXPECT_FALSE(std::filesystem::exists(path));
}

TEST_F(ResultsStoreTest, WithoutAnAdapterTheResultIsOfAnotherOne)
{
    ASSERT_EQ(S_OK, Store(*SomeResult()));
    ASSERT_EQ(S_OK, Store(*SomeResult(L"1@K1"), L"1@0"));
    Remove(L"agA@0");
    auto loaded = EmptyResult();
    EXPECT_EQ(wmi::Failed, Load(*loaded));
    ExpectSame(EmptyResult()->Data(), loaded->Data());
    EXPECT_EQ(STG_E_FILENOTFOUND, Load(*loaded));
    EXPECT_EQ(S_OK, Load(*EmptyResult(L"1@K1"), L"1@0"));
}

TEST_F(ResultsStoreTest, LongTextsReadBackWhole)
{
    const std::wstring adapter(10000, L'K');
    const std::wstring key = L"A@" + adapter;
    const auto stored = SomeResult(key.c_str());
    ASSERT_EQ(S_OK, Store(*stored, L"A@0", adapter.c_str()));
    auto loaded = EmptyResult(key.c_str());
    ASSERT_EQ(S_OK, Load(*loaded, L"A@0", adapter.c_str()));
    ExpectSame(stored->Data(), loaded->Data());
}

TEST_F(ResultsStoreTest, ManyMessagesReadBackInOrder)
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

TEST_F(ResultsStoreTest, RemovingAResult)
{
    ASSERT_EQ(S_OK, Store(*SomeResult()));
    CStoreSession session(PlatformStoreFiles(), path, CStoreSession::Purpose::Change);
    EXPECT_EQ(S_OK, CResultsStore(session).RemoveResult(CBstr(L"A@0")));
    EXPECT_EQ(STG_E_FILENOTFOUND, CResultsStore(session).RemoveResult(CBstr(L"A@0")));
    EXPECT_EQ(S_OK, session.Publish());
    EXPECT_EQ(STG_E_FILENOTFOUND, Load(*EmptyResult()));
    EXPECT_TRUE(std::filesystem::exists(path));
}

// A file that is no usable storage: no result is read from it, and the next store replaces it.
struct BadFile
{
    const char* name;
    std::string (*make)(const std::string& good);
};

class BadFileTest : public CStoreTest, public testing::WithParamInterface<BadFile>
{
};

TEST_P(BadFileTest, GivesNoResultAndCanBeStoredTo)
{
    ASSERT_EQ(S_OK, Store(*SomeResult()));
    const std::string bad = GetParam().make(FileBytes());
    Rewrite(bad);
    auto loaded = EmptyResult();
    EXPECT_NE(S_OK, Load(*loaded));
    ExpectSame(EmptyResult()->Data(), loaded->Data());
    ASSERT_EQ(S_OK, Store(*SomeResult()));
    EXPECT_TRUE(trace.Has("CResultsStore: the result file is damaged and gives way to a new one"));
    EXPECT_EQ(bad, BytesOf(path + L".damaged"));
    ASSERT_EQ(S_OK, Load(*loaded));
    ExpectSame(SomeResult()->Data(), loaded->Data());
}

std::string WithTableSectors(std::string bytes, char count)
{
    bytes[0x2C] = count;
    return bytes;
}

const BadFile kBadFiles[] = {
    {"NoBytes", [](const std::string&) { return std::string(); }},
    {"Text", [](const std::string&) { return std::string("not a storage\r\n"); }},
    {"LongText", [](const std::string&) { return std::string(100000, 'x'); }},
    {"HeaderCut", [](const std::string& good) { return good.substr(0, 100); }},
    {"HeaderAlone", [](const std::string& good) { return good.substr(0, 512); }},
    {"FirstSectors", [](const std::string& good) { return good.substr(0, 1024); }},
    {"SignatureSpoiled", [](const std::string& good) { return "ZZZZ" + good.substr(4); }},
    {"NoSectorTable", [](const std::string& good) { return WithTableSectors(good, 0); }},
    {"LargerSectorTable", [](const std::string& good) { return WithTableSectors(good, 2); }},
    {"AllZeroBehindHeader",
     [](const std::string& good) { return good.substr(0, 512) + std::string(good.size() - 512, '\0'); }},
    {"AllOnesBehindHeader",
     [](const std::string& good) { return good.substr(0, 512) + std::string(good.size() - 512, '\xff'); }},
};
INSTANTIATE_TEST_SUITE_P(Files, BadFileTest, testing::ValuesIn(kBadFiles), NameOf<BadFile>);

TEST_F(ResultsStoreTest, OneDamagedFileIsKept)
{
    for (const std::string bad : {"first", "second"})
    {
        Rewrite(bad);
        ASSERT_EQ(S_OK, Store(*SomeResult()));
        EXPECT_EQ("first", BytesOf(path + L".damaged"));
    }
}

// Whatever bytes are spoilt: no crash, no circle, and a result is read whole or not at all.
TEST_F(ResultsStoreTest, SpoiltBytesNeverHarm)
{
    ASSERT_EQ(S_OK, Store(*SomeResult()));
    const std::string good = FileBytes();
    std::mt19937 random(20240305);
    for (int round = 0; round < 300; ++round)
    {
        std::string bytes = good;
        for (int i = 0; i < 1 + round % 8; ++i)
            bytes[random() % bytes.size()] = static_cast<char>(random());
        Rewrite(bytes);
        auto loaded = EmptyResult();
        if (Load(*loaded) != S_OK)
            ExpectSame(EmptyResult()->Data(), loaded->Data());
        Store(*SomeResult());
    }
}

TEST_F(ResultsStoreTest, FileCutAnywhereNeverHarms)
{
    ASSERT_EQ(S_OK, Store(*SomeResult()));
    const std::string good = FileBytes();
    for (size_t size = 0; size < good.size(); size += 64)
    {
        Rewrite(good.substr(0, size));
        auto loaded = EmptyResult();
        if (Load(*loaded) != S_OK)
            ExpectSame(EmptyResult()->Data(), loaded->Data());
        EXPECT_EQ(S_OK, Store(*SomeResult())) << size;
        EXPECT_EQ(S_OK, Load(*loaded)) << size;
    }
}

// Leaves a file in the working folder, for check-stored-file to look at with tools that are not ours.
TEST_F(ResultsStoreTest, AFileForOtherTools)
{
    ASSERT_EQ(S_OK, Store(*SomeResult()));
    ASSERT_EQ(S_OK, Store(*EmptyResult(L"1@K2"), L"1@1", L"K2"));
    std::filesystem::copy_file(path, "stored-results.bin", std::filesystem::copy_options::overwrite_existing);
}
} // namespace
