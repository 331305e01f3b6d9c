// The sender's registry values of one run: that they are set, and that everything is as before afterwards.
#include "tools/zebdiag/SenderValues.h"

#include "CommandsFixture.h"
#include "Common/src/com/WmiStatus.h"
#include "FakeRegistry.h"
#include "tests/support/RegistryScope.h"
#include "tools/zebdiag/doctor/Places.h"

namespace zebdiag
{
namespace
{
using Values = std::map<std::wstring, CRegistryValue>;

const CSenderOptions kEverything = {L"192.0.2.7", 8620, 200, 100, 46};
const Values kGiven = {{L"Peer", TextValue(L"192.0.2.7")},
                       {L"PeerPort", NumberValue(8620)},
                       {L"PacketsPerSecond", NumberValue(200)},
                       {L"PacketSize", NumberValue(100)},
                       {L"Dscp", NumberValue(46)}};
const Values kBefore = {{L"Peer", NumberValue(1)}, // of another type than it should be
                        {L"PeerPort", NumberValue(4000)},
                        {L"LossLimit", NumberValue(5)}};

TEST(SenderValuesTest, AreSetAndGoAgain)
{
    CFakeRegistry registry;
    {
        CSenderValues values(registry);
        values.Set(kEverything);
        EXPECT_EQ(registry.Values, kGiven);
    }
    EXPECT_EQ(registry.Values, Values());
}

TEST(SenderValuesTest, ArePutBackAsTheyWere)
{
    CFakeRegistry registry;
    registry.Values = kBefore;
    CSenderValues values(registry);
    values.Set(kEverything);
    EXPECT_EQ(registry.Values[L"Peer"], TextValue(L"192.0.2.7"));
    EXPECT_EQ(registry.Values[L"LossLimit"], NumberValue(5));
    EXPECT_EQ(values.Restore(), PutBack::All);
    EXPECT_EQ(registry.Values, kBefore);
}

TEST(SenderValuesTest, WhatIsNotGivenStays)
{
    CFakeRegistry registry;
    registry.Values = kBefore;
    CSenderValues values(registry);
    CSenderOptions peer;
    peer.Peer = L"left";
    values.Set(peer);
    Values expected = kBefore;
    expected[L"Peer"] = TextValue(L"left");
    EXPECT_EQ(registry.Values, expected);
}

// Who may not write can still ask for what an administrator has set.
TEST(SenderValuesTest, WhatIsSetAlreadyIsNotWritten)
{
    CFakeRegistry registry;
    registry.Values = kGiven;
    CSenderValues values(registry);
    values.Set(kEverything);
    EXPECT_EQ(registry.Calls, kGiven.size()) << "one look at each";
    EXPECT_EQ(values.Restore(), PutBack::All);
    EXPECT_EQ(registry.Values, kGiven);
}

TEST(SenderValuesTest, WhatAnotherProgramChangedMeanwhileStays)
{
    CFakeRegistry registry;
    CSenderValues values(registry);
    values.Set(kEverything);
    registry.Values[L"Peer"] = TextValue(L"another");
    EXPECT_EQ(values.Restore(), PutBack::NotAll);
    EXPECT_EQ(registry.Values, (Values{{L"Peer", TextValue(L"another")}}));
}

// Two calls for each of the five values.
TEST(SenderValuesTest, NothingIsLeftWhicheverCallFailed)
{
    for (unsigned failing = 1; failing <= 10; ++failing)
    {
        CFakeRegistry registry;
        registry.Values = kBefore;
        registry.FailingCall = failing;
        CSenderValues values(registry);
        EXPECT_THROW(values.Set(kEverything), CFailure) << failing;
        EXPECT_EQ(registry.Values, kBefore) << failing;
    }
}

TEST(SenderValuesTest, ACallThatFailsWhilePuttingBackIsTold)
{
    for (unsigned failing = 11; failing <= 20; ++failing)
    {
        CFakeRegistry registry;
        registry.FailingCall = failing;
        CSenderValues values(registry);
        values.Set(kEverything);
        EXPECT_EQ(values.Restore(), PutBack::Failed) << failing;
        EXPECT_EQ(registry.Values.size(), 1u) << failing << ": the others are put back all the same";
    }
}

constexpr wchar_t kWhatToSet[] = L"An administrator of that computer can set these values under "
                                 L"HKEY_LOCAL_MACHINE\\SOFTWARE\\Veltrane\\Halvern\\ZEB\\ZebDiag:\n"
                                 L"  Peer (REG_SZ) = 192.0.2.7\n"
                                 L"  PacketsPerSecond (REG_DWORD) = 200\n"
                                 L"Then run the test without --peer and the options that go with it.\n";

const std::vector<std::wstring> kCommand = {L"run",       L"--test", L"sender", L"--peer",
                                            L"192.0.2.7", L"--rate", L"200"};

class PeerOptionTest : public CommandsTest
{
  protected:
    PeerOptionTest() { m_registry.Values = kBefore; }

