// The runs of the diagnostics manager, each from a client's request to its completed result, and the stops of
// them. A run can outlive the manager: whoever holds this object for it holds catalogue and results, too.
#pragma once

#include "CDM/src/engine/catalogue/Catalogue.h"
#include "CDM/src/engine/results/Results.h"
#include "CDM/src/engine/runs/ActiveRuns.h"

class IRunEnvironment;

class CRuns
{
  public:
    // All must outlive the object.
    CRuns(const CCatalogue& catalogue, CResults& results, IRunEnvironment& environment) noexcept
        : m_catalogue(catalogue), m_results(results), m_environment(environment)
    {
    }

    // These as the operations of CDiagMgr.
    HRESULT RunTest(BSTR testKey, CBstr& resultKey, ULONG mode);
    HRESULT StopTest(BSTR testKey);
    HRESULT SignalStop(BSTR testKey);

    // Fails if a run goes on all the same.
    HRESULT EndAll();

  private:
    HRESULT Run(BSTR testKey, BSTR resultKey, ULONG mode);
    HRESULT BeginResult(BSTR testKey, CDiagResult& result);

    const CCatalogue& m_catalogue;
    CResults& m_results;
    IRunEnvironment& m_environment;
    CActiveRuns m_active;
};
