// The examination of one installation: what it starts from, and what earlier points have found for later
// ones.
#pragma once

#include "tools/zebdiag/AdapterNames.h"
#include "tools/zebdiag/Model.h"
#include "tools/zebdiag/WmiSession.h"
#include "tools/zebdiag/doctor/Machine.h"

#include <functional>
#include <optional>
#include <string>

namespace zebdiag
{
enum class PointState
{
    Good,
    Wrong,
    Unknown
};

struct CFinding
{
    PointState State;
    std::wstring Text;
    std::wstring NextStep; // empty for what is good
};

struct CExamination
{
    const CTarget& Target;
    std::function<CWmiSession()> Connect; // throws CFailure
    const IMachine* Machine;              // null where the target is another computer
    std::function<AdapterNames(const CWmiSession&)> Names;
    std::function<unsigned long long()> Now; // milliseconds

    // Found on the way.
    std::optional<CFailure> NotConnected = {};
    std::optional<CWmiSession> Session = {};
    bool SchemaGood = false;
    bool Blocked = false;     // a point that the provider needs is wrong
    std::wstring Server = {}; // the provider's file, if it is there
    std::wstring RunAs = {};  // the account of the provider; empty if none is set
    std::optional<CInventory> Inventory = {};
};

CFinding Good(std::wstring text);
CFinding Wrong(std::wstring text, std::wstring nextStep);
CFinding Wrong(const CFailure& failure);
CFinding Unknown(std::wstring text, std::wstring nextStep);
// What an earlier fault hides.
CFinding AfterFault(std::wstring text);
// What is told only on the computer itself.
CFinding OnlyThere(const CExamination& exam);

// The parts joined by ", ".
std::wstring Joined(const std::vector<std::wstring>& parts);
} // namespace zebdiag
