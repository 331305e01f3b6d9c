// IWbemClassObject::GetObjectText: an object as MOF that the reader takes back.
#pragma once

#include "standin/object/ObjectView.h"

#include <string>

namespace standin
{
// Of a class what it declares itself, of an instance its values. Lines end with "\n", as the management
// service ends them.
std::wstring MofText(const CObjectView& object, bool withFlavors);
} // namespace standin
