#include "tools/zebdiag/MethodThread.h"

#include <exception>
#include <objbase.h>

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

    void Call() noexcept
    {
        try
        {
            Out = Session.Call(Path, ClassName, Method, Arguments);
        }
        catch (...)
        {
            Failure = std::current_exception();
        }
        SetEvent(Done.Get());
    }

    const CWmiSession Session;
    const std::wstring Path;
    const wchar_t* const ClassName;
    const wchar_t* const Method;
    const std::vector<CWmiSession::CArgument> Arguments;

    const CHandle Done;
    WmiObject Out;
    std::exception_ptr Failure;
};

// `parameter` is a shared pointer on the heap, which the thread owns and lets go while COM is still there.
DWORD WINAPI CMethodThread::Thread(void* parameter) noexcept
{
    const HRESULT apartment = CoInitializeEx(nullptr, COINIT_MULTITHREADED);
    std::unique_ptr<std::shared_ptr<CState>> state(static_cast<std::shared_ptr<CState>*>(parameter));
    (*state)->Call();
    state.reset();
    if (SUCCEEDED(apartment))
        CoUninitialize();
    return 0;
}

CMethodThread::CMethodThread(const CWmiSession& session, const std::wstring& path, const wchar_t* className,
                             const wchar_t* method, const std::vector<CWmiSession::CArgument>& arguments)
    : m_state(std::make_shared<CState>(session, path, className, method, arguments))
{
    // Not std::thread: one that is detached before it has begun can lose its function in this toolchain.
    auto shared = std::make_unique<std::shared_ptr<CState>>(m_state);
    const CHandle thread(m_state->Done ? CreateThread(nullptr, 0, Thread, shared.get(), 0, nullptr)
                                       : nullptr);
    if (!thread)
        throw FailureOf(E_OUTOFMEMORY, Step::Call, session.Target(), className);
    (void)shared.release(); // the thread's now
}

CMethodThread::~CMethodThread() = default;

HANDLE CMethodThread::Done() const noexcept
{
    return m_state->Done.Get();
}

WmiObject CMethodThread::Result() const
{
    if (m_state->Failure)
        std::rethrow_exception(m_state->Failure);
    return m_state->Out;
}
} // namespace zebdiag
