// Serves Tolva_DiagResult: one instance for each result that the diagnostics manager holds, of finished and
// of running tests.
#pragma once

#include "CDM/src/classes/WomClassHandler.h"

class CTolva_DiagResult final : public CWomClassHandler
{
  public:
    const wchar_t* GetClassName() const noexcept override;
    HRESULT GetObjectAsync(const CParsedObjectPath& path, CWomContext& context,
                           ComPtr<IWbemObjectSink> sink) override;
    HRESULT CreateInstanceEnumAsync(CWomContext& context, ComPtr<IWbemObjectSink> sink) override;
};
