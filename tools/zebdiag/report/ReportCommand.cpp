// The command that writes a report.
#include "Common/src/com/Text.h"
#include "tools/zebdiag/Commands.h"
#include "tools/zebdiag/Wrap.h"
#include "tools/zebdiag/languages/Said.h"
#include "tools/zebdiag/report/GatherReport.h"
#include "tools/zebdiag/report/HtmlReport.h"
#include "tools/zebdiag/report/WholeFile.h"

#include <algorithm>

namespace zebdiag
{
namespace
{
struct CNextStepRow
{
    DWORD Error;
    const wchar_t* Text;
};
constexpr const wchar_t* kNotTaken = Marked(
    L"See that the name is not that of a folder, that no other program has the file open, and that you may "
    L"change it.");
constexpr CNextStepRow kNextSteps[] = {
    {ERROR_PATH_NOT_FOUND, Marked(L"Make the folder, or name a file in another one.")},
    {ERROR_ACCESS_DENIED, kNotTaken},
    {ERROR_SHARING_VIOLATION, kNotTaken},
    {ERROR_WRITE_PROTECT, Marked(L"The disk is write-protected: name a file on another one.")},
    {ERROR_DISK_FULL, Marked(L"The disk is full: make room on it, or name a file on another one.")},
    {ERROR_INVALID_NAME, Marked(L"Name a file as the system allows it, without < > : \" | ? and *.")},
};
constexpr const wchar_t* kOtherStep =
    Marked(L"See whether the disk can be written to, or name another file.");

void Write(const CCommandContext& context, const std::wstring& file, const std::wstring& text)
{
    const DWORD error = WriteWholeFile(file, Utf8Text(text));
    if (error != ERROR_SUCCESS)
    {
        const auto row = std::ranges::find(kNextSteps, error, &CNextStepRow::Error);
        throw CFailure(ExitCode::CouldNotRun, Said(L"The report was not written to {1}.", {file}),
                       Said(row == std::end(kNextSteps) ? kOtherStep : row->Text), HRESULT_FROM_WIN32(error));
    }
    const std::wstring told = Said(L"The report is in {1}.", {file});
    // Beside a document, only to somebody who watches.
    if (!context.Options.Json)
        context.Say(told);
    else if (context.Console.ErrIsTerminal())
        context.Console.Err(Paragraph(told, context.Console.ErrWidth()));
}
} // namespace

ExitCode WriteReport(const CCommandContext& context)
{
    const CReport report = GatherReport(context);
    if (!context.Options.Html.empty())
        Write(context, context.Options.Html, HtmlReport(report));
    if (!context.Options.JsonFile.empty())
        Write(context, context.Options.JsonFile, JsonOfReport(report));
    if (context.Options.Json)
        context.Console.Out(JsonOfReport(report));
    return ExitCode::Passed;
}
} // namespace zebdiag
