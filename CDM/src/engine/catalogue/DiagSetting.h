// The parameters that govern the next run of one test.
#pragma once

#include "CDM/src/engine/DiagObject.h"
#include "CDM/src/engine/DiagRecords.h"

class CWomClassObject;

class CDiagSetting : public CDiagObject
{
  public:
    CDiagSetting(BSTR key, bool senderResponder);

    CSettingData Data() const;
    // Copies the writable properties of `instance`, whose exceptions must be switched off, one by one; those
    // before the first that fails stay updated. A property that is null keeps the value that the setting has.
    HRESULT Update(CWomClassObject& instance);

    template <class Value>
    void Set(Value CSettingData::*member, Value value)
    {
        const CWriteScope held(Lock());
        m_data.*member = value;
    }

  private:
    CSettingData m_data; // its key stays empty: the object has it
};
