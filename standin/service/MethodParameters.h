// The check of a method's in-parameters against its declaration.
#pragma once

#include "standin/object/Objects.h"

namespace standin
{
// Makes the parameters that the provider gets from those that the client gave (null where it gave none): an
// instance of the method's own declaration, or null where the method takes none. Where the client gave a
// parameter that is not declared or has another type, left out one that is [required], or gave none at all
// to a method whose parameters are not all [optional]: WBEM_E_INVALID_METHOD_PARAMETERS.
HRESULT CheckInParameters(const CMethodDefinition& method, IWbemClassObject* given,
                          ComPtr<IWbemClassObject>& parameters);
} // namespace standin
