// The identities of the stand-in's own classes.
#pragma once

#include <guiddef.h>

namespace standin
{
// The service process, a local server: {7B2D6F10-52C4-4B0B-8E4B-3A1C6C6E9D03}
inline constexpr CLSID kServiceClass = {
    0x7b2d6f10, 0x52c4, 0x4b0b, {0x8e, 0x4b, 0x3a, 0x1c, 0x6c, 0x6e, 0x9d, 0x03}};
} // namespace standin
