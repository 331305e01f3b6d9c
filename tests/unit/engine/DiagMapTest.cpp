#include "CDM/src/engine/DiagMap.h"
#include "CDM/src/engine/catalogue/DiagSetting.h"
#include "Common/src/com/Owned.h"
#include "tests/support/ImportHook.h"
#include "tests/support/TraceCapture.h"

#include <atomic>
#include <functional>
#include <gtest/gtest.h>
#include <thread>

// Every trace line asks for the time.
ZEB_HOOKED_IMPORT("kernel32.dll", GetLocalTime)

namespace
{
std::function<void()> g_onTraceLine;
void WINAPI TimeOfTraceLine(SYSTEMTIME* time)
{
    if (const auto action = std::exchange(g_onTraceLine, nullptr))
        action();
    *time = {};
}

class DiagMapTest : public testing::Test
{
  protected:
    DiagMapTest() { EXPECT_EQ(S_OK, map.Create("no map")); }

    static std::shared_ptr<CDiagSetting> Object(const wchar_t* key)
    {
        return std::make_shared<CDiagSetting>(CBstr(key).Get(), false);
    }
    HRESULT Add(const wchar_t* key) { return map.AddObj(CBstr(key).Get(), Object(key)); }
    HRESULT Get(const wchar_t* key, std::shared_ptr<CDiagSetting>& object)
    {
        return map.GetObj(CBstr(key).Get(), object);
    }
    std::vector<std::wstring> Keys()
    {
        CVormArray<BSTR> array;
        EXPECT_EQ(S_OK, map.EnumObj(array));
        return {array.View().begin(), array.View().end()};
    }

    CDiagMap<CDiagSetting> map;
};

TEST_F(DiagMapTest, LowerCaseFindsWhatWasStoredUpperCased)
{
    ASSERT_EQ(S_OK, Add(L"9@{abc}"));
    std::shared_ptr<CDiagSetting> object;
    EXPECT_EQ(S_OK, Get(L"9@{abc}", object));
    EXPECT_EQ(S_OK, Get(L"9@{ABC}", object));
    EXPECT_EQ(S_OK, Get(L"9@{aBc}", object));
    EXPECT_EQ((std::vector<std::wstring>{L"9@{ABC}"}), Keys());
}

TEST_F(DiagMapTest, AddingTheSameKeyTwiceKeepsTheFirstObject)
{
    const auto first = Object(L"1@A");
    ASSERT_EQ(S_OK, map.AddObj(CBstr(L"1@A").Get(), first));
    EXPECT_EQ(engine::AlreadyPresent, Add(L"1@a"));
    std::shared_ptr<CDiagSetting> object;
    ASSERT_EQ(S_OK, Get(L"1@A", object));
    EXPECT_EQ(first, object);
}

TEST_F(DiagMapTest, UnknownKeysAreNotFound)
{
    std::shared_ptr<CDiagSetting> object;
    for (const wchar_t* key : {L"", L"1", L"1@A", L"1@\"A\"", L"\\"})
        EXPECT_EQ(engine::NotFound, Get(key, object)) << key;
    EXPECT_EQ(engine::NotFound, map.GetObj(nullptr, object));
    EXPECT_EQ(engine::NotFound, map.RemoveObj(CBstr(L"1@A").Get()));
    EXPECT_EQ(engine::NotFound, Get(std::wstring(10000, L'k').c_str(), object));
    EXPECT_FALSE(object);
}

TEST_F(DiagMapTest, KeysComeInTheirOrder)
{
    for (const wchar_t* key : {L"B@1", L"A@2", L"A@1", L"10@1"})
        ASSERT_EQ(S_OK, Add(key));
    EXPECT_EQ((std::vector<std::wstring>{L"10@1", L"A@1", L"A@2", L"B@1"}), Keys());
}

TEST_F(DiagMapTest, EmptyMapEnumeratesNothing)
{
    EXPECT_TRUE(Keys().empty());
    CDiagMap<CDiagSetting> notCreated;
    CVormArray<BSTR> array;
    EXPECT_EQ(S_OK, notCreated.EnumObj(array));
    EXPECT_EQ(0u, array.Count());
    std::shared_ptr<CDiagSetting> object;
    EXPECT_EQ(engine::NotFound, notCreated.GetObj(CBstr(L"1@A").Get(), object));
}

TEST_F(DiagMapTest, RemovedObjectLivesForItsReader)
{
    ASSERT_EQ(S_OK, Add(L"1@A"));
    std::shared_ptr<CDiagSetting> read;
    ASSERT_EQ(S_OK, Get(L"1@A", read));
    ASSERT_EQ(S_OK, map.RemoveObj(CBstr(L"1@a").Get()));
    EXPECT_EQ(1, read.use_count());
    EXPECT_STREQ(L"1@A", read->Key().Text());
    std::shared_ptr<CDiagSetting> object;
    EXPECT_EQ(engine::NotFound, Get(L"1@A", object));
}

// Freeing a list of keys is traced, which takes as long as the file does: nobody must wait for it.
class DiagMapTraceTest : public DiagMapTest
{
  protected:
    ~DiagMapTraceTest() override { g_onTraceLine = nullptr; }

