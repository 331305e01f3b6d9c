// Processes as a test sees them: programs that it runs to their end with their output captured, and the
// server processes that COM starts and that are expected to end by themselves.
#pragma once

#include "Common/src/com/Owned.h"

#include <string>
#include <vector>

struct CRunResult
{
    DWORD ExitCode = 0;
    std::string Output; // standard output and, where asked for, standard error, in the order written
};

enum class Errors
{
    WithOutput,
    Dropped
};

// Runs a command line to its end. Throws std::runtime_error where it cannot be started. Ends the program and
// throws where it runs longer than two minutes, which no program of a test does.
CRunResult RunProgram(const std::wstring& commandLine, Errors errors = Errors::WithOutput);

// A program that runs beside the test. Ended by the destructor where it still runs. Waiting for longer than
// two minutes throws std::runtime_error.
class CRunningProgram
{
  public:
    explicit CRunningProgram(const std::wstring& commandLine, Errors errors = Errors::WithOutput);
    ~CRunningProgram();
    CRunningProgram(const CRunningProgram&) = delete;
    CRunningProgram& operator=(const CRunningProgram&) = delete;

    DWORD Id() const noexcept { return m_id; }
    // Waits for the end and gives exit code and output; for one call. A JSON document is kept, see
    // Documents.h.
    CRunResult Finish();
    // Reads output until a line contains the text; false where the program ended without it.
    bool WaitForOutput(const std::string& text);

  private:
    bool ReadMore(ULONGLONG deadline);

    const std::wstring m_commandLine;
    CHandle m_process;
    CHandle m_output;
    DWORD m_id = 0;
    std::string m_text;
};

// The folder of this test program, where everything that was built stands; ends with a backslash.
std::wstring BinFolder();

// The ids of the running processes of an image, such as L"Drevok.EXE" (case does not matter).
std::vector<DWORD> ProcessesOf(const std::wstring& image);

// The one process of an image that runs; null where there is none or more than one. As long as the handle is
// open, no other process gets the number.
CHandle OpenProcessOf(const std::wstring& image);

// Waits until no process of the image runs any more; false after a minute.
bool WaitForNoProcess(const std::wstring& image);

// Ends a process at once, without any clean-up in it. For a COM server, KillServers is needed.
void KillProcess(DWORD id);

// Makes COM forget who serves: Wine's service for it would go on sending clients to servers that were killed.
void RestartComService();

// For a test program that will kill servers and is a client of COM itself; to be called before it is, while
// nothing that uses COM runs. Wine's service for COM numbers its clients. A client that outlives the service
// comes back with its old number, and is turned away for as long as the new service has not given out so
// many: only the first number can be relied on.
void BecomeFirstClientOfCom();

// Ends all processes of the images at once, one image after the other, and makes COM forget that they served.
void KillServers(const std::vector<std::wstring>& images);
