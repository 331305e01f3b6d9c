// The debug trace: a text file into which every part of the process writes time-stamped lines. Each process
// begins the file anew, unless the registry asks for a file per process. Nothing reads it back. No operation
// reports a failure to its caller, and any thread may write at any time: a line is never torn.
#pragma once

#include "Common/src/com/CriticalSection.h"

#include <atomic>
#include <cstdarg>
#include <cstdio>
#include <string>
#include <windows.h>

class CZebDebug
{
  public:
    CZebDebug() noexcept = default;
    ~CZebDebug();
    CZebDebug(const CZebDebug&) = delete;
    CZebDebug& operator=(const CZebDebug&) = delete;

    // Opens the log, once. The registry decides on the folder and on one file per process. `level`: 0 writes
    // nothing, 1 error lines only, 2 and above everything. `flag` is kept and not consulted. `maxSize` in
    // bytes, 0 for no limit; a full file stops growing. Gives 0, or -1 if the log stays closed.
    long Configure(const char* title, const char* fileName, long level, unsigned long flag, bool append,
                   DWORD maxSize) noexcept;

    // One trace line. A wide text is formatted wide and then converted to the ANSI code page.
    void Write(const char* format, ...) noexcept;
    void Write(const wchar_t* format, ...) noexcept;
    // A text of any length, cut into trace lines of at most 974 characters.
    void WriteLong(const char* text) noexcept;
    // One error line, which names the place in the sources. Written at level 1 too.
    void Error(const char* sourceFile, long line, const char* format, ...) noexcept;
    // The system's text for an error code, or for the thread's last error if the code is 0.
    void SystemError(DWORD code) noexcept;

    long Level() const noexcept { return m_level; }
    // Every later write does nothing; the log may be configured anew.
    void Close() noexcept;

  private:
    static constexpr int kLineBytes = 1152;
    static constexpr int kMessageBytes = 1024;
    static constexpr int kMessageMax = kMessageBytes - 1;

    bool Writes(long fromLevel) const noexcept { return m_configured && m_level >= fromLevel; }
    bool IsFull() const noexcept;
    template <class Printer>
    void WriteLine(Printer&& print) noexcept;
    int PrintWide(char* message, const wchar_t* format, va_list arguments) noexcept;

    // Guards the file and the buffers; recursive.
    CCriticalSection m_lock;
    std::atomic<bool> m_configured{false};
    std::atomic<long> m_level{0};
    std::FILE* m_file = nullptr;
    std::string m_title;
    unsigned long m_flag = 0;
    DWORD m_maxSize = 0;
    // Fixed buffers, so that a line costs no allocation.
    char m_line[kLineBytes];
    char m_message[kMessageBytes];
    wchar_t m_wide[kMessageBytes];
};

// The path of the log for a file name: the registry can ask for one file per process and names the folder
// that holds "DebugLog". Throws std::bad_alloc only.
std::string ZebDebugPath(const std::string& fileName);

// The one process-wide trace.
CZebDebug& ZebDebug() noexcept;

// Every source file that can trace holds one of these. So the trace is there before the file's own statics
// are constructed and still there when they are destroyed.
class CZebDebugLifetime
{
  public:
    CZebDebugLifetime() noexcept;
    ~CZebDebugLifetime();
};
static const CZebDebugLifetime s_zebDebugLifetime;
