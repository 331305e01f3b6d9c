#include "tools/zebdiag/OptionRules.h"

#include "tools/zebdiag/CommandTable.h"

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

constexpr CRuleRow kRules[] = {
    {kRun | kClear, [](const COptions& o) { return o.Test.empty() && !o.All; },
     L"Name a test with --test, or take all with --all."},
    {kRun | kClear, [](const COptions& o) { return !o.Test.empty() && o.All; },
     L"--test and --all do not go together."},
    {kSet, [](const COptions& o) { return o.Test.empty(); }, L"Name the test with --test."},
    {kSet, [](const COptions& o) { return !HasSettings(o); },
     L"Give at least one of --coverage, --quick and --report."},
    {kRun, [](const COptions& o) { return !o.Sender.Peer.empty() && o.Test.empty(); },
     L"--peer is for the sender alone: name it with --test sender."},
    {kRun,
     [](const COptions& o)
     { return o.Sender.Peer.empty() && (o.Sender.Port || o.Sender.Rate || o.Sender.Size || o.Sender.Dscp); },
     L"--port, --rate, --size and --dscp need --peer."},
    {kProfiles, [](const COptions& o) { return !o.Save.empty() && !o.Delete.empty(); },
     L"--save and --delete do not go together."},
    {kProfiles, [](const COptions& o) { return !o.Save.empty() && !HasSettings(o); },
     L"Give at least one of --coverage, --quick and --report."},
    {kProfiles, [](const COptions& o) { return o.Save.empty() && HasSettings(o); },
     L"--coverage, --quick and --report need --save."},
    {kRemote, [](const COptions& o) { return !o.Target.User.empty() && o.Target.IsLocal(); },
     L"--user is for other computers: name one with --computer."},
};
} // namespace

std::wstring FaultOf(const COptions& options)
{
    for (const CRuleRow& rule : kRules)
        if ((rule.Commands & Only(options.Command)) && rule.IsBroken(options))
            return rule.Text;
    return {};
}
} // namespace zebdiag