    std::function<TestState()> RunThatEndsAs(TestState state)
    {
        return [this, state]
        {
            m_during = m_registry.Values;
            return state;
        };
    }
    void ExpectSetOnlyDuringTheRun()
    {
        Values expected = kBefore;
        expected[L"Peer"] = TextValue(L"192.0.2.7");
        expected[L"PacketsPerSecond"] = NumberValue(200);
        EXPECT_EQ(m_during, expected);
        EXPECT_EQ(m_registry.Values, kBefore);
    }

    Values m_during;
};

TEST_F(PeerOptionTest, HoldsForThatRun)
{
    m_world->Tests[L"9@{BBBB}"].Run = RunThatEndsAs(TestState::Passed);
    EXPECT_EQ(Run(kCommand), ExitCode::Passed);
    ExpectSetOnlyDuringTheRun();
    EXPECT_NE(m_console.Output.find(L"    Sends to 192.0.2.7.\n"), std::wstring::npos)
        << Utf8Text(m_console.Output);
}

TEST_F(PeerOptionTest, IsPutBackAfterAFailedRun)
{
    m_world->Tests[L"9@{BBBB}"].Run = RunThatEndsAs(TestState::Failed);
    EXPECT_EQ(Run(kCommand), ExitCode::Failed);
    ExpectSetOnlyDuringTheRun();
}

TEST_F(PeerOptionTest, IsPutBackWhereTheProviderFails)
{
    m_world->Before = [this](const std::wstring& method)
    {
        if (method == L"RunTest")
            m_during = m_registry.Values;
    };
    m_world->Failures[L"RunTest"] = {wmi::ProviderFailure, L""};
    EXPECT_EQ(Run(kCommand), ExitCode::CouldNotRun);
    ExpectSetOnlyDuringTheRun();
}

TEST_F(PeerOptionTest, IsPutBackAfterAnInterrupt)
{
    CHandle mayEnd(CreateEventW(nullptr, TRUE, FALSE, nullptr));
    m_world->Tests[L"9@{BBBB}"].Run = [&]
    {
        m_during = m_registry.Values;
        SetEvent(m_stop.Get());
        WaitForSingleObject(mayEnd.Get(), INFINITE);
        return TestState::Stopped;
    };
    m_world->Tests[L"9@{BBBB}"].Stop = [&] { return SetEvent(mayEnd.Get()) != FALSE; };
    EXPECT_EQ(Run(kCommand), ExitCode::Stopped);
    ExpectSetOnlyDuringTheRun();
}

// A second interrupt leaves the test to itself; the values go all the same.
TEST_F(PeerOptionTest, IsPutBackWhereTheRunIsLeftToItself)
{
    CHandle mayEnd(CreateEventW(nullptr, TRUE, FALSE, nullptr));
    m_world->Tests[L"9@{BBBB}"].Run = [&]
    {
        m_during = m_registry.Values;
        SetEvent(m_abandon.Get());
        WaitForSingleObject(mayEnd.Get(), INFINITE);
        return TestState::Stopped;
    };
    EXPECT_EQ(Run(kCommand), ExitCode::CouldNotRun);
    ExpectSetOnlyDuringTheRun();
    SetEvent(mayEnd.Get());
    WaitForSingleObject(m_world->CallEnded(), INFINITE);
}

TEST_F(PeerOptionTest, SaysWhatStaysBecauseAnotherProgramChangedIt)
{
    m_world->Tests[L"9@{BBBB}"].Run = [this]
    {
        m_registry.Values[L"Peer"] = TextValue(L"another");
        return TestState::Passed;
    };
    EXPECT_EQ(Run(kCommand), ExitCode::Passed);
    EXPECT_NE(m_console.Output.find(L"were changed while the test ran; the new ones stay.\nPASSED: "),
              std::wstring::npos)
        << Utf8Text(m_console.Output);
}

TEST_F(PeerOptionTest, WithoutTheRightSaysWhatAnAdministratorSets)
{
    m_registry.FailingCall = 2;
    EXPECT_EQ(Run(kCommand), ExitCode::CouldNotRun);
    EXPECT_EQ(m_console.Errors,
              L"zebdiag: The peer was not set: on this computer only administrators may do that.\n" +
                  std::wstring(kWhatToSet) + L"(Status 0x80070005.)\n");
    EXPECT_EQ(m_registry.Values, kBefore);
    EXPECT_TRUE(m_world->Calls.empty());
}

TEST_F(PeerOptionTest, IsRefusedForAnotherComputerBeforeAPasswordIsAskedFor)
{
    std::vector<std::wstring> command = kCommand;
    command.insert(command.end(), {L"--computer", L"WS42", L"--user", L"EXAMPLE\\admin"});
    EXPECT_EQ(Run(command), ExitCode::CouldNotRun);
    EXPECT_EQ(
        m_console.Errors,
        L"zebdiag: The registry of WS42 is out of reach from here, so --peer cannot set the peer there.\n" +
            std::wstring(kWhatToSet));
    EXPECT_EQ(m_console.Asked, L"");
    EXPECT_EQ(m_registry.Calls, 0u);
}

TEST_F(PeerOptionTest, IsRefusedWithoutASender)
{
    EXPECT_EQ(Run({L"run", L"--test", L"link", L"--peer", L"192.0.2.7"}), ExitCode::Usage);
    EXPECT_EQ(m_console.Errors, L"zebdiag: --peer is for the sender, which is not the test to run.\n"
                                L"Name it with --test sender.\n");
    EXPECT_EQ(m_registry.Calls, 0u);
    EXPECT_TRUE(m_world->Calls.empty());
}

TEST_F(PeerOptionTest, HasNoDocumentWithoutASender)
{
    EXPECT_EQ(Run({L"run", L"--json", L"--test", L"link", L"--peer", L"192.0.2.7"}), ExitCode::Usage);
    EXPECT_EQ(m_console.Output, L"");
    EXPECT_EQ(m_console.Errors, L"zebdiag: --peer is for the sender, which is not the test to run.\n"
                                L"Name it with --test sender.\n");
}

class ThisRegistryTest : public testing::Test
{
  protected:
    std::optional<CRegistryValue> Read(const wchar_t* name)
    {
        std::optional<CRegistryValue> value = NumberValue(99);
        EXPECT_EQ(ThisRegistry().Read(name, value), ERROR_SUCCESS);
        return value;
    }

