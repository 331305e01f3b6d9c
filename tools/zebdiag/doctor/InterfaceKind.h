// What kind of network interface has no tests.
#pragma once

#include <winsock2.h>

#include <ws2ipdef.h>

#include <iphlpapi.h>

namespace zebdiag
{
// Why the adapter agent of this product leaves an interface out; empty for what it takes for a wired adapter.
const wchar_t* WhyNotWired(const MIB_IF_ROW2& row) noexcept;
} // namespace zebdiag
