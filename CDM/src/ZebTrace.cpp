#include "CDM/src/ZebTrace.h"

#include "CDM/src/ZebDebug.h"

namespace
{
constexpr int kIndent = 4;

// Kept up at every level, so that lines stand right whenever they are let through.
thread_local volatile LONG t_depth = 0;
} // namespace

CZebTrace::CZebTrace(const char* name) noexcept : m_name(name)
{
    ZebDebug().Write("%*s { --> %s", static_cast<int>(t_depth) * kIndent, "", m_name);
    InterlockedIncrement(&t_depth);
}

CZebTrace::~CZebTrace()
{
    const LONG depth = InterlockedDecrement(&t_depth);
    ZebDebug().Write("%*s } <-- %s", static_cast<int>(depth) * kIndent, "", m_name);
}
