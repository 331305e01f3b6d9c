// The management service as a client of it sees it. Every failure that a test does not ask about throws
// std::runtime_error with the call and its code.
#pragma once

#include "Common/src/com/Bstr.h"
#include "Common/src/com/ComPtr.h"

#include <map>
#include <optional>
#include <string>
#include <vector>
#include <wbemcli.h>

class CWmiClient
{
  public:
    // Connects to root\cimv2 of the local computer.
    CWmiClient();

    IWbemServices* Services() const noexcept { return m_services.Get(); }

    // All instances of a class; empty on failure, whose code is in `status` where one is given.
    std::vector<ComPtr<IWbemClassObject>> Instances(const wchar_t* className,
                                                    HRESULT* status = nullptr) const;
    std::vector<ComPtr<IWbemClassObject>> Query(const std::wstring& wql, HRESULT* status = nullptr) const;
    HRESULT Get(const std::wstring& path, ComPtr<IWbemClassObject>& object) const;
    // Calls a method; `in` gives its string parameters as name and value, a null value for NULL.
    HRESULT Exec(const std::wstring& path, const wchar_t* method,
                 const std::vector<std::pair<std::wstring, std::optional<std::wstring>>>& in,
                 ComPtr<IWbemClassObject>& out) const;

  private:
    std::vector<ComPtr<IWbemClassObject>> Drain(IEnumWbemClassObject* found, HRESULT* status) const;

    ComPtr<IWbemServices> m_services;
};

// A property as text: strings as they are, numbers in decimal, booleans as TRUE or FALSE, arrays joined by
// commas; nothing for null. Throws where there is no such property.
std::optional<std::wstring> PropertyText(IWbemClassObject* object, const wchar_t* name);

// PropertyText of every property of the object's class, by name; the system's own are left out.
using CPropertyTexts = std::map<std::wstring, std::optional<std::wstring>>;
CPropertyTexts AllPropertyTexts(IWbemClassObject* object);

// PropertyText of every object, sorted; null values are left out.
std::vector<std::wstring> PropertyTexts(const std::vector<ComPtr<IWbemClassObject>>& objects,
                                        const wchar_t* name);

// A key value as it stands between the quotes of an object path.
std::wstring EscapedKey(const std::wstring& value);
