// The trace of one function: an entry line when the scope opens, an exit line on every path out of it. Lines
// are indented by four blanks for each traced function that the thread is in.
#pragma once

#include <windows.h>

// Whether a call has failed, which is traced. `text` is the whole line, with `hr` as its one argument if it
// takes any. The thread's last error stays as it is.
bool Failed(HRESULT hr, const char* text) noexcept;

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
