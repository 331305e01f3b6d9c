#include "tools/zebdiag/doctor/StartFault.h"

#include "tools/zebdiag/doctor/Checks.h"

namespace zebdiag
{
CFailure WithReason(const CFailure& failure, const CTarget& target, const IMachine& machine)
{
    CFailure reasoned = failure;
    if (!target.IsLocal() || !(failure.NoProvider || failure.TraceTells))
        return reasoned;
    reasoned.NextStep = HowToReadTrace(machine);
    if (!failure.NoProvider)
        return reasoned;
    CExamination exam = {.Target = target, .Connect = {}, .Machine = &machine, .Names = {}, .Now = {}};
    const auto tell = [&](const CFinding& finding)
    {
        reasoned.Cause += L" " + finding.Text;
        reasoned.NextStep = finding.NextStep;
        return reasoned;
    };
    for (const auto check : {CheckRegistration, CheckConfiguration, CheckAgent})
        if (const CFinding finding = check(exam); finding.State == PointState::Wrong)
            return tell(finding);
    if (const auto fault = FaultOfAgentsAnswer(exam))
        return tell(*fault);
    return reasoned;
}
} // namespace zebdiag
