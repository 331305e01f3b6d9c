// The classes of the test provider's process.
#pragma once

#include <guiddef.h>

inline constexpr CLSID kTestProvider = {
    0x5a0b5c1e, 0x9b42, 0x4c73, {0x8e, 0x5f, 0x6c, 0x1f, 0x20, 0xd7, 0xa0, 0x01}};
inline constexpr CLSID kBrokenProvider = {
    0x5a0b5c1e, 0x9b42, 0x4c73, {0x8e, 0x5f, 0x6c, 0x1f, 0x20, 0xd7, 0xa0, 0x02}};

// Set by the provider when it begins to deliver the endless class.
inline constexpr wchar_t kStartedEvent[] = L"StandinTest.Started";
// Set by the provider when a client of the endless class has lost interest.
inline constexpr wchar_t kStoppedEvent[] = L"StandinTest.Stopped";
// Set by the provider when it is told that a client wants no more of a call.
inline constexpr wchar_t kCancelledEvent[] = L"StandinTest.Cancelled";
// Set by the provider while the method Block waits, and when it is asked for what it never answers; set by a
// test to let it go on.
inline constexpr wchar_t kBlockedEvent[] = L"StandinTest.Blocked";
inline constexpr wchar_t kGoEvent[] = L"StandinTest.Go";

inline constexpr unsigned kManyInstances = 2000;
