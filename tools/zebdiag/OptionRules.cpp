#include "tools/zebdiag/OptionRules.h"

#include "tools/zebdiag/CommandTable.h"
#include "tools/zebdiag/languages/Said.h"

#include <windows.h>

namespace zebdiag
{
namespace
{
struct CRuleRow
{
    CommandSet Commands;
    bool (*IsBroken)(const COptions&);
    const wchar_t* Text;
};

bool HasSettings(const COptions& o)
{
    return o.Coverage || o.Quick || o.Report;
}

// The system's names of files are the same in any case.
bool IsSameFile(const std::wstring& a, const std::wstring& b)
{
    return CompareStringOrdinal(a.c_str(), -1, b.c_str(), -1, TRUE) == CSTR_EQUAL;
}

constexpr CRuleRow kRules[] = {
    {kRun | kClear, [](const COptions& o) { return o.Test.empty() && !o.All; },
     Marked(L"Name a test with --test, or take all with --all.")},
    {kRun | kClear, [](const COptions& o) { return !o.Test.empty() && o.All; },
     Marked(L"--test and --all do not go together.")},
    {kSet, [](const COptions& o) { return o.Test.empty(); }, Marked(L"Name the test with --test.")},
    {kSet, [](const COptions& o) { return !HasSettings(o); },
     Marked(L"Give at least one of --coverage, --quick and --report.")},
    {kRun, [](const COptions& o) { return !o.Sender.Peer.empty() && o.Test.empty(); },
     Marked(L"--peer is for the sender alone: name it with --test sender.")},
    {kRun,
     [](const COptions& o)
     { return o.Sender.Peer.empty() && (o.Sender.Port || o.Sender.Rate || o.Sender.Size || o.Sender.Dscp); },
     Marked(L"--port, --rate, --size and --dscp need --peer.")},
    {kReport, [](const COptions& o) { return o.Html.empty() && o.JsonFile.empty() && !o.Json; },
     Marked(L"Name a file for the report with --html, or take --json.")},
    {kReport, [](const COptions& o) { return !o.Html.empty() && IsSameFile(o.Html, o.JsonFile); },
     Marked(L"--html and --json need a file each.")},
    {kProfiles, [](const COptions& o) { return !o.Save.empty() && !o.Delete.empty(); },
     Marked(L"--save and --delete do not go together.")},
    {kProfiles, [](const COptions& o) { return !o.Save.empty() && !HasSettings(o); },
     Marked(L"Give at least one of --coverage, --quick and --report.")},
    {kProfiles, [](const COptions& o) { return o.Save.empty() && HasSettings(o); },
     Marked(L"--coverage, --quick and --report need --save.")},
    {kRemote, [](const COptions& o) { return !o.Target.User.empty() && o.Target.IsLocal(); },
     Marked(L"--user is for other computers: name one with --computer.")},
};
} // namespace

std::wstring FaultOf(const COptions& options)
{
    for (const CRuleRow& rule : kRules)
        if ((rule.Commands & Only(options.Command)) && rule.IsBroken(options))
            return Said(rule.Text);
    return {};
}
} // namespace zebdiag
