#include "tools/zebdiag/Interrupt.h"

#include "Common/src/com/Owned.h"

#include <new>

namespace zebdiag
{
namespace
{
struct COwnedEvents
{
    CHandle Stop{CreateEventW(nullptr, TRUE, FALSE, nullptr)};
    CHandle Abandon{CreateEventW(nullptr, TRUE, FALSE, nullptr)};
};

const COwnedEvents& Events()
{
    // Never destroyed: the handler's thread may come at any time.
    static const COwnedEvents* const events = new COwnedEvents;
    return *events;
}

BOOL WINAPI OnInterrupt(DWORD type)
{
    if (type != CTRL_C_EVENT && type != CTRL_BREAK_EVENT)
        return FALSE;
    const bool again = WaitForSingleObject(Events().Stop.Get(), 0) == WAIT_OBJECT_0;
    SetEvent(again ? Events().Abandon.Get() : Events().Stop.Get());
    return TRUE;
}
} // namespace

CInterruptEvents InterruptEvents()
{
    const COwnedEvents& events = Events();
    if (!events.Stop || !events.Abandon)
        throw std::bad_alloc();
    return {events.Stop.Get(), events.Abandon.Get()};
}

void CatchInterrupts() noexcept
{
    SetConsoleCtrlHandler(OnInterrupt, TRUE);
}
} // namespace zebdiag
