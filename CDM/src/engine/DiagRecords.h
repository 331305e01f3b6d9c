// The records through which the contents of tests, settings and results leave the diagnostics manager. Each
// is a copy that belongs to whoever asked for it and was consistent at the moment it was taken.
#pragma once

#include "Common/src/com/Bstr.h"

#include <optional>
#include <vector>
#include <windows.h>

// The states of a result.
enum TestState : ULONG
{
    TestStateUnknown = 0,
    TestStateOther = 1,
    TestStatePassed = 2,
    TestStateFailed = 3,
    TestStateInProgress = 4,
    TestStateStopped = 5
};

// Resource strings: these and the numbers that follow describe tests and messages.
namespace strings
{
constexpr ULONG Status = 0; // the message whose value is a status
constexpr ULONG TestDescription = 3600;
constexpr ULONG FailedTest = 3800;
} // namespace strings

struct CTestData
{
    ULONG TestID = 0;
    ULONG NameStringID = 0;
    CBstr Key;
    ULONG DescriptionStringID = 0;
    std::vector<USHORT> Characteristics;
    ULONG Value = 0;
    ULONG Locked = 0;
    std::vector<USHORT> ResourcesUsed;
    HANDLE Event = nullptr; // to stop it, or null; the test's own, which lives as long as the manager
    ULONG SenderResponder = 0;
};

struct CSettingData
{
    CBstr Key;
    USHORT TestWarningLevel = 0;
    ULONG ReportSoftErrors = 0;
    ULONG ReportStatusMessages = 1;
    BYTE PercentOfTestCoverage = 100;
    ULONG QuickMode = 1;
    ULONG HaltOnError = 0;
    ULONG IsPackage = 0;
};

struct CResultData
{
    ULONG TestWarningLevel = 0;
    ULONG ReportSoftErrors = 0;
    ULONG ReportStatusMessages = 1;
    ULONG PercentOfTestCoverage = 100;
    ULONG QuickMode = 1;
    ULONG HaltOnError = 0;
    CBstr ResultID;
    CBstr DiagnosticCreationClassName;
    CBstr ExecutionID;
    ULONG IsPackage = 0;
    std::optional<SYSTEMTIME> TimeStamp; // local times
    std::optional<SYSTEMTIME> TestStartTime;
    std::optional<SYSTEMTIME> TestCompletionTime;
    ::TestState TestState = TestStateUnknown;
    ULONG OtherStateDescriptionResourceId = 0;
    ULONG MessageCount = 0; // message i is entry i of the two lists, which can be longer
    std::vector<ULONG> StringIDs;
    std::vector<ULONG> TestMessages;
    ULONG EstimatedTimeOfPerforming = 0;
    BYTE PercentComplete = 0;
    ULONG DiagnosticNameStringID = 0;
    ULONG SenderResponder = 0;
};
