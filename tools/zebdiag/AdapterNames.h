// What the system calls its adapters: the provider knows them by a key, people by the name of the connection.
#pragma once

#include "tools/zebdiag/WmiSession.h"

#include <map>
#include <string>
#include <string_view>

namespace zebdiag
{
struct CAdapterName
{
    std::wstring Name;        // of the connection, such as "Ethernet 2"
    std::wstring Description; // of the device
};

// By AdapterNameKey.
using AdapterNames = std::map<std::wstring, CAdapterName>;

// An adapter's key in the form in which names are filed: upper case.
std::wstring AdapterNameKey(std::wstring_view adapterKey);

// Asks the management service of the target; where that has no names and the target is this computer, the
// system itself. Nothing found is no failure: adapters then show their keys.
AdapterNames FindAdapterNames(const CWmiSession& session);

// The names that the management service of the session knows.
AdapterNames AdapterNamesOfService(const CWmiSession& session);
// The names of this computer's interfaces, from IP Helper.
AdapterNames AdapterNamesOfSystem();
} // namespace zebdiag
