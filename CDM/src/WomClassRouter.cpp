#include "CDM/src/WomClassRouter.h"

#include "CDM/src/WomClassHandler.h"
#include "Common/src/com/Text.h"

void CWomClassRouter::AddClass(CWomClassHandler* handler)
{
    m_handlers.emplace(UpperCaseAnsi(handler->GetClassName()), handler);
}

CWomClassHandler* CWomClassRouter::FindClass(const wchar_t* className) const
{
    if (!className)
        return nullptr;
    const auto found = m_handlers.find(UpperCaseAnsi(className));
    return found == m_handlers.end() ? nullptr : found->second;
}
