// The registry values that tell the sender where its packets go, changed for one run and put back after it.
#pragma once

#include "tools/zebdiag/Failure.h"
#include "tools/zebdiag/Options.h"

#include <optional>
#include <string>
#include <vector>
#include <windows.h>

namespace zebdiag
{
struct CRegistryValue
{
    DWORD Type = REG_NONE;
    std::vector<BYTE> Bytes;

    bool operator==(const CRegistryValue&) const = default;
};

// The values of the product's key on this computer. A test replaces it.
class IRegistryValues
{
  public:
    virtual ~IRegistryValues() = default;

    // Absent where there is no such value, which is no failure.
    virtual LSTATUS Read(const wchar_t* name, std::optional<CRegistryValue>& value) = 0;
    // Removes the value if it is absent.
    virtual LSTATUS Write(const wchar_t* name, const std::optional<CRegistryValue>& value) = 0;
};

// The real ones.
IRegistryValues& ThisRegistry();

// The failure of a request whose values cannot be set: its next step is what an administrator sets, and
// where.
CFailure CannotSet(const CSenderOptions& options, std::wstring cause, HRESULT status = S_OK);

enum class PutBack
{
    All,
    NotAll, // another program has changed some meanwhile; those stay
    Failed
};

// Values that hold until they are put back, at the latest at the end of the scope.
class CSenderValues
{
  public:
    explicit CSenderValues(IRegistryValues& registry) : m_registry(registry) {}
    CSenderValues(const CSenderValues&) = delete;
    CSenderValues& operator=(const CSenderValues&) = delete;
    ~CSenderValues() { Restore(); }

    // Sets what the options give and leaves the other values alone. Throws CFailure; what was set until then
    // is put back.
    void Set(const CSenderOptions& options);
    PutBack Restore() noexcept;

  private:
    struct CChange
    {
        const wchar_t* Name;
        std::optional<CRegistryValue> Before;
        CRegistryValue Given;
    };

    PutBack RestoreOne(const CChange& change) noexcept;

    IRegistryValues& m_registry;
    std::vector<CChange> m_changes;
};
} // namespace zebdiag
