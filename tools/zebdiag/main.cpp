// zebdiag: diagnostics of wired Ethernet adapters from the console.
#include "tools/zebdiag/Application.h"
#include "tools/zebdiag/Connection.h"
#include "tools/zebdiag/Interrupt.h"
#include "tools/zebdiag/doctor/AgentAnswer.h"

#include <cstdlib>
#include <cwchar>
#include <objbase.h>

int wmain(int count, wchar_t** values)
{
    using namespace zebdiag;
    CoInitializeEx(nullptr, COINIT_MULTITHREADED);
    if (count == 2 && wcscmp(values[1], kAskAgentArgument) == 0)
        std::_Exit(static_cast<int>(AskAgentHere()));
    InitializeClientSecurity();
    const CInterruptEvents interrupts = InterruptEvents();
    CApplicationSeams seams;
    seams.Connect = Connect;
    seams.Control.Stop = interrupts.Stop;
    seams.Control.Abandon = interrupts.Abandon;
    seams.Control.CatchInterrupts = CatchInterrupts;
    const ExitCode code = RunApplication({values + 1, values + count}, ProcessConsole(), seams);
    CoUninitialize();
    // Not through the runtime's own end: a call that was left to itself may still have a thread of ours in
    // it.
    std::_Exit(static_cast<int>(code));
}
