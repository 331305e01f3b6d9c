#include "tools/zebdiag/WmiSession.h"

#include "Common/src/com/Bstr.h"
#include "Common/src/com/WmiStatus.h"
#include "tools/zebdiag/ErrorDetail.h"

namespace zebdiag
{
namespace
{
// Results are fetched while they come in, and are not kept by the service once they are read.
constexpr long kEnumerate = WBEM_FLAG_RETURN_IMMEDIATELY | WBEM_FLAG_FORWARD_ONLY;
constexpr ULONG kBatch = 16;
} // namespace

CWmiSession::CWmiSession(ComPtr<IWbemServices> services, CTarget target, SecureInterface secure,
                         ComPtr<IWbemContext> context)
    : m_services(std::move(services)), m_target(std::move(target)), m_secure(std::move(secure)),
      m_context(std::move(context))
{
}

void CWmiSession::Fail(HRESULT status, Step step, const wchar_t* className) const
{
    throw FailureOf(status, step, m_target, className, TakeErrorDetail());
}

void CWmiSession::Check(HRESULT status, Step step, const wchar_t* className) const
{
    if (FAILED(status))
        Fail(status, step, className);
}

std::vector<WmiObject> CWmiSession::ReadAll(IEnumWbemClassObject* objects, const wchar_t* className,
                                            LONG patienceMilliseconds) const
{
    if (m_secure)
        Check(m_secure(objects), Step::Read, className);
    std::vector<WmiObject> all;
    HRESULT status = WBEM_S_NO_ERROR;
    while (status == WBEM_S_NO_ERROR)
    {
        IWbemClassObject* batch[kBatch] = {};
        ULONG count = 0;
        status = objects->Next(patienceMilliseconds, kBatch, batch, &count);
        for (ULONG i = 0; i < count; ++i)
        {
            all.emplace_back();
            all.back().Attach(batch[i]);
        }
        Check(status, Step::Read, className);
        if (status == WBEM_S_TIMEDOUT)
            Fail(status, Step::Read, className);
    }
    return all;
}

std::vector<WmiObject> CWmiSession::InstancesOf(const wchar_t* className, LONG patienceMilliseconds) const
{
    ClearErrorDetail();
    ComPtr<IEnumWbemClassObject> objects;
    Check(m_services->CreateInstanceEnum(CBstr(className).Get(), kEnumerate, m_context.Get(), objects.Put()),
          Step::Read, className);
    return ReadAll(objects.Get(), className, patienceMilliseconds);
}

std::vector<WmiObject> CWmiSession::Query(const std::wstring& wql, const wchar_t* subject) const
{
    ClearErrorDetail();
    ComPtr<IEnumWbemClassObject> objects;
    Check(m_services->ExecQuery(CBstr(L"WQL").Get(), CBstr(wql).Get(), kEnumerate, m_context.Get(),
                                objects.Put()),
          Step::Read, subject);
    return ReadAll(objects.Get(), subject, WBEM_INFINITE);
}

WmiObject CWmiSession::TryGet(const std::wstring& path, const wchar_t* className) const
{
    ClearErrorDetail();
    WmiObject object;
    const HRESULT status =
        m_services->GetObject(CBstr(path).Get(), 0, m_context.Get(), object.Put(), nullptr);
    if (status == wmi::NotFound)
        return nullptr;
    Check(status, Step::Read, className);
    return object;
}

void CWmiSession::Update(IWbemClassObject* instance, const wchar_t* className) const
{
    ClearErrorDetail();
    Check(m_services->PutInstance(instance, WBEM_FLAG_UPDATE_ONLY, m_context.Get(), nullptr), Step::Write,
          className);
}

WmiObject CWmiSession::Call(const std::wstring& path, const wchar_t* className, const wchar_t* method,
                            const std::vector<CArgument>& arguments) const
{
    ClearErrorDetail();
    WmiObject definition;
    Check(m_services->GetObject(CBstr(className).Get(), 0, m_context.Get(), definition.Put(), nullptr),
          Step::Read, className);
    WmiObject signature;
    Check(definition->GetMethod(method, 0, signature.Put(), nullptr), Step::Call, className);
    WmiObject in;
    if (signature)
        Check(signature->SpawnInstance(0, in.Put()), Step::Call, className);
    for (const CArgument& argument : arguments)
    {
        CVariant value = CVariant::FromText(argument.Text.c_str());
        Check(in ? in->Put(argument.Name, 0, &value, 0) : wmi::InvalidMethodParameters, Step::Call,
              className);
    }
    WmiObject out;
    Check(m_services->ExecMethod(CBstr(path).Get(), CBstr(method).Get(), 0, m_context.Get(), in.Get(),
                                 out.Put(), nullptr),
          Step::Call, className);
    return out;
}
} // namespace zebdiag
