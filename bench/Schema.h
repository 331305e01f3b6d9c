// The product's classes, as the management service would answer for them.
#pragma once

#include "Common/src/com/ComPtr.h"

#include <array>
#include <functional>
#include <string>
#include <wbemcli.h>

// The classes that the provider serves.
inline constexpr std::array<const wchar_t*, 7> kServedClasses = {
    L"Tolva_DiagTest",          L"Tolva_DiagSetting",      L"Tolva_DiagResult",
    L"Tolva_DiagTestForMSE",    L"Tolva_DiagResultForMSE", L"Tolva_DiagResultForTest",
    L"Tolva_DiagSettingForTest"};

// The definition of a class; null where there is none. Throws where the schema cannot be read.
ComPtr<IWbemClassObject> ClassNamed(const std::wstring& name);

// A name space that answers for classes: with their definitions, or with what `dress` makes of them while it
// is set. `dress` must outlive the name space.
using DressClass = std::function<ComPtr<IWbemClassObject>(ComPtr<IWbemClassObject>)>;
ComPtr<IWbemServices> MakeNamespace(const DressClass& dress);
