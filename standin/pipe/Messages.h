// What travels over the pipe. A client opens a pipe for each thing that it wants and closes it when it wants
// no more: one to keep its connection to a namespace, and one for each call. It sends one CCallMessage; the
// service answers with objects and, in the end, with one COutcome.
#pragma once

#include "Common/src/com/Bstr.h"
#include "Common/src/com/ComPtr.h"

#include <cstdint>
#include <span>
#include <string>
#include <variant>
#include <vector>
#include <wbemcli.h>

namespace standin
{
enum class Operation : uint8_t
{
    Connect, // the pipe is the connection; everything but the namespace is empty
    GetObject,
    EnumerateInstances,
    Query,
    PutInstance,
    ExecuteMethod
};

struct CCallMessage
{
    Operation What = Operation::Connect;
    // The service that the connection belongs to, as its outcome's text named it.
    std::wstring Service;
    std::wstring NameSpace; // of the form root\cimv2
    long Flags = 0;
    std::wstring Subject; // a path, a class name or a query
    std::wstring Detail;  // a method's name or the language of a query
    ComPtr<IWbemContext> Context;
    ComPtr<IWbemClassObject> Object; // in-parameters, or an instance to put
};

// How a call ended.
struct COutcome
{
    COutcome() = default;
    COutcome(HRESULT result) noexcept : Result(result) {}

    bool Failed() const noexcept { return FAILED(Result); }

    HRESULT Result = WBEM_S_NO_ERROR;
    CBstr Text;                      // a put instance's path
    ComPtr<IWbemClassObject> Status; // what the provider says about a failure
    ComPtr<IWbemClassObject> Object; // the one object of a call that asks for one
};

// How a call ends that would need a message longer than kLargestFrame, or whose message has such a length.
inline constexpr HRESULT kTooLong = static_cast<HRESULT>(WBEM_E_QUOTA_VIOLATION);

using CAnswer = std::variant<ComPtr<IWbemClassObject>, COutcome>;

std::vector<BYTE> Encode(const CCallMessage& message);
// The outcome kTooLong where the answer is too long.
std::vector<BYTE> Encode(const CAnswer& answer);
// Throw CBadBytes.
CCallMessage DecodeCall(std::span<const BYTE> bytes);
CAnswer DecodeAnswer(std::span<const BYTE> bytes);
} // namespace standin
