// The parameters that govern the next run of one test.
#pragma once

#include "CDM/src/engine/DiagObject.h"
#include "CDM/src/engine/DiagRecords.h"

class CDiagSetting : public CDiagObject
{
  public:
    CDiagSetting(BSTR key, bool senderResponder);

    CSettingData Data() const;

    void SetHaltOnError(BOOL value);
    void SetReportSoftErrors(BOOL value);
    void SetReportStatusMessages(BOOL value);
    void SetQuickMode(BOOL value);
    void SetTestWarningLevel(USHORT value);
    void SetPercentOfTestCoverage(BYTE value);

  private:
    CSettingData m_data; // its key stays empty: the object has it
};
