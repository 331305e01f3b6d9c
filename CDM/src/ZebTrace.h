// What shows itself in the trace: the scope of a function, the scope of a lock, a call that has failed.
#pragma once

#include "Common/src/com/CriticalSection.h"

#include <windows.h>

// Whether a call has failed, which is traced. `text` is the whole line, with `hr` as its one argument if it
// takes any. The thread's last error stays as it is.
bool Failed(HRESULT hr, const char* text) noexcept;
// Traces the line of a failure and gives the failure's status back.
HRESULT TraceFailure(HRESULT hr, const char* text) noexcept;

// An entry line when the scope opens, an exit line on every path out of it. Lines are indented by four blanks
// for each traced function that the thread is in.
class CZebTrace
{
  public:
    // `name` is the qualified name, such as "CWomClassObject::CreateClass"; it must outlive the scope.
    explicit CZebTrace(const char* name) noexcept;
    ~CZebTrace();
    CZebTrace(const CZebTrace&) = delete;
    CZebTrace& operator=(const CZebTrace&) = delete;

  private:
    const char* m_name;
};

// Holds a critical section and traces its steps.
class CZebLock
{
  public:
    explicit CZebLock(CCriticalSection& section) noexcept;
    ~CZebLock();
    CZebLock(const CZebLock&) = delete;
    CZebLock& operator=(const CZebLock&) = delete;

  private:
    CCriticalSection& m_section;
};
