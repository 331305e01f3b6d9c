#include "CDM/src/ProviderImp.h"

#include "CDM/src/ZebDebug.h"
#include "CDM/src/ZebTrace.h"
#include "Common/src/WomExtendedStatus.h"
#include "Common/src/com/ComBoundary.h"
#include "Common/src/com/Text.h"

#include <optional>

// What names a request in traces and in its extended status. The line numbers are fixed, so that they mean
// the same in every version.
struct CRequestTexts
{
    const char* name;
    const wchar_t* operation;
    const char* providerException;
    const char* unhandledException;
    const wchar_t* unhandledOperation;
    long line;
};

// How a request ends. Those that find no handler end at once: without a status on the sink and without
// the return to the process's identity, which COM makes good when the call returns.
enum class Ending
{
    WithStatus,
    WithoutStatus,
    AtOnce
};

struct CAnswer
{
    HRESULT status;
    Ending ending = Ending::WithStatus;
    CBstr parameter = CBstr();
};

namespace
{
constexpr CRequestTexts kGetObject = {
    "CProviderImp::GetObjectAsync",       L"GetObjectAsync",
    "CProviderImp::GetObjectAsync catch", "CWomClassRouter::GetObjectAsync unhandled exception", // sic
    L"CWomClassRouter::GetObjectAsync",   361};                                                  // sic
constexpr CRequestTexts kExecMethod = {
    "CProviderImp::ExecMethodAsync",       L"ExecMethodAsync",
    "CProviderImp::ExecMethodAsync catch", "CProviderImp::ExecMethodAsync unhandled exception",
    L"CProviderImp::ExecMethodAsync",      515};
constexpr CRequestTexts kCreateInstanceEnum = {"CProviderImp::CreateInstanceEnumAsync",
                                               L"CreateInstanceEnumAsync",
                                               "CProviderImp::CreateInstanceEnumAsync catch",
                                               "CProviderImp::CreateInstanceEnumAsync unhandled exception",
                                               L"CProviderImp::CreateInstanceEnumAsync",
                                               614};
constexpr CRequestTexts kPutInstance = {
    "CProviderImp::PutInstanceAsync",       L"PutInstanceAsync",
    "CProviderImp::PutInstanceAsync catch", "CProviderImp::PutInstanceAsync unhandled exception",
    L"CProviderImp::PutInstanceAsync",      738};

// The StatusCode that the extended status of an unexpected exception reports.
constexpr HRESULT kUnhandledException = static_cast<HRESULT>(0x8004091A);

std::string Narrow(const BSTR text)
{
    return text ? NarrowText({text, SysStringLen(text)}) : std::string();
}
} // namespace

CProviderImp::CState CProviderImp::State() const
{
    const CLockScope lock(m_stateSection);
    return m_state;
}

CWomClassHandler* CProviderImp::FindClass(const wchar_t* className) const
{
    return State().HandlersReady ? m_router.FindClass(className) : nullptr;
}

HRESULT CProviderImp::Serve(const CRequestTexts& texts, long flags, IWbemContext* caller,
                            IWbemObjectSink* sink, const Body& body)
{
    if (!sink)
    {
        ZebDebug().Write("%s: no response sink", texts.name);
        return wmi::InvalidParameter;
    }
    m_security.Impersonate();
    m_security.OutputSecurityDebug();

    std::optional<CWomContext> context;
    CAnswer answer{wmi::Failed};
    try
    {
        const CState state = State();
        context.emplace(caller, state.DefaultLocale, L"DREVOK_PROVIDER", texts.operation, &m_resources,
                        state.Namespace.Get(), flags, state.CimKeyMode);
        context->DebugOutput();
        answer = body(*context);
        if (answer.ending == Ending::WithStatus)
            sink->SetStatus(WBEM_STATUS_COMPLETE, answer.status, answer.parameter.Get(), nullptr);
    }
    catch (const CWomProviderException& exception)
    {
        const CZebTrace trace(texts.providerException);
        answer = {exception.RequestResult()};
        ReportToSink(exception, sink);
    }
    catch (...)
    {
        const CZebTrace trace(texts.unhandledException);
        const CWomProviderException exception(context ? &*context : nullptr, kUnhandledException,
                                              texts.unhandledOperation, wmi::Failed, "CDM/src/ProviderImp",
                                              texts.line, "", {});
        answer = {exception.RequestResult()};
        ReportToSink(exception, sink);
    }
    if (answer.ending != Ending::AtOnce)
        m_security.RevertToSelf();
    return answer.status;
}

STDMETHODIMP CProviderImp::GetObjectAsync(const BSTR path, long flags, IWbemContext* caller,
                                          IWbemObjectSink* sink)
{
    return AtComBoundary(
        [&]
        {
            const CZebTrace trace(kGetObject.name);
            ZebDebug().Write("GetObjectAsync: <%x>", flags);
            ZebDebug().WriteLong(Narrow(path).c_str());
            return Serve(kGetObject, flags, caller, sink,
                         [&](CWomContext& context) { return AnswerGetObject(path, context, sink); });
        });
}