    // While the next trace line is written, another thread changes the map.
    void ChangeAtTheNextLine()
    {
        g_onTraceLine = [this]
        {
            CHandle done(CreateEventW(nullptr, TRUE, FALSE, nullptr));
            writer = std::thread(
                [this, event = done.Get()]
                {
                    EXPECT_EQ(S_OK, Add(L"2@A"));
                    SetEvent(event);
                });
            changed = WaitForSingleObject(done.Get(), 10000) == WAIT_OBJECT_0;
            kept = std::move(done);
        };
    }
    void ExpectChanged()
    {
        ASSERT_TRUE(writer.joinable()) << "no line was written";
        writer.join();
        EXPECT_TRUE(changed) << "the map was locked while a line was written";
    }

    const CTraceCapture trace;
    const CImportHook<decltype(__imp_GetLocalTime)> hook{__imp_GetLocalTime, &TimeOfTraceLine};
    std::thread writer;
    CHandle kept;
    bool changed = false;
};

TEST_F(DiagMapTraceTest, AnOldListOfTheCallersIsFreedOutsideTheLock)
{
    ASSERT_EQ(S_OK, Add(L"1@A"));
    Keys();
    CVormArray<BSTR> own;
    ASSERT_EQ(S_OK, own.Allocate(1));
    ChangeAtTheNextLine();
    EXPECT_EQ(S_OK, map.EnumObj(own));
    ExpectChanged();
}

TEST_F(DiagMapTraceTest, AListThatWasKeptMeanwhileIsFreedOutsideTheLock)
{
    ASSERT_EQ(S_OK, Add(L"1@A"));
    // The first line is that of the caller's old list, after the map was read. Another enumeration comes and
    // goes at that moment.
    CVormArray<BSTR> own;
    ASSERT_EQ(S_OK, own.Allocate(1));
    g_onTraceLine = [this]
    {
        Keys();
        // The line that ends the freeing of the caller's list follows; then there is to be none.
        g_onTraceLine = [this] { ChangeAtTheNextLine(); };
    };
    EXPECT_EQ(S_OK, map.EnumObj(own));
    EXPECT_EQ(1u, own.Count());
    const bool noFurtherLine = std::exchange(g_onTraceLine, nullptr) != nullptr;
    if (!noFurtherLine)
        ExpectChanged();
}

TEST_F(DiagMapTest, ReadersAndWritersRunTogether)
{
    constexpr int kRounds = 2000;
    for (int i = 0; i < 50; ++i)
        ASSERT_EQ(S_OK, Add((L"S@" + std::to_wstring(i)).c_str()));
    std::vector<std::thread> threads;
    std::atomic<int> wrong{0};
    for (int t = 0; t < 2; ++t)
    {
        threads.emplace_back(
            [&, t]
            {
                const std::wstring key = L"W@" + std::to_wstring(t);
                for (int i = 0; i < kRounds; ++i)
                    if (FAILED(Add(key.c_str())) || FAILED(map.RemoveObj(CBstr(key.c_str()).Get())))
                        ++wrong;
            });
        threads.emplace_back(
            [&]
            {
                for (int i = 0; i < kRounds / 4; ++i)
                {
                    CVormArray<BSTR> array;
                    if (FAILED(map.EnumObj(array)) || array.Count() < 50 || array.Count() > 52)
                        ++wrong;
                    std::shared_ptr<CDiagSetting> object;
                    if (FAILED(Get(L"s@7", object)))
                        ++wrong;
                }
            });
    }
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(0, wrong);
    EXPECT_EQ(50u, Keys().size());
}

TEST(IndexMapTest, KeepsTheFirstIndexOfAnAdapter)
{
    CIndexMap indexes;
    EXPECT_EQ(S_OK, indexes.AddIndexToMap(CBstr(L"{abc}").Get(), CBstr(L"0")));
    EXPECT_EQ(engine::AlreadyPresent, indexes.AddIndexToMap(CBstr(L"{ABC}").Get(), CBstr(L"1")));
    EXPECT_STREQ(L"0", indexes.GetIndexFromMap(CBstr(L"{aBC}").Get()).Text());
    EXPECT_FALSE(indexes.GetIndexFromMap(CBstr(L"other").Get()));
    EXPECT_FALSE(indexes.GetIndexFromMap(nullptr));
}
} // namespace
