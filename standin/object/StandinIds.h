// Identifiers of the stand-in's by-value objects. A DLL registers the two class identifiers as in-process
// servers (threading model Both) and answers for them with GetUnmarshalClassObject.
#pragma once

#include <guiddef.h>

namespace standin
{
// Makes a class definition or an instance out of marshalled bytes.
inline constexpr CLSID kObjectUnmarshaler = {
    0x1b6e07c4, 0x52d9, 0x4f0b, {0x8a, 0x41, 0x3c, 0x77, 0xd0, 0x5e, 0x92, 0x16}};
// The same for the values of a call's context. Also creates an empty context: it is what stands behind
// CLSID_WbemContext.
inline constexpr CLSID kContextUnmarshaler = {
    0x1b6e07c5, 0x52d9, 0x4f0b, {0x8a, 0x41, 0x3c, 0x77, 0xd0, 0x5e, 0x92, 0x16}};
} // namespace standin
