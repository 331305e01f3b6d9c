// The boundary to the adapter agent's diagnostics interface. An agent is foreign code: whatever a call throws
// becomes a code here, what it returns is checked before it is used, and a failed call's out-values are not
// looked at. Free-threaded; shared by the manager and the runs that are in progress.
#pragma once

#include "Common/src/VormArray.h"
#include "Common/src/com/ComPtr.h"
#include "agent/Vorl.h"

#include <memory>

class CDiagAgent
{
  public:
    // Asks the root for the diagnostics interface; the reference is the object's own.
    static HRESULT Query(IVormRoot* root, std::shared_ptr<CDiagAgent>& agent);
    // Takes a reference over.
    explicit CDiagAgent(IVormDiag* diagnostics) noexcept;
    ~CDiagAgent();
    CDiagAgent(const CDiagAgent&) = delete;
    CDiagAgent& operator=(const CDiagAgent&) = delete;

    // How many objects there are. Each thread that is in the agent holds one: while there are any, the
    // agent's code must stay.
    static long Living() noexcept;

    HRESULT EnumAdapters(CVormArray<BSTR>& adapterKeys);
    HRESULT EnumDiagTests(BSTR adapterKey, CVormArray<VormTestDescriptor>& tests);
    HRESULT RunDiagTest(BSTR adapterKey, ULONG testId) noexcept;
    HRESULT StopTest(BSTR adapterKey, ULONG testId) noexcept;
    HRESULT GetDiagTestStatistics(BSTR adapterKey, ULONG testId, VormTestStatistics& statistics) noexcept;

  private:
    IVormDiag* const m_diagnostics;
};