    CRegistryScope m_scope;
    const std::string m_key = NarrowText(kZebDiagKey);
};

TEST_F(ThisRegistryTest, ReadsValuesOfAnyTypeAndLength)
{
    EXPECT_EQ(Read(L"Peer"), std::nullopt) << "no key";
    m_scope.CreateKey(m_key.c_str());
    EXPECT_EQ(Read(L"Peer"), std::nullopt) << "no value";
    m_scope.SetString(m_key.c_str(), "Peer", "left");
    m_scope.SetNumber(m_key.c_str(), "PeerPort", 4000);
    m_scope.SetBinary(m_key.c_str(), "Dscp", std::string(3000, 'x'));
    EXPECT_EQ(Read(L"Peer"), TextValue(L"left"));
    EXPECT_EQ(Read(L"PeerPort"), NumberValue(4000));
    EXPECT_EQ(Read(L"Dscp"), (CRegistryValue{REG_BINARY, std::vector<BYTE>(3000, 'x')}));
}

TEST_F(ThisRegistryTest, WritesAndRemoves)
{
    m_scope.CreateKey(m_key.c_str());
    EXPECT_EQ(ThisRegistry().Write(L"Peer", TextValue(L"right")), ERROR_SUCCESS);
    EXPECT_EQ(Read(L"Peer"), TextValue(L"right"));
    EXPECT_EQ(ThisRegistry().Write(L"Peer", std::nullopt), ERROR_SUCCESS);
    EXPECT_EQ(Read(L"Peer"), std::nullopt);
    EXPECT_EQ(ThisRegistry().Write(L"Peer", std::nullopt), ERROR_FILE_NOT_FOUND);
}
} // namespace
} // namespace zebdiag
