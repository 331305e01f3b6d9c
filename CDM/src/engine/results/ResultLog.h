// The result log: a text file for support staff to which every run that passed or was stopped adds a record.
// Nothing reads it back. Any thread may append.
#pragma once

#include "CDM/src/engine/DiagRecords.h"
#include "Common/src/com/CriticalSection.h"

#include <cstdio>
#include <memory>
#include <string>

struct CResultLogSettings
{
    std::wstring Path;
    bool Enable = false;
    bool Append = true; // or every record replaces the file
    DWORD MaxFileSize = 65536;
};

class CResultLog
{
  public:
    // From the registry. wmi::Failed for a flag that is neither 0 nor 1.
    HRESULT ReadConfiguration(const std::string& installDir);
    void Configure(CResultLogSettings settings) { m_settings = std::move(settings); }
    bool Enabled() const noexcept { return m_settings.Enable; }

    // E_OUTOFMEMORY for a record that would take the file past its limit; other failures if the file
    // cannot be opened or written. Throws std::bad_alloc.
    HRESULT Append(const CResultData& result);

  private:
    struct CloseFile
    {
        void operator()(std::FILE* file) const noexcept { std::fclose(file); }
    };
    using CFile = std::unique_ptr<std::FILE, CloseFile>;

    CResultLogSettings m_settings;
    CCriticalSection m_lock;
    CFile m_full; // a log that was found full stays open; the one found last
};
