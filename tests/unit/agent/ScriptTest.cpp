#include "agent/scripted/Script.h"

#include "agent/AgentCodes.h"
#include "agent/scripted/ScriptSource.h"
#include "agent/scripted/ScriptValue.h"
#include "tests/support/CaseName.h"
#include "tests/support/RegistryScope.h"
#include "tests/support/TempFolder.h"

#include <filesystem>
#include <fstream>
#include <gmock/gmock.h>
#include <iterator>

namespace
{
TEST(Script, EveryMemberIsRead)
{
    const CScript script = ParseScript(R"({
        "CountsFile": "C:\\counts.json",
        "Faults": { "Initialize": { "Result": "0x80004005" }, "Release": [{ "Throw": true }] },
        "Adapters": [ {
            "Key": "a-1",
            "Faults": { "EnumDiagTests": [{ "Call": 2, "Result": 2147500037 }] },
            "Tests": [ {
                "TestID": 17, "NameStringID": 4000, "Reserved": 7, "Outcome": ["passed", "0x80040311", -2147220735],
                "Duration": 250,
                "Statistics": [ { "Counter": [1, 2, 3, 4, 5, 6, 7, 8], "Word": 9, "ByteA": 10, "ByteB": 11 }, {} ],
                "Faults": { "StopTest": { "HangUntil": "go on" } }
            } ]
        } ]
    })");
    EXPECT_EQ(L"C:\\counts.json", script.CountsFile);
    EXPECT_EQ(E_FAIL, script.Faults.at(Call::Initialize)[0].Result);
    EXPECT_TRUE(script.Faults.at(Call::Release)[0].Throw);
    ASSERT_EQ(1u, script.Adapters.size());
    const CScriptedAdapter& adapter = script.Adapters[0];
    EXPECT_EQ(L"a-1", adapter.Key);
    EXPECT_EQ(2u, adapter.Faults.at(Call::EnumDiagTests)[0].OnlyCall);
    EXPECT_EQ(E_FAIL, adapter.Faults.at(Call::EnumDiagTests)[0].Result);
    ASSERT_EQ(1u, adapter.Tests.size());
    const CScriptedTest& test = adapter.Tests[0];
    EXPECT_EQ(17u, test.Descriptor.TestID);
    EXPECT_EQ(4000u, test.Descriptor.NameStringID);
    EXPECT_EQ(7u, test.Descriptor.Reserved);
    EXPECT_EQ((std::vector<HRESULT>{S_OK, vorl::link::Down, vorl::NoSuchAdapter}), test.Outcomes);
    EXPECT_EQ(250u, test.Duration);
    ASSERT_EQ(2u, test.Statistics.size());
    EXPECT_EQ(8u, test.Statistics[0].Counter[7]);
    EXPECT_EQ(9u, test.Statistics[0].Word);
    EXPECT_EQ(10u, test.Statistics[0].ByteA);
    EXPECT_EQ(11u, test.Statistics[0].ByteB);
    EXPECT_EQ(0u, test.Statistics[1].Counter[0]);
    EXPECT_EQ(L"go on", test.Faults.at(Call::StopTest)[0].HangUntil);
}

TEST(Script, OrdinaryTestPassesAtOnceUnlessItSaysOtherwise)
{
    const CScriptedTest test =
        ParseScript(R"({"Adapters": [{"Key": "a", "Tests": [{"TestID": 18}]}]})").Adapters[0].Tests[0];
    EXPECT_EQ(3502u, test.Descriptor.NameStringID);
    EXPECT_EQ(std::vector<HRESULT>{S_OK}, test.Outcomes);
    EXPECT_EQ(0u, test.Duration);
    EXPECT_FALSE(test.GrowingStatistics);
}

TEST(Script, SenderAndResponderRunUntilStoppedAndCount)
{
    const CScript script = ParseScript(
        R"({"Adapters": [{"Key": "a", "Tests": [{"TestID": 9}, {"TestID": 10, "Duration": 5}]}]})");
    const auto& tests = script.Adapters[0].Tests;
    EXPECT_FALSE(tests[0].Duration);
    EXPECT_TRUE(tests[0].GrowingStatistics);
    EXPECT_EQ(5u, tests[1].Duration);
}

TEST(Script, BuiltInScriptHasTwoAdaptersWithSenderAndResponder)
{
    const CScript script = ParseScript(DefaultScriptText());
    ASSERT_EQ(2u, script.Adapters.size());
    std::vector<ULONG> ids;
    for (const CScriptedTest& test : script.Adapters[0].Tests)
        ids.push_back(test.Descriptor.TestID);
    EXPECT_EQ((std::vector<ULONG>{1, 2, 3, 6, 9, 10}), ids);
}

