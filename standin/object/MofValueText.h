// A stored value as MOF writes it.
#pragma once

#include <oaidl.h>
#include <string>
#include <wbemcli.h>

namespace standin
{
// `type` tells what the VARIANT type does not: unsigned 32-bit and 64-bit numbers. CIM_EMPTY where it is that
// of a qualifier. NULL for what has no value.
void AppendMofValue(std::wstring& text, const VARIANT& value, CIMTYPE type);
} // namespace standin
