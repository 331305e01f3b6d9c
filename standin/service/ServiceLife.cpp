#include "standin/service/ServiceLife.h"

namespace standin
{
CServiceLife::CServiceLife()
    : m_lastChange(GetTickCount64()), m_changed(CreateEventW(nullptr, FALSE, FALSE, nullptr))
{
}

void CServiceLife::Left() noexcept
{
    m_lastChange = GetTickCount64();
    --m_uses;
    SetEvent(m_changed.Get());
}
} // namespace standin