// The ready scenarios, whichever there are.
TEST(Script, EveryScenarioIsReadAndHasOneAdapterWithAllTests)
{
    std::vector<std::string> names;
    for (const auto& file : std::filesystem::directory_iterator(ZEB_SCENARIOS))
    {
        SCOPED_TRACE(file.path().filename().string());
        names.push_back(file.path().stem().string());
        std::ifstream stream(file.path(), std::ios::binary);
        const std::string text(std::istreambuf_iterator<char>(stream), {});
        EXPECT_TRUE(text.starts_with("// ")) << "what it is, for the demonstration";
        const CScript script = ParseScript(text);
        ASSERT_EQ(1u, script.Adapters.size());
        EXPECT_EQ(L"SCRIPTED-ADAPTER-1", script.Adapters[0].Key);
        std::vector<ULONG> ids;
        for (const CScriptedTest& test : script.Adapters[0].Tests)
            ids.push_back(test.Descriptor.TestID);
        EXPECT_EQ((std::vector<ULONG>{1, 2, 3, 4, 5, 6, 7, 8, 9, 10}), ids);
    }
    EXPECT_THAT(names, testing::UnorderedElementsAre("cable", "flaky", "healthy"));
}

struct Case
{
    const char* name;
    const char* text;
    HRESULT code;
    const char* complaint; // how it begins
};

class BadScript : public testing::TestWithParam<Case>
{
};

TEST_P(BadScript, IsRefusedWithThePlace)
{
    try
    {
        ParseScript(GetParam().text);
        FAIL() << "the script was accepted";
    }
    catch (const CScriptError& error)
    {
        EXPECT_EQ(GetParam().code, error.Code());
        EXPECT_TRUE(std::string_view(error.what()).starts_with(GetParam().complaint)) << error.what();
    }
}

constexpr HRESULT kBad = vorl::script::BadContent;
INSTANTIATE_TEST_SUITE_P(
    Texts, BadScript,
    testing::Values(
        Case{"Empty", "", vorl::script::NotJson, "[json.exception.parse_error"},
        Case{"Unfinished", R"({"Adapters": [)", vorl::script::NotJson, "[json.exception.parse_error"},
        Case{"NotUtf8", "{\"CountsFile\": \"\xFF\"}", vorl::script::NotJson, "[json.exception.parse_error"},
        Case{"NoObject", "[]", kBad, "script: expected an object"},
        Case{"MisspeltMember", R"({"Adapter": []})", kBad, "script.Adapter: there is no member"},
        Case{"AdaptersNoList", R"({"Adapters": {}})", kBad, "script.Adapters: expected a list"},
        Case{"NoKey", R"({"Adapters": [{}]})", kBad, "script.Adapters[0]: Key is missing"},
        Case{"EmptyKey", R"({"Adapters": [{"Key": ""}]})", kBad, "script.Adapters[0].Key: expected a text"},
        Case{"NoTestID", R"({"Adapters": [{"Key": "a", "Tests": [{}]}]})", kBad,
             "script.Adapters[0].Tests[0]: TestID is missing"},
        Case{"NegativeTestID", R"({"Adapters": [{"Key": "a", "Tests": [{"TestID": -1}]}]})", kBad,
             "script.Adapters[0].Tests[0].TestID: expected a whole number"},
        Case{"HugeTestID", R"({"Adapters": [{"Key": "a", "Tests": [{"TestID": 4294967296}]}]})", kBad,
             "script.Adapters[0].Tests[0].TestID: expected a whole number"},
        Case{"MisspeltOutcome",
             R"({"Adapters": [{"Key": "a", "Tests": [{"TestID": 1, "Outcome": "pased"}]}]})", kBad,
             "script.Adapters[0].Tests[0].Outcome: expected \"passed\""},
        Case{"OutcomeTooLong",
             R"({"Adapters": [{"Key": "a", "Tests": [{"TestID": 1, "Outcome": ["0x123456789"]}]}]})", kBad,
             "script.Adapters[0].Tests[0].Outcome[0]: expected \"passed\""},
        Case{"NoOutcome", R"({"Adapters": [{"Key": "a", "Tests": [{"TestID": 1, "Outcome": []}]}]})", kBad,
             "script.Adapters[0].Tests[0].Outcome: a list of outcomes"},
        Case{"DurationForEver",
             R"({"Adapters": [{"Key": "a", "Tests": [{"TestID": 1, "Duration": 4294967295}]}]})", kBad,
             "script.Adapters[0].Tests[0].Duration: expected a whole number"},
        Case{
            "NineCounters",
            R"({"Adapters": [{"Key": "a", "Tests": [{"TestID": 9, "Statistics": [{"Counter": [1,2,3,4,5,6,7,8,9]}]}]}]})",
            kBad, "script.Adapters[0].Tests[0].Statistics[0].Counter: there are eight"},
        Case{"ByteTooLarge",
             R"({"Adapters": [{"Key": "a", "Tests": [{"TestID": 9, "Statistics": [{"ByteA": 256}]}]}]})",
             kBad, "script.Adapters[0].Tests[0].Statistics[0].ByteA: expected a whole number"},
        Case{"UnknownCall", R"({"Faults": {"Initialise": {"Throw": true}}})", kBad,
             "script.Faults.Initialise: there is no call"},
        Case{"CallOfAnotherScope",
             R"({"Adapters": [{"Key": "a", "Faults": {"EnumAdapters": {"Throw": true}}}]})", kBad,
             "script.Adapters[0].Faults.EnumAdapters: this call cannot"},
        Case{"ReleaseOfAnAdapter", R"({"Adapters": [{"Key": "a", "Faults": {"Release": {"Throw": true}}}]})",
             kBad, "script.Adapters[0].Faults.Release: this call cannot"},
        Case{"ReleaseWithResult", R"({"Faults": {"Release": {"Result": 1}}})", kBad,
             "script.Faults.Release: a release has no result"},
        Case{"FaultThatSaysNothing", R"({"Faults": {"Initialize": {"Call": 1}}})", kBad,
             "script.Faults.Initialize: a fault says"},
        Case{"CallZero", R"({"Faults": {"Initialize": {"Call": 0, "Throw": true}}})", kBad,
             "script.Faults.Initialize.Call: calls are counted"},
        Case{"ThrowNoFlag", R"({"Faults": {"Initialize": {"Throw": 1}}})", kBad,
             "script.Faults.Initialize.Throw: expected true"}),
    NameOf<Case>);

