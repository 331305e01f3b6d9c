// The points of an examination, each a function of its own. They are called in this order; one that cannot
// tell because of what an earlier one has found says so. A failed request that they let through makes the
// point wrong.
#pragma once

#include "tools/zebdiag/doctor/Examination.h"

namespace zebdiag
{
CFinding CheckService(CExamination& exam);
CFinding CheckNamespace(CExamination& exam);
CFinding CheckBaseClasses(CExamination& exam);
CFinding CheckSchema(CExamination& exam);

CFinding CheckRegistration(CExamination& exam);
CFinding CheckFiles(CExamination& exam);
CFinding CheckIdentity(CExamination& exam);
CFinding CheckConfiguration(CExamination& exam);
CFinding CheckAgent(CExamination& exam);

CFinding CheckDataFolder(CExamination& exam);
CFinding CheckTrace(CExamination& exam);

CFinding CheckAnswer(CExamination& exam);
CFinding CheckTexts(CExamination& exam);
CFinding CheckAdapters(CExamination& exam);

// Why the agent's answer lets no provider start; nothing if it does. Takes some seconds at the most.
std::optional<CFinding> FaultOfAgentsAnswer(const CExamination& exam);

// What somebody does to read the provider's trace.
std::wstring HowToReadTrace(const IMachine& machine);
} // namespace zebdiag
