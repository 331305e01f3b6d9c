// How a command ended, as the process's exit code. The numbers and words are documented: scripts rely on
// them.
#pragma once

namespace zebdiag
{
enum class ExitCode
{
    Passed = 0, // the command did what it was asked; every test that ran has passed
    Failed = 1,
    Stopped = 2,
    CouldNotRun = 3,
    NotFound = 4,
    Busy = 5,
    NotReachable = 6,
    Usage = 7
};

// The word for JSON documents, such as "could_not_run".
const char* ExitCodeName(ExitCode code) noexcept;

// Of two tests of one series, the outcome that the series takes: failed before could not run, busy, stopped
// and passed.
ExitCode Graver(ExitCode a, ExitCode b) noexcept;
} // namespace zebdiag
