// The command that writes a report.
#include "Common/src/com/Text.h"
#include "tools/zebdiag/Commands.h"
#include "tools/zebdiag/WholeFile.h"
#include "tools/zebdiag/Wrap.h"
#include "tools/zebdiag/languages/Said.h"
#include "tools/zebdiag/report/GatherReport.h"
#include "tools/zebdiag/report/HtmlReport.h"

namespace zebdiag
{
namespace
{
void Write(const CCommandContext& context, const std::wstring& file, const std::wstring& text)
{
    WriteWholeFile(file, Utf8Text(text));
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
