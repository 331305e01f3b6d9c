// The command for profiles. It needs no management service.
#include "tools/zebdiag/Commands.h"
#include "tools/zebdiag/Profiles.h"
#include "tools/zebdiag/TextReport.h"
#include "tools/zebdiag/languages/Said.h"

namespace zebdiag
{
ExitCode KeepProfiles(const COptions& options, const std::wstring& file, IConsole& console)
{
    if (file.empty())
        throw CFailure(ExitCode::CouldNotRun,
                       Said(L"There is no folder for the profiles: APPDATA is not set."),
                       Said(L"Set it to the folder of your application data."));
    Profiles profiles = LoadProfiles(file);
    if (!options.Save.empty())
        profiles[options.Save] = {options.Quick, options.Report, options.Coverage};
    else if (!options.Delete.empty())
    {
        ProfileNamed(profiles, options.Delete);
        profiles.erase(options.Delete);
    }
    if (!options.Save.empty() || !options.Delete.empty())
        StoreProfiles(file, profiles);
    console.Out(options.Json ? JsonProfiles(profiles) : RenderProfiles(profiles, console.Width()));
    return ExitCode::Passed;
}
} // namespace zebdiag
