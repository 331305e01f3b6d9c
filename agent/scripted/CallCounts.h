// How often each call was made: in all, per adapter and per test. Kept in a JSON file as well where the
// script names one, so that another process can follow. Free-threaded.
#pragma once

#include "agent/scripted/Script.h"

#include <map>
#include <mutex>
#include <string>

class CCallCounts
{
  public:
    // `file` may be empty. Writes the file at once, so that it exists from the start.
    explicit CCallCounts(std::wstring file);

    // The number of one call in each scope, counted from 1; 0 if the call has no such scope.
    struct CNumbers
    {
        ULONG InAll = 0;
        ULONG OfAdapter = 0;
        ULONG OfTest = 0;
    };
    // Counts a call. An empty key: it is about no adapter. No test: it is about no test.
    CNumbers Count(Call call, const std::wstring& adapterKey, std::optional<ULONG> testId);

  private:
    using CNumbersOfCalls = std::map<Call, ULONG>;
    void Publish() const;

    std::wstring m_file;
    std::mutex m_mutex;
    CNumbersOfCalls m_inAll;
    std::map<std::string, CNumbersOfCalls> m_ofAdapter;
    std::map<std::string, CNumbersOfCalls> m_ofTest;
};
