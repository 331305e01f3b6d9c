// The properties whose names begin with two underscores: what every object tells about itself.
#pragma once

#include "standin/object/ObjectView.h"

#include <span>
#include <string_view>

namespace standin
{
struct CSystemProperty
{
    const wchar_t* Name;
    CIMTYPE Type;
    CVariant (*Read)(const CObjectView& object);
};

// In the order in which the management service enumerates them.
std::span<const CSystemProperty> SystemProperties() noexcept;
// Null for a name that is none.
const CSystemProperty* FindSystemProperty(std::wstring_view name) noexcept;

// The out-parameters of Get and Next, each of which may be null.
HRESULT ReadProperty(const CObjectView& object, const CSystemProperty& property, VARIANT* value,
                     CIMTYPE* type, LONG* flavor);
HRESULT ReadProperty(const CObjectView& object, size_t index, VARIANT* value, CIMTYPE* type, LONG* flavor);

// Class name and keys, "@" for a singleton; the name alone for a class. Empty where the class has no keys or
// one of them has no value.
std::wstring RelativePath(const CObjectView& object);
} // namespace standin
