// The MAC of authenticated test packets: HMAC-SHA-256, its first 16 octets, made by the system's
// cryptography.
#pragma once

#include "Common/src/com/Owned.h"

#include <array>
#include <bcrypt.h>
#include <memory>
#include <span>

// One key. Used by one thread at a time; checking and signing allocate nothing.
class CStampMac
{
  public:
    static constexpr size_t kFullSize = 32;

    // Null if the system refuses. Throws std::bad_alloc.
    static std::unique_ptr<CStampMac> Make(std::span<const BYTE> key);

    // The whole HMAC of any bytes; false if the system fails.
    bool Compute(std::span<const BYTE> bytes, std::array<BYTE, kFullSize>& mac) noexcept;

    // Puts the MAC into a packet of StampSize(Authenticated) bytes at least.
    bool Sign(std::span<BYTE> packet) noexcept;
    // Whether a packet carries the right one. A packet that is too short does not.
    bool IsSigned(std::span<const BYTE> packet) noexcept;

  private:
    CStampMac() = default;

    struct ProviderTraits
    {
        using Type = BCRYPT_ALG_HANDLE;
        static Type Empty() noexcept { return nullptr; }
        static void Close(Type h) noexcept { BCryptCloseAlgorithmProvider(h, 0); }
    };
    struct HashTraits
    {
        using Type = BCRYPT_HASH_HANDLE;
        static Type Empty() noexcept { return nullptr; }
        static void Close(Type h) noexcept { BCryptDestroyHash(h); }
    };

    COwned<ProviderTraits> m_provider;
    COwned<HashTraits> m_hash; // goes first
};
