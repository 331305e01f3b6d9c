// Serves Tolva_DiagSetting: one instance for the setting of each test. The only class that clients can write.
#pragma once

#include "CDM/src/classes/WomClassHandler.h"

class CTolva_DiagSetting final : public CWomClassHandler
{
  public:
    const wchar_t* GetClassName() const noexcept override;
    HRESULT GetObjectAsync(const CParsedObjectPath& path, CWomContext& context,
                           ComPtr<IWbemObjectSink> sink) override;
    HRESULT CreateInstanceEnumAsync(CWomContext& context, ComPtr<IWbemObjectSink> sink) override;
    HRESULT PutInstanceAsync(CWomClassObject& instance, CWomContext& context, CBstr& path,
                             ComPtr<IWbemObjectSink> sink) override;

  private:
    HRESULT UpdateInstanceAsync(CWomClassObject& instance);
};
