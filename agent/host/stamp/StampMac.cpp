#include "agent/host/stamp/StampMac.h"

#include "agent/host/stamp/StampPackets.h"

#include <algorithm>

namespace
{
bool Succeeded(NTSTATUS status) noexcept
{
    return status >= 0;
}

// The functions take what they only read as writable.
BYTE* Readable(std::span<const BYTE> bytes) noexcept
{
    return const_cast<BYTE*>(bytes.data());
}
} // namespace

std::unique_ptr<CStampMac> CStampMac::Make(std::span<const BYTE> key)
{
    std::unique_ptr<CStampMac> mac(new CStampMac());
    if (!Succeeded(BCryptOpenAlgorithmProvider(mac->m_provider.Put(), BCRYPT_SHA256_ALGORITHM, nullptr,
                                               BCRYPT_ALG_HANDLE_HMAC_FLAG)) ||
        !Succeeded(BCryptCreateHash(mac->m_provider.Get(), mac->m_hash.Put(), nullptr, 0, Readable(key),
                                    static_cast<ULONG>(key.size()), BCRYPT_HASH_REUSABLE_FLAG)))
        return nullptr;
    return mac;
}

bool CStampMac::Compute(std::span<const BYTE> bytes, std::array<BYTE, kFullSize>& mac) noexcept
{
    return Succeeded(BCryptHashData(m_hash.Get(), Readable(bytes), static_cast<ULONG>(bytes.size()), 0)) &&
           Succeeded(BCryptFinishHash(m_hash.Get(), mac.data(), static_cast<ULONG>(mac.size()), 0));
}

bool CStampMac::Sign(std::span<BYTE> packet) noexcept
{
    std::array<BYTE, kFullSize> mac;
    if (packet.size() < kStampMacAt + kStampMacSize || !Compute(packet.first(kStampMacAt), mac))
        return false;
    std::copy_n(mac.begin(), kStampMacSize, packet.begin() + kStampMacAt);
    return true;
}

bool CStampMac::IsSigned(std::span<const BYTE> packet) noexcept
{
    std::array<BYTE, kFullSize> mac;
    if (packet.size() < kStampMacAt + kStampMacSize || !Compute(packet.first(kStampMacAt), mac))
        return false;
    // The same time for every wrong one, so that nothing is learned from how long it took.
    unsigned difference = 0;
    for (size_t i = 0; i < kStampMacSize; ++i)
        difference |= mac[i] ^ packet[kStampMacAt + i];
    return difference == 0;
}
