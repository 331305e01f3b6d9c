#include "CDM/src/engine/results/ResultLog.h"

#include "CDM/src/ZebDebug.h"
#include "CDM/src/ZebHelpers.h"
#include "CDM/src/ZebRegistry.h"
#include "CDM/src/engine/results/CimDateTime.h"
#include "Common/src/com/Text.h"
#include "Common/src/com/WmiStatus.h"

#include <cstdarg>
#include <cstdlib>
#include <cwchar>
#include <io.h>

namespace
{
constexpr DWORD kRegistryText = 4096;

void AddLine(std::wstring& record, const wchar_t* format, ...)
{
    va_list arguments;
    va_start(arguments, format);
    va_list again;
    va_copy(again, arguments);
    const int length = _vscwprintf(format, arguments);
    va_end(arguments);
    if (length > 0)
    {
        const size_t before = record.size();
        record.resize(before + length + 1); // the formatter writes a NUL behind the line
        _vsnwprintf(record.data() + before, length + 1, format, again);
        record.resize(before + length);
    }
    va_end(again);
}

void AddTime(std::wstring& record, const wchar_t* format, const std::optional<SYSTEMTIME>& time)
{
    CCoTaskMem<wchar_t> text;
    ConvertSystemTimeToString(time ? &*time : nullptr, text);
    AddLine(record, format, text ? text.Get() : L"");
}

std::wstring Record(const CResultData& result)
{
    std::wstring record;
    AddLine(record, L"ResultID=%s\n", result.ResultID.Text());
    AddLine(record, L"DiagnosticCreationClassName=%s\n", result.DiagnosticCreationClassName.Text());
    AddLine(record, L"ExecutionID=%s\n", result.ExecutionID.Text());
    record += result.HaltOnError ? L"HaltOnError=TRUE\n" : L"HaltOnError=FALSE\n";
    record += result.QuickMode ? L"QuickMode=TRUE\n" : L"QuickMode=FALSE\n";
    record += result.ReportSoftErrors ? L"ReportSoftErrors=TRUE\n" : L"ReportSoftErrors=FALSE\n";
    record += result.ReportStatusMessages ? L"ReportStatusMessages=TRUE\n" : L"ReportStatusMessages=FALSE\n";
    record += result.IsPackage ? L"IsPackage=TRUE\n" : L"IsPackage=FALSE\n";
    AddLine(record, L"TestWarningLevel=%d\n", result.TestWarningLevel);
    AddLine(record, L"PercentOfTestCoverage=%d\n", result.PercentOfTestCoverage);
    AddTime(record, L"TestStartTime=%s\n", result.TestStartTime);
    AddTime(record, L"TimeStamp=%s\n", result.TimeStamp);
    AddTime(record, L"TestCompletionTime=%s\n", result.TestCompletionTime);
    AddLine(record, L"TestState=%d\n", result.TestState);
    AddLine(record, L"OtherStateDescriptionResourceId=%d\n", result.OtherStateDescriptionResourceId);
    AddLine(record, L"EstimatedTimeOfPerforming=%d\n", result.EstimatedTimeOfPerforming);
    AddLine(record, L"PercentComplete=%d\n", result.PercentComplete);
    record += L"Array of String IDs:\n";
    for (ULONG i = 0; i < result.MessageCount; ++i)
        AddLine(record, L"String IDs no %d = %lu\n", i, result.StringIDs[i]);
    record += L"Array of Test Messages:\n";
    for (ULONG i = 0; i < result.MessageCount; ++i)
        AddLine(record, L"Test Message no %d = %x\n", i, result.TestMessages[i]);
    AddLine(record, L"Diagnostic Name String ID = %lu\n", result.DiagnosticNameStringID);
    return record;
}

HRESULT LastFailure() noexcept
{
    const HRESULT hr = HRESULT_FROM_WIN32(_doserrno);
    return FAILED(hr) ? hr : E_FAIL;
}
} // namespace

HRESULT CResultLog::ReadConfiguration(const std::string& installDir)
{
    CResultLogSettings settings;
    DWORD enable = settings.Enable;
    ReadRegistryNumber(kZebDiagKey, "Enable", enable);
    if (enable > 1)
    {
        ZebDebug().Write("CDiagMgr::Initialize:\"Enable\" should be a BOOLEAN!!");
        return wmi::Failed;
    }
    DWORD append = settings.Append;
    ReadRegistryNumber(kZebDiagKey, "FileAppend", append);
    if (append > 1)
    {
        ZebDebug().Write("CDiagMgr::Initialize:\"Append\" should be a BOOLEAN!!"); // sic
        return wmi::Failed;
    }
    settings.Enable = enable != 0;
    settings.Append = append != 0;
    ReadRegistryNumber(kZebDiagKey, "MaxFileSize", settings.MaxFileSize);
    char name[kRegistryText];
    const bool named = ReadRegistryString(kZebDiagKey, "LogFileName", name, sizeof(name));
    settings.Path = WidenText(installDir + (named ? name : "ZebDiag.log"));
    Configure(std::move(settings));
    return S_OK;
}

HRESULT CResultLog::Append(const CResultData& result)
{
    const std::wstring record = Record(result);

    // One record at a time: records of two runs that end together stay apart.
    const CLockScope held(m_lock);
    CFile file(_wfopen(m_settings.Path.c_str(), m_settings.Append ? L"a" : L"w"));
    if (!file)
    {
        const HRESULT hr = LastFailure();
        ZebDebug().Write("CDiagMgr::LogResults: the log cannot be opened, hr = <%x>", hr);
        return hr;
    }
    const LONGLONG size = _filelengthi64(_fileno(file.get()));
    if (static_cast<LONGLONG>(record.size()) + size > m_settings.MaxFileSize)
    {
        ZebDebug().Write("Result cannot be logged. Log file size exceeded!!");
        m_full = std::move(file);
        return E_OUTOFMEMORY;
    }
    // The runtime's own wide output ends at the first character that the code page lacks.
    const std::string text =
        NarrowText(record) + "**********************************************************************\n";
    const bool written = std::fwrite(text.data(), 1, text.size(), file.get()) == text.size();
    if (std::fclose(file.release()) != 0 || !written)
    {
        const HRESULT hr = LastFailure();
        ZebDebug().Write("CDiagMgr::LogResults: the log cannot be written, hr = <%x>", hr);
        return hr;
    }
    return S_OK;
}
