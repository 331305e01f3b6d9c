// The check that every method of the test class makes: does its parameter "SystemElement" name the adapter
// of the test that the method was invoked on?
#pragma once

#include "Common/src/com/Bstr.h"

// The trace lines of one method.
struct CAdapterReferenceTexts
{
    const char* parseFailed;
    const char* tooFewKeys;
    const char* noDeviceId;
    const char* otherAdapter;
};

// S_OK; WBEM_E_FAILED for a reference that cannot be parsed or names another adapter (letter case counts);
// WBEM_E_INVALID_PARAMETER for one that lacks keys. Every failure has been traced.
HRESULT CheckAdapterReference(const CAdapterReferenceTexts& texts, const CBstr& systemElement,
                              const CBstr& testName, bool cimKeyMode);
