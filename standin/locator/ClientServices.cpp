#include "standin/locator/ClientServices.h"

#include "Common/src/com/ComBoundary.h"
#include "Common/src/com/WmiStatus.h"
#include "standin/locator/Enumerator.h"
#include "standin/locator/ErrorObject.h"

namespace standin
{
namespace
{
// Texts end at their first null character, whatever their length says: so does the management service, and
// scripting objects rely on it.
std::wstring Text(const BSTR text)
{
    return text ? text : L"";
}

CCallMessage Message(Operation what, long flags, IWbemContext* context, const BSTR subject,
                     const BSTR detail = nullptr, IWbemClassObject* object = nullptr)
{
    CCallMessage message;
    message.What = what;
    message.Flags = flags;
    message.Subject = Text(subject);
    message.Detail = Text(detail);
    message.Context = context;
    message.Object = object;
    return message;
}
} // namespace

HRESULT CClientServices::Call(CCallMessage message, IWbemClassObject** object, IWbemCallResult** result)
{
    ClearErrorObject();
    if (object)
        *object = nullptr;
    if (result)
        *result = nullptr;
    const bool later = (message.Flags & WBEM_FLAG_RETURN_IMMEDIATELY) != 0;
    if (later && !result)
        return wmi::InvalidParameter;

    std::shared_ptr<CCall> call;
    HRESULT outcome = m_connection->Begin(std::move(message), call);
    if (FAILED(outcome))
        return outcome;
    if (!later)
    {
        call->WaitForEnd(kForever);
        outcome = call->Result();
        if (SUCCEEDED(outcome) && object)
            *object = call->Object().Detach();
    }
    if (result)
        *result = new CCallResult(call);
    return outcome;
}

HRESULT CClientServices::Enumerate(CCallMessage message, IEnumWbemClassObject** objects)
{
    ClearErrorObject();
    if (!objects)
        return wmi::InvalidParameter;
    *objects = nullptr;
    const bool later = (message.Flags & WBEM_FLAG_RETURN_IMMEDIATELY) != 0;
    const bool forwardOnly = (message.Flags & WBEM_FLAG_FORWARD_ONLY) != 0;
    std::shared_ptr<CCall> call;
    HRESULT outcome = m_connection->Begin(std::move(message), call);
    if (SUCCEEDED(outcome) && !later)
    {
        call->WaitForEnd(kForever);
        outcome = call->Result();
    }
    if (FAILED(outcome))
        return outcome;
    *objects = new CEnumerator(std::move(call), forwardOnly);
    return wmi::NoError;
}

STDMETHODIMP CClientServices::GetObject(const BSTR path, long flags, IWbemContext* context,
                                        IWbemClassObject** object, IWbemCallResult** result)
{
    return AtComBoundary(
        [&]
        {
            return !object && !result
                       ? wmi::InvalidParameter
                       : Call(Message(Operation::GetObject, flags, context, path), object, result);
        });
}

STDMETHODIMP CClientServices::PutInstance(IWbemClassObject* object, long flags, IWbemContext* context,
                                          IWbemCallResult** result)
{
    return AtComBoundary(
        [&] {
            return Call(Message(Operation::PutInstance, flags, context, nullptr, nullptr, object), nullptr,
                        result);
        });
}

STDMETHODIMP CClientServices::CreateInstanceEnum(const BSTR className, long flags, IWbemContext* context,
                                                 IEnumWbemClassObject** objects)
{
    return AtComBoundary(
        [&]
        { return Enumerate(Message(Operation::EnumerateInstances, flags, context, className), objects); });
}

STDMETHODIMP CClientServices::ExecQuery(const BSTR language, const BSTR query, long flags,
                                        IWbemContext* context, IEnumWbemClassObject** objects)
{
    return AtComBoundary(
        [&] { return Enumerate(Message(Operation::Query, flags, context, query, language), objects); });
}

STDMETHODIMP CClientServices::ExecMethod(const BSTR path, const BSTR method, long flags,
                                         IWbemContext* context, IWbemClassObject* in, IWbemClassObject** out,
                                         IWbemCallResult** result)
{
    return AtComBoundary(
        [&]
        { return Call(Message(Operation::ExecuteMethod, flags, context, path, method, in), out, result); });
}
} // namespace standin
