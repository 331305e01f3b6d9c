#include "tools/zebdiag/Application.h"

#include "Common/src/com/Text.h"
#include "tools/zebdiag/CommandLine.h"
#include "tools/zebdiag/LocaleName.h"
#include "tools/zebdiag/Wrap.h"
#include "tools/zebdiag/doctor/Doctor.h"
#include "tools/zebdiag/doctor/StartFault.h"
#include "tools/zebdiag/languages/Said.h"
#include "tools/zebdiag/metrics/MetricsCommand.h"

namespace zebdiag
{
namespace
{
constexpr unsigned long kEnglish = 0x409;

std::wstring InWords(const CFailure& failure)
{
    std::wstring text = L"zebdiag: " + failure.Cause;
    if (!failure.Detail.empty())
        text += L"\n" + Said(L"The provider says: {1}", {failure.Detail});
    if (!failure.NextStep.empty())
        text += L"\n" + failure.NextStep;
    if (failure.Status != S_OK)
        text += L"\n" + Said(L"(Status {1}.)", {StatusText(failure.Status)});
    return text;
}

void Report(const CFailure& failure, const COptions& options, IConsole& console)
{
    // A wrong command line has no document, even if only the provider's tests show that it is wrong.
    const bool hasDocument = options.Json && failure.Code != ExitCode::Usage;
    if (hasDocument)
        console.Out(JsonFailure(options.Command, failure));
    if (!hasDocument || console.ErrIsTerminal())
        console.Err(Paragraph(InWords(failure), console.ErrWidth()));
}

ExitCode Carry(const COptions& options, IConsole& console, const CApplicationSeams& seams)
{
    if (options.Command == Command::Profiles)
        return KeepProfiles(options, seams.Surroundings.ProfileFile, console);
    if (options.Command == Command::Metrics)
        return WriteMetrics(options, {seams.Connect, seams.Surroundings.Names, seams.Control.Now}, console);
    // Before a password is asked for.
    if (!options.Sender.Peer.empty() && !options.Target.IsLocal())
        throw CannotSet(
            options.Sender,
            Said(L"The registry of {1} is out of reach from here, so --peer cannot set the peer there.",
                 {options.Target.Computer}));
    std::wstring password;
    if (!options.Target.User.empty())
        password = console.AskPassword(Said(L"Password of {1}: ", {options.Target.User}));
    const auto connect = [&]
    {
        CWmiSession session = seams.Connect(options.Target, password);
        SecureZeroMemory(password.data(), password.size() * sizeof(wchar_t));
        return session;
    };
    if (options.Command == Command::Doctor)
    {
        CExamination exam = {.Target = options.Target,
                             .Connect = connect,
                             .Machine = options.Target.IsLocal() ? seams.Machine : nullptr,
                             .Names = seams.Surroundings.Names,
                             .Now = seams.Control.Now};
        return RunDoctor(options, exam, console);
    }
    const CWmiSession session = connect();
    return Execute({options, session, console, seams.Control, seams.Surroundings});
}

ExitCode Obey(const std::vector<std::wstring>& arguments, IConsole& console, const CApplicationSeams& seams)
{
    // Programs that read documents look for the same words everywhere.
    const CFirstLook look = FirstLookAt(arguments);
    SpeakLanguageOf(look.Json
                        ? kEnglish
                        : NumberOfLocale(CallerLocale(look.Locale.empty() ? seams.Locale : look.Locale)));

    const CCommandLine line = ParseCommandLine(arguments, console.Width(), console.ErrWidth());
    if (!line.Options)
    {
        line.Code == ExitCode::Passed ? console.Out(line.Text) : console.Err(line.Text);
        return line.Code;
    }
    try
    {
        return Carry(*line.Options, console, seams);
    }
    catch (const CFailure& failure)
    {
        Report(WithReason(failure, line.Options->Target, *seams.Machine), *line.Options, console);
        return failure.Code;
    }
    catch (const std::exception& error)
    {
        const CFailure failure(ExitCode::CouldNotRun,
                               Said(L"The program cannot go on: {1}.", {WidenText(error.what())}),
                               Said(L"Close other programs and try again."));
        Report(failure, *line.Options, console);
        return failure.Code;
    }
}

// There is no document for this: whoever reads documents gets a part of one already.
ExitCode TellOfLoss(ExitCode code, IConsole& console)
{
    const CFailure failure(ExitCode::CouldNotRun, Said(L"The output could not be written completely."),
                           Said(L"See whether the disk that it goes to is full."),
                           HRESULT_FROM_WIN32(console.OutError()));
    console.Err(Paragraph(InWords(failure), console.ErrWidth()));
    return code == ExitCode::Passed ? failure.Code : code;
}
} // namespace

ExitCode RunApplication(const std::vector<std::wstring>& arguments, IConsole& console,
                        const CApplicationSeams& seams)
{
    const ExitCode code = Obey(arguments, console, seams);
    return console.OutError() == ERROR_SUCCESS ? code : TellOfLoss(code, console);
}
} // namespace zebdiag
