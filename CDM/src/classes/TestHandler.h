// Serves Tolva_DiagTest: one instance for each test of each adapter, and the methods by which a test is run
// and stopped and its results are cleared.
#pragma once

#include "CDM/src/classes/WomClassHandler.h"

class CTolva_DiagTest final : public CWomClassHandler
{
  public:
    const wchar_t* GetClassName() const noexcept override;
    HRESULT GetObjectAsync(const CParsedObjectPath& path, CWomContext& context,
                           ComPtr<IWbemObjectSink> sink) override;
    HRESULT CreateInstanceEnumAsync(CWomContext& context, ComPtr<IWbemObjectSink> sink) override;
    // E_FAIL for a method that is none of the three.
    HRESULT ExecMethodAsync(const CParsedObjectPath& path, const wchar_t* method, CWomContext& context,
                            CWomClassObject& in, CWomClassObject& out, ComPtr<IWbemObjectSink> sink) override;

  private:
    HRESULT RunTest(CWomContext& context, const CParsedObjectPath& path, CWomClassObject& in,
                    CWomClassObject& out);
    HRESULT DiscontinueTest(CWomContext& context, const CParsedObjectPath& path, CWomClassObject& in,
                            CWomClassObject& out);
    HRESULT ClearResults(CWomContext& context, const CParsedObjectPath& path, CWomClassObject& in,
                         CWomClassObject& out);
};
