// Object paths that the client forms itself. Values are escaped, so any key can be named.
#pragma once

#include <string>

namespace zebdiag
{
std::wstring TestPath(const std::wstring& testKey);
std::wstring SettingPath(const std::wstring& testKey);
// The result of the test with this key on the adapter with that key.
std::wstring ResultPath(const std::wstring& testKey, const std::wstring& adapterKey);
// With all the keys that a provider may ask for.
std::wstring AdapterPath(const std::wstring& adapterKey, const std::wstring& computer);
} // namespace zebdiag