constexpr char kKey[] = "SOFTWARE\\Veltrane\\Halvern\\ZEB\\VorlTest";

std::wstring PublishedReason()
{
    wchar_t text[512] = {};
    DWORD size = sizeof text;
    RegGetValueW(HKEY_LOCAL_MACHINE, kScriptKey, L"ScriptError", RRF_RT_REG_SZ, nullptr, text, &size);
    return text;
}

HRESULT CodeOfLoading()
{
    try
    {
        LoadScript();
        return S_OK;
    }
    catch (const CScriptError& error)
    {
        return error.Code();
    }
}

TEST(ScriptSource, BuiltInWhereTheRegistryNamesNone)
{
    CRegistryScope registry;
    EXPECT_EQ(2u, LoadScript().Adapters.size());
}

TEST(ScriptSource, FileThatTheRegistryNames)
{
    CRegistryScope registry;
    CTempFolder folder;
    std::ofstream(folder.Path() / "script.json") << R"(// a comment
        {"Adapters": [{"Key": "a"}]})";
    registry.SetString(kKey, "Script", folder.File("script.json").c_str());
    registry.SetString(kKey, "ScriptError", "of last time");
    const CScript script = LoadScript();
    ASSERT_EQ(1u, script.Adapters.size());
    EXPECT_EQ(L"a", script.Adapters[0].Key);
    EXPECT_EQ(L"", PublishedReason());
}

TEST(ScriptSource, ReasonsOfARefusalArePublished)
{
    CRegistryScope registry;
    CTempFolder folder;
    registry.SetString(kKey, "Script", folder.File("missing.json").c_str());
    EXPECT_EQ(vorl::script::Unreadable, CodeOfLoading());
    EXPECT_NE(std::wstring::npos, PublishedReason().find(L"missing.json: Windows error 2"));

    std::ofstream(folder.Path() / "script.json") << R"({"Adapters": [{"Kye": "a"}]})";
    registry.SetString(kKey, "Script", folder.File("script.json").c_str());
    EXPECT_EQ(kBad, CodeOfLoading());
    EXPECT_EQ(L"script.Adapters[0]: Key is missing", PublishedReason());
}

TEST(ScriptSource, ValueOfAnotherTypeIsRefused)
{
    CRegistryScope registry;
    registry.SetNumber(kKey, "Script", 1);
    EXPECT_EQ(vorl::script::Unreadable, CodeOfLoading());
}
} // namespace
