// Serve the four association classes, which tie tests, results, settings and adapters together.
#pragma once

#include "CDM/src/classes/ReferenceAssociation.h"

// Tolva_DiagTestForMSE: a test and its adapter.
class CTolva_DiagTestMSEAssoc final : public CReferenceAssociation
{
  public:
    CTolva_DiagTestMSEAssoc() noexcept;
};

// Tolva_DiagResultForMSE: a result and the adapter that was tested.
class CTolva_DiagResultMSEAssoc final : public CReferenceAssociation
{
  public:
    CTolva_DiagResultMSEAssoc() noexcept;
};

// Tolva_DiagResultForTest: a result and its test.
class CTolva_DiagResultTestAssoc final : public CReferenceAssociation
{
  public:
    CTolva_DiagResultTestAssoc() noexcept;
};

// Tolva_DiagSettingForTest: a setting and its test.
class CTolva_DiagSettingTestAssoc final : public CReferenceAssociation
{
  public:
    CTolva_DiagSettingTestAssoc() noexcept;
};
