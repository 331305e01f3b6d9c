// Adapters, tests, results and settings as the client works with them.
#pragma once

#include <optional>
#include <string>
#include <vector>

namespace zebdiag
{
inline constexpr wchar_t kTestClass[] = L"Tolva_DiagTest";
inline constexpr wchar_t kResultClass[] = L"Tolva_DiagResult";
inline constexpr wchar_t kSettingClass[] = L"Tolva_DiagSetting";

// The numbers of TestState.
enum class TestState : long
{
    Unknown = 0,
    Other = 1,
    Passed = 2,
    Failed = 3,
    InProgress = 4,
    Stopped = 5
};

struct CTest
{
    std::wstring Key;         // the test's Name: number, "@", key of the adapter
    unsigned long Number = 0; // shown in decimal; in the key it is hexadecimal
    std::wstring AdapterKey;
    std::wstring Caption;
    std::wstring Description;
    std::wstring Path; // for method calls
    bool InUse = false;
    std::vector<long> Characteristics;

    // True for a test that sends or receives test packets for a configured time, and has settings.
    bool SendsPackets() const;
    // True for the one that sends them.
    bool IsSender() const;
};

struct CAdapter
{
    std::wstring Key;         // what the provider calls it
    std::wstring Name;        // what the system's user calls it; the key where nobody knows
    std::wstring Description; // the device; may be empty
    std::vector<CTest> Tests; // by number
};

struct CInventory
{
    std::wstring Computer;
    std::vector<CAdapter> Adapters; // by name

    size_t TestCount() const;
};

// The values of a setting; absent ones do not apply to the test.
struct CSettingValues
{
    std::optional<bool> Quick;
    std::optional<bool> Report;
    std::optional<long> Coverage; // percent
};

struct CResult
{
    std::wstring TestKey;
    TestState State = TestState::Unknown;
    std::optional<long> Percent;
    std::wstring Started; // as the provider gives times; empty where there is none
    std::wstring Completed;
    std::wstring Written;
    std::vector<std::wstring> Lines; // time stamp, "|", caption, "|", finding
    CSettingValues Setting;
};

struct CSetting
{
    std::wstring TestKey;
    std::wstring Path;
    CSettingValues Values;
};
} // namespace zebdiag
