// What the command line asks for.
#pragma once

#include <optional>
#include <string>

namespace zebdiag
{
enum class Command
{
    List,
    Run,
    Stop,
    Results,
    Settings,
    Set,
    Clear,
    Report,
    Doctor,
    Profiles,
    Metrics
};

// The word that names the command, such as "list".
const char* CommandName(Command command) noexcept;

// Where the diagnostics are.
struct CTarget
{
    std::wstring Computer; // empty: this one
    std::wstring Namespace = L"root\\cimv2";
    std::wstring User;   // empty: the one who runs the program
    std::wstring Locale; // empty: the system's; otherwise of the form MS_407

    bool IsLocal() const;
    // For messages: the computer's name, or "this computer".
    std::wstring ComputerInWords() const;
};

// Where the sender sends to in one run. What is absent stays as the registry has it.
struct CSenderOptions
{
    std::wstring Peer; // empty: none of these is given
    std::optional<unsigned> Port;
    std::optional<unsigned> Rate; // packets per second
    std::optional<unsigned> Size; // octets of UDP data
    std::optional<unsigned> Dscp;
};

struct COptions
{
    zebdiag::Command Command = Command::List;
    CTarget Target;
    bool Json = false;
    std::wstring Adapter; // empty: all
    std::wstring Test;    // empty: none named
    bool All = false;
    bool Serial = false;              // one test after the other over all adapters
    std::optional<unsigned> Coverage; // percent
    bool NoQuick = false;
    std::optional<unsigned> TimeoutSeconds;
    CSenderOptions Sender;
    std::optional<bool> Quick;
    std::optional<bool> Report;
    std::wstring Profile;  // to run with; empty: none
    std::wstring Save;     // the profile to keep
    std::wstring Delete;   // the profile to delete
    std::wstring Html;     // the file for the page of a report
    std::wstring JsonFile; // the file for its document
    std::wstring Out;      // the file for metrics; empty: to standard output
};
} // namespace zebdiag
