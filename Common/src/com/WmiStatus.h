// The management service's status codes as HRESULT constants. The platform header declares them as unsigned
// enumerators, which neither compare nor return as HRESULT without a cast.
#pragma once

#include <wbemcli.h>

namespace wmi
{
constexpr HRESULT NoError = WBEM_S_NO_ERROR;
constexpr HRESULT Failed = static_cast<HRESULT>(WBEM_E_FAILED);
constexpr HRESULT NotFound = static_cast<HRESULT>(WBEM_E_NOT_FOUND);
constexpr HRESULT AccessDenied = static_cast<HRESULT>(WBEM_E_ACCESS_DENIED);
constexpr HRESULT ProviderFailure = static_cast<HRESULT>(WBEM_E_PROVIDER_FAILURE);
constexpr HRESULT TypeMismatch = static_cast<HRESULT>(WBEM_E_TYPE_MISMATCH);
constexpr HRESULT OutOfMemory = static_cast<HRESULT>(WBEM_E_OUT_OF_MEMORY);
constexpr HRESULT InvalidParameter = static_cast<HRESULT>(WBEM_E_INVALID_PARAMETER);
constexpr HRESULT NotSupported = static_cast<HRESULT>(WBEM_E_NOT_SUPPORTED);
constexpr HRESULT InvalidClass = static_cast<HRESULT>(WBEM_E_INVALID_CLASS);
constexpr HRESULT InvalidNamespace = static_cast<HRESULT>(WBEM_E_INVALID_NAMESPACE);
constexpr HRESULT InvalidObject = static_cast<HRESULT>(WBEM_E_INVALID_OBJECT);
constexpr HRESULT InvalidObjectPath = static_cast<HRESULT>(WBEM_E_INVALID_OBJECT_PATH);
constexpr HRESULT InvalidQuery = static_cast<HRESULT>(WBEM_E_INVALID_QUERY);
constexpr HRESULT InvalidQueryType = static_cast<HRESULT>(WBEM_E_INVALID_QUERY_TYPE);
constexpr HRESULT InvalidMethod = static_cast<HRESULT>(WBEM_E_INVALID_METHOD);
constexpr HRESULT InvalidMethodParameters = static_cast<HRESULT>(WBEM_E_INVALID_METHOD_PARAMETERS);
constexpr HRESULT ProviderNotFound = static_cast<HRESULT>(WBEM_E_PROVIDER_NOT_FOUND);
constexpr HRESULT ProviderLoadFailure = static_cast<HRESULT>(WBEM_E_PROVIDER_LOAD_FAILURE);
constexpr HRESULT CallCancelled = static_cast<HRESULT>(WBEM_E_CALL_CANCELLED);
} // namespace wmi
