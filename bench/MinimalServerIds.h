// The identity of the server that the provider is compared with across processes.
#pragma once

#include <guiddef.h>

// {6C1F0A52-3B7E-4E1B-9A55-0D6B7A3C8E40}
constexpr CLSID kClsidMinimalServer = {
    0x6C1F0A52, 0x3B7E, 0x4E1B, {0x9A, 0x55, 0x0D, 0x6B, 0x7A, 0x3C, 0x8E, 0x40}};
