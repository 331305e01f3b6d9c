// The fixed identities of the server. The registration scripts, the type library and the management schema
// name the same ones.
#pragma once

#include <guiddef.h>

// {6C1F0A52-3B7E-4E1B-9A55-0D6B7A3C8E20}
constexpr CLSID kClsidProviderImp = {
    0x6C1F0A52, 0x3B7E, 0x4E1B, {0x9A, 0x55, 0x0D, 0x6B, 0x7A, 0x3C, 0x8E, 0x20}};
// {6C1F0A52-3B7E-4E1B-9A55-0D6B7A3C8E22}, version 1.0
constexpr GUID kLibidDrevok = {0x6C1F0A52, 0x3B7E, 0x4E1B, {0x9A, 0x55, 0x0D, 0x6B, 0x7A, 0x3C, 0x8E, 0x22}};
