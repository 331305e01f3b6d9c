#include "tests/unit/engine/StoreFixture.h"

#include "Common/src/com/Text.h"
#include "tests/support/CaseName.h"

#include <algorithm>
#include <cstdint>
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

// The sector of the table is the end of another chain, too.
std::string WithTableInAnotherChain(const std::string& good)
{
    std::string bytes = good;
    const auto numberAt = [&](size_t offset)
    {
        uint32_t number = 0;
        std::memcpy(&number, bytes.data() + offset, sizeof(number));
        return number;
    };
    const uint32_t table = numberAt(0x4C);
    const auto setNext = [&](uint32_t sector, uint32_t next)
    { std::memcpy(bytes.data() + 512 * (table + 1) + sizeof(next) * sector, &next, sizeof(next)); };
    setNext(numberAt(0x3C), table);
    setNext(table, 0xFFFFFFFE);
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
    {"TableInAnotherChain", WithTableInAnotherChain},
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
