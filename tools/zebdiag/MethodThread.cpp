#include "tools/zebdiag/MethodThread.h"

#include <new>
#include <objbase.h>
#include <thread>

namespace zebdiag
{
struct CMethodThread::CState
{
    CState(const CWmiSession& session, const std::wstring& path, const wchar_t* className,
           const wchar_t* method, const std::vector<CWmiSession::CArgument>& arguments)
        : Session(session), Path(path), ClassName(className), Method(method), Arguments(arguments),
          Done(CreateEventW(nullptr, TRUE, FALSE, nullptr))
    {
    }

    const CWmiSession Session;
    const std::wstring Path;
    const wchar_t* const ClassName;
    const wchar_t* const Method;
    const std::vector<CWmiSession::CArgument> Arguments;

    CHandle Done;
    WmiObject Out;
    std::optional<CFailure> Failure;

    void Run() noexcept
    {
        const HRESULT apartment = CoInitializeEx(nullptr, COINIT_MULTITHREADED);
        try
        {
            try
            {
                Out = Session.Call(Path, ClassName, Method, Arguments);
            }
            catch (const CFailure& failure)
            {
                Failure = failure;
            }
            catch (const std::exception&)
            {
                Failure = FailureOf(E_OUTOFMEMORY, Step::Call, Session.Target(), ClassName);
            }
        }
        catch (...)
        {
            // Not even the failure could be kept: an absent result says that there was no run.
            Out.Reset();
        }
        if (SUCCEEDED(apartment))
            CoUninitialize();
        SetEvent(Done.Get());
    }
};

CMethodThread::CMethodThread(const CWmiSession& session, const std::wstring& path, const wchar_t* className,
                             const wchar_t* method, const std::vector<CWmiSession::CArgument>& arguments)
    : m_state(std::make_shared<CState>(session, path, className, method, arguments))
{
    if (!m_state->Done)
        throw FailureOf(E_OUTOFMEMORY, Step::Call, session.Target(), className);
    std::thread([state = m_state] { state->Run(); }).detach();
}

CMethodThread::~CMethodThread() = default;

HANDLE CMethodThread::Done() const noexcept
{
    return m_state->Done.Get();
}

WmiObject CMethodThread::Result() const
{
    if (m_state->Failure)
        throw CFailure(*m_state->Failure);
    return m_state->Out;
}
} // namespace zebdiag
