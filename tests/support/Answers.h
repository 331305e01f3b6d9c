// What many threads were answered, for checks when they are done: the test framework's own are for one
// thread.
#pragma once

#include <map>
#include <mutex>
#include <set>
#include <string>
#include <windows.h>

class CAnswers
{
  public:
    // A status or an exit code that an operation gave.
    void Add(const char* operation, HRESULT status)
    {
        const std::lock_guard lock(m_mutex);
        m_answers[operation].insert(status);
    }
    // Something that no client may find.
    void AddFault(const std::string& what)
    {
        const std::lock_guard lock(m_mutex);
        m_faults.insert(what);
    }

    // For when the threads are done.
    const std::map<std::string, std::set<HRESULT>>& All() const { return m_answers; }
    const std::set<std::string>& Faults() const { return m_faults; }

  private:
    std::mutex m_mutex;
    std::map<std::string, std::set<HRESULT>> m_answers;
    std::set<std::string> m_faults;
};