CAnswer CProviderImp::AnswerGetObject(const BSTR path, CWomContext& context, IWbemObjectSink* sink)
{
    CParsedObjectPath parsed;
    if (Failed(ParseObjectPath(path, parsed), "CProviderImp::GetObjectAsync: Parse failed"))
        return {wmi::Failed, Ending::AtOnce};
    CWomClassHandler* const handler = FindClass(parsed.Class.c_str());
    if (!handler)
        return {TraceFailure(wmi::Failed, "CProviderImp::GetObjectAsync: FindClass failed"), Ending::AtOnce};
    return {handler->GetObjectAsync(parsed, context, sink)};
}

STDMETHODIMP CProviderImp::CreateInstanceEnumAsync(const BSTR className, long flags, IWbemContext* caller,
                                                   IWbemObjectSink* sink)
{
    return AtComBoundary(
        [&]
        {
            const CZebTrace trace(kCreateInstanceEnum.name);
            ZebDebug().Write("CreateInstanceEnumAsync: <%s> <%x>", Narrow(className).c_str(), flags);
            return Serve(kCreateInstanceEnum, flags, caller, sink,
                         [&](CWomContext& context)
                         { return AnswerCreateInstanceEnum(className, context, sink); });
        });
}

CAnswer CProviderImp::AnswerCreateInstanceEnum(const BSTR className, CWomContext& context,
                                               IWbemObjectSink* sink)
{
    CWomClassHandler* const handler = FindClass(className);
    if (!handler)
        return {TraceFailure(wmi::Failed, "CProviderImp::CreateInstanceEnumAsync: FindClass failed"),
                Ending::AtOnce};
    return {handler->CreateInstanceEnumAsync(context, sink)};
}

STDMETHODIMP CProviderImp::PutInstanceAsync(IWbemClassObject* instance, long flags, IWbemContext* caller,
                                            IWbemObjectSink* sink)
{
    return AtComBoundary(
        [&]
        {
            const CZebTrace trace(kPutInstance.name);
            ZebDebug().Write("PutInstanceAsync <%x>", flags); // sic
            return Serve(kPutInstance, flags, caller, sink,
                         [&](CWomContext& context)
                         { return AnswerPutInstance(instance, flags, context, sink); });
        });
}

CAnswer CProviderImp::AnswerPutInstance(IWbemClassObject* instance, long flags, CWomContext& context,
                                        IWbemObjectSink* sink)
{
    CWomClassObject wrapped(&context);
    wrapped.Wrap(instance);
    wrapped.DebugOutput();
    CBstr className;
    wrapped.GetProperty(L"__CLASS", className);
    CWomClassHandler* const handler = FindClass(className.Get());
    if (!handler)
        return {TraceFailure(wmi::Failed, "CProviderImp::PutInstanceAsync: FindClass failed"),
                Ending::AtOnce};
    // Create or update (0), and anything that includes update only.
    if (flags != WBEM_FLAG_CREATE_OR_UPDATE && !(flags & WBEM_FLAG_UPDATE_ONLY))
        return {wmi::NotSupported, Ending::WithoutStatus};
    wrapped.SetThrowing(false);
    CBstr path;
    const HRESULT hr = handler->PutInstanceAsync(wrapped, context, path, sink);
    return {hr, Ending::WithStatus, std::move(path)};
}

STDMETHODIMP CProviderImp::ExecMethodAsync(const BSTR path, const BSTR method, long flags,
                                           IWbemContext* caller, IWbemClassObject* inParams,
                                           IWbemObjectSink* sink)
{
    return AtComBoundary(
        [&]
        {
            const CZebTrace trace(kExecMethod.name);
            ZebDebug().Write("ExecMethodAsync: <%s> <%x>", Narrow(method).c_str(), flags);
            ZebDebug().WriteLong(Narrow(path).c_str());
            return Serve(kExecMethod, flags, caller, sink,
                         [&](CWomContext& context)
                         { return AnswerExecMethod(path, method, inParams, context, sink); });
        });
}

CAnswer CProviderImp::AnswerExecMethod(const BSTR path, const BSTR method, IWbemClassObject* inParams,
                                       CWomContext& context, IWbemObjectSink* sink)
{
    CParsedObjectPath parsed;
    if (Failed(ParseObjectPath(path, parsed), "CProviderImp::ExecMethodAsync: Parse failed"))
        return {wmi::Failed, Ending::AtOnce};
    CWomClassHandler* const handler = FindClass(parsed.Class.c_str());
    if (!handler)
        return {TraceFailure(wmi::Failed, "CProviderImp::ExecMethodAsync: SetStatus failed"),
                Ending::AtOnce}; // sic

    CWomClassObject classObject(&context);
    CWomClassObject in(&context);
    in.Wrap(inParams);
    in.DebugOutput();
    CWomClassObject signature(&context);
    CWomClassObject out(&context);
    // By the handler's spelling: definitions are kept under their names, and clients know many for each.
    classObject.CreateClass(handler->GetClassName());
    classObject.GetMethodOutput(method, signature);
    signature.SpawnInstanceFromClass(out); // a method without an output raises here
    in.SetThrowing(false);
    out.SetThrowing(false);

    HRESULT hr = handler->ExecMethodAsync(parsed, method, context, in, out, sink);
    if (out.Object())
    {
        hr = out.Indicate(sink); // what comes of sending replaces the handler's own result
        out.DebugOutput();
    }
    return {hr};
}
