// Property values as one line of text for the trace.
#pragma once

#include <oaidl.h>
#include <string>

// The type and the value. `cimType` distinguishes 64-bit integers, which travel as texts, from texts. Reads
// the VARIANT and nothing else; throws std::bad_alloc only.
std::string ZebValueToString(const VARIANT& value, long cimType);
