// The identities of the agents. The real agent (in process) and the proxy agent (a local server) are two
// servers of one class; the test agent is a class of its own.
#pragma once

#include <guiddef.h>

// {6C1F0A52-3B7E-4E1B-9A55-0D6B7A3C8E10}, as text because the provider converts it at start-up.
constexpr wchar_t kVorlClassId[] = L"{6C1F0A52-3B7E-4E1B-9A55-0D6B7A3C8E10}";
constexpr CLSID kClsidVorl = {0x6C1F0A52, 0x3B7E, 0x4E1B, {0x9A, 0x55, 0x0D, 0x6B, 0x7A, 0x3C, 0x8E, 0x10}};
// {6C1F0A52-3B7E-4E1B-9A55-0D6B7A3C8E11}
constexpr CLSID kClsidVorlTest = {
    0x6C1F0A52, 0x3B7E, 0x4E1B, {0x9A, 0x55, 0x0D, 0x6B, 0x7A, 0x3C, 0x8E, 0x11}};
