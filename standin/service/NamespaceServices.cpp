#include "standin/service/NamespaceServices.h"

#include "Common/src/com/ComBoundary.h"
#include "Common/src/com/Text.h"
#include "standin/locator/NetworkPath.h"
#include "standin/object/Objects.h"
#include "standin/service/QueryRun.h"
#include "standin/service/Service.h"
#include "standin/service/Worker.h"

namespace standin
{
namespace
{
// Flags that every operation takes.
constexpr long kAnyCall = WBEM_FLAG_RETURN_IMMEDIATELY | WBEM_FLAG_FORWARD_ONLY | WBEM_FLAG_SEND_STATUS |
                          WBEM_FLAG_USE_AMENDED_QUALIFIERS;
constexpr long kRead = kAnyCall | WBEM_FLAG_DIRECT_READ;
constexpr long kEnumerate = kRead | WBEM_FLAG_SHALLOW | WBEM_FLAG_ENSURE_LOCATABLE;
constexpr long kQuery = kRead | WBEM_FLAG_ENSURE_LOCATABLE;
constexpr long kPut = kAnyCall | WBEM_FLAG_UPDATE_ONLY | WBEM_FLAG_CREATE_ONLY;

// Texts end at their first null character, whatever their length says: so does the management service, and
// scripting objects rely on it.
std::wstring_view View(const BSTR text)
{
    return text ? text : L"";
}

// The outcome of a call that asks for one object; null where there is none.
COutcome One(ComPtr<IWbemClassObject> object)
{
    COutcome outcome(object ? wmi::NoError : wmi::NotFound);
    outcome.Object = std::move(object);
    return outcome;
}

// A path to something in this computer.
std::optional<CObjectPath> ParseLocalPath(const BSTR text)
{
    std::optional<CObjectPath> path = ParseObjectPath(View(text));
    if (path && !path->Server.empty() && !IsThisComputer(path->Server))
        return std::nullopt;
    return path;
}
} // namespace

template <class Work>
HRESULT CNamespaceServices::Begin(const std::wstring& place, long flags, long allowedFlags,
                                  IWbemContext* context, IWbemObjectSink* sink, Work work) noexcept
{
    return AtComBoundary(
        [&]() -> HRESULT
        {
            if (!sink || (flags & ~allowedFlags) != 0)
                return wmi::InvalidParameter;
            if (!place.empty() && !m_service.Repository().HasNamespace(place))
                return wmi::InvalidNamespace;
            RunOnWorker(
                [&service = m_service, nameSpace = place.empty() ? m_connection->NameSpace() : place,
                 request = m_connection->Open(sink, flags, context), work = std::move(work)]
                {
                    COutcome outcome;
                    const HRESULT ran = AtComBoundary(
                        [&]
                        {
                            CInstanceSource source(service, nameSpace, *request);
                            outcome = work(source, *request);
                            return S_OK;
                        });
                    request->Finish(FAILED(ran) ? COutcome(ran) : std::move(outcome));
                });
            return wmi::NoError;
        });
}

STDMETHODIMP CNamespaceServices::OpenNamespace(const BSTR nameSpace, long, IWbemContext*,
                                               IWbemServices** opened, IWbemCallResult**)
{
    return AtComBoundary(
        [&]() -> HRESULT
        {
            if (!opened || View(nameSpace).empty())
                return wmi::InvalidParameter;
            const std::wstring name = m_connection->NameSpace() + L"\\" + std::wstring(View(nameSpace));
            *opened = m_service.Connect(name, m_connection->Locale(), m_connection->ClientProcess()).Detach();
            return *opened ? wmi::NoError : wmi::InvalidNamespace;
        });
}

STDMETHODIMP CNamespaceServices::CancelAsyncCall(IWbemObjectSink* sink)
{
    return AtComBoundary(
        [&]() -> HRESULT
        {
            if (!sink)
                return wmi::InvalidParameter;
            return m_connection->Cancel(sink) ? wmi::NoError : wmi::NotFound;
        });
}

STDMETHODIMP CNamespaceServices::GetObjectAsync(const BSTR text, long flags, IWbemContext* context,
                                                IWbemObjectSink* sink)
{
    return AtComBoundary(
        [&]() -> HRESULT
        {
            if (View(text).empty())
                return Begin({}, flags, kRead, context, sink,
                             [](CInstanceSource&, CRequest&) { return One(MakeEmptyClass()); });
            const std::optional<CObjectPath> path = ParseLocalPath(text);
            if (!path)
                return wmi::InvalidObjectPath;
            return Begin(path->NameSpace, flags, kRead, context, sink,
                         [path = *path](CInstanceSource& source, CRequest&)
                         { return path.IsInstance ? source.Get(path) : One(source.Class(path.ClassName)); });
        });
}

STDMETHODIMP CNamespaceServices::CreateClassEnumAsync(const BSTR superclass, long flags,
                                                      IWbemContext* context, IWbemObjectSink* sink)
{
    return AtComBoundary(
        [&]() -> HRESULT
        {
            const bool deep = (flags & WBEM_FLAG_SHALLOW) == 0;
            return Begin({}, flags, kEnumerate, context, sink,
                         [deep, name = std::wstring(View(superclass))](CInstanceSource& source,
                                                                       CRequest& request) -> COutcome
                         {
                             if (!name.empty() && !source.Definition(name))
                                 return wmi::InvalidClass;
                             for (ComPtr<IWbemClassObject>& object : source.Classes(name, deep))
                                 if (const HRESULT hr = request.Indicate(std::move(object)); FAILED(hr))
                                     return hr;
                             return wmi::NoError;
                         });
        });
}

STDMETHODIMP CNamespaceServices::PutInstanceAsync(IWbemClassObject* object, long flags, IWbemContext* context,
                                                  IWbemObjectSink* sink)
{
    return AtComBoundary(
        [&]() -> HRESULT
        {
            if (!object || (flags & (WBEM_FLAG_UPDATE_ONLY | WBEM_FLAG_CREATE_ONLY)) ==
                               (WBEM_FLAG_UPDATE_ONLY | WBEM_FLAG_CREATE_ONLY))
                return wmi::InvalidParameter;
            return Begin({}, flags, kPut, context, sink,
                         [instance = ComPtr<IWbemClassObject>(object)](CInstanceSource& source, CRequest&)
                         { return source.Put(instance.Get()); });
        });
}

STDMETHODIMP CNamespaceServices::DeleteInstanceAsync(const BSTR text, long flags, IWbemContext* context,
                                                     IWbemObjectSink* sink)
{
    return AtComBoundary(
        [&]() -> HRESULT
        {
            const std::optional<CObjectPath> path = ParseLocalPath(text);
            if (!path || !path->IsInstance)
                return wmi::InvalidObjectPath;
            return Begin(path->NameSpace, flags, kAnyCall, context, sink,
                         [path = *path](CInstanceSource& source, CRequest&) { return source.Delete(path); });
        });
}

STDMETHODIMP CNamespaceServices::CreateInstanceEnumAsync(const BSTR className, long flags,
                                                         IWbemContext* context, IWbemObjectSink* sink)
{
    return AtComBoundary(
        [&]() -> HRESULT
        {
            if (View(className).empty())
                return wmi::InvalidClass;
            const bool deep = (flags & WBEM_FLAG_SHALLOW) == 0;
            return Begin(
                {}, flags, kEnumerate, context, sink,
                [deep, name = std::wstring(View(className))](CInstanceSource& source, CRequest& request) {
                    return source.Enumerate(
                        name, deep, [&](IWbemClassObject* object) { return request.Indicate(object); });
                });
        });
}

STDMETHODIMP CNamespaceServices::ExecQueryAsync(const BSTR language, const BSTR text, long flags,
                                                IWbemContext* context, IWbemObjectSink* sink)
{
    return AtComBoundary(
        [&]() -> HRESULT
        {
            if (!EqualNoCaseAscii(View(language), L"WQL"))
                return wmi::InvalidQueryType;
            const std::shared_ptr<const CQuery> query = ParseQuery(View(text));
            if (!query)
                return wmi::InvalidQuery;
            return Begin({}, flags, kQuery, context, sink,
                         [query](CInstanceSource& source, CRequest& request) {
                             return RunQuery(*query, source,
                                             [&](IWbemClassObject* object)
                                             { return request.Indicate(object); });
                         });
        });
}

STDMETHODIMP CNamespaceServices::ExecMethodAsync(const BSTR text, const BSTR method, long flags,
                                                 IWbemContext* context, IWbemClassObject* in,
                                                 IWbemObjectSink* sink)
{
    return AtComBoundary(
        [&]() -> HRESULT
        {
            if (View(method).empty())
                return wmi::InvalidParameter;
            const std::optional<CObjectPath> path = ParseLocalPath(text);
            if (!path)
                return wmi::InvalidObjectPath;
            return Begin(path->NameSpace, flags, kAnyCall, context, sink,
                         [path = *path, method = std::wstring(View(method)),
                          in = ComPtr<IWbemClassObject>(in)](CInstanceSource& source, CRequest&)
                         { return source.Execute(path, method, in.Get()); });
        });
}
} // namespace standin
