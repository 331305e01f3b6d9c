#include "standin/service/ClientPipe.h"

#include "Common/src/com/ComBoundary.h"
#include "Common/src/com/WmiStatus.h"
#include "standin/service/Operations.h"
#include "standin/service/Request.h"
#include "standin/service/Service.h"

#include <functional>
#include <objbase.h>

namespace standin
{
namespace
{
DWORD WINAPI RunWork(void* context)
{
    std::unique_ptr<std::function<void()>> work(static_cast<std::function<void()>*>(context));
    CoInitializeEx(nullptr, COINIT_MULTITHREADED);
    AtComBoundary(
        [&]
        {
            (*work)();
            return S_OK;
        });
    // What the work holds goes before the apartment does.
    work.reset();
    CoUninitialize();
    return 0;
}

// Starts the work on a thread of its own, inside the multithreaded apartment. An exception ends it quietly.
// Throws std::bad_alloc where the system has no thread left: nothing may run on the caller's, which is the
// listener or watches a client.
//
// Not the system's thread pool: incoming COM calls run there too, and under Wine a call may then wait for a
// request that takes as long as a diagnostic does.
void RunOnWorker(std::function<void()> work)
{
    auto owned = std::make_unique<std::function<void()>>(std::move(work));
    const CHandle thread(CreateThread(nullptr, 0, RunWork, owned.get(), 0, nullptr));
    if (!thread)
        throw std::bad_alloc();
    owned.release();
}

// Waits until the client closes its end.
void WaitForTheEnd(CPipe& pipe)
{
    std::vector<BYTE> frame;
    while (pipe.Receive(frame, INFINITE) == CPipe::Received::Frame)
    {
    }
}

void Answer(CPipe& pipe, COutcome outcome)
{
    if (pipe.Send(Encode(CAnswer(std::move(outcome)))))
        WaitForTheEnd(pipe);
}

// Sends what comes until the outcome has been sent; false where the client has gone before.
bool SendAnswers(CPipe& pipe, CRequest& request)
{
    const HANDLE handles[] = {request.Answered(), pipe.Incoming()};
    while (WaitForMultipleObjects(2, handles, FALSE, INFINITE) == WAIT_OBJECT_0)
        for (const CAnswer& answer : request.TakeAnswers())
        {
            if (!pipe.Send(Encode(answer)))
                return false;
            if (std::holds_alternative<COutcome>(answer))
                return true;
        }
    return false;
}

void ServeCall(CService& service, CPipe& pipe, CCallMessage call)
{
    auto request = std::make_shared<CRequest>(call.Flags, call.Context);
    // Taken here: the client may be gone before the thread has begun.
    auto use = std::make_shared<CServiceLife::CUse>(service.Life());
    RunOnWorker(
        [&service, request, use = std::move(use), call = std::move(call)]
        {
            COutcome outcome;
            const HRESULT ran = AtComBoundary(
                [&]
                {
                    outcome = CarryOut(service, call, *request);
                    return S_OK;
                });
            request->Finish(FAILED(ran) ? COutcome(ran) : std::move(outcome));
        });
    if (SendAnswers(pipe, *request))
        WaitForTheEnd(pipe);
    else
        request->Cancel();
}

void Serve(CService& service, CPipe& pipe)
{
    std::vector<BYTE> frame;
    const CPipe::Received received = pipe.Receive(frame, INFINITE);
    if (received == CPipe::Received::TooLong)
        return Answer(pipe, kTooLong);
    if (received != CPipe::Received::Frame)
        return;
    CCallMessage call = DecodeCall(frame);
    if (call.What == Operation::Connect)
    {
        COutcome outcome;
        if (service.Repository().HasNamespace(call.NameSpace))
            outcome.Text = CBstr(std::wstring_view(service.Id()));
        else
            outcome.Result = wmi::InvalidNamespace;
        Answer(pipe, std::move(outcome));
    }
    // The connection was to a service that is no more.
    else if (call.Service != service.Id())
        Answer(pipe, HRESULT_FROM_WIN32(RPC_S_SERVER_UNAVAILABLE));
    else
        ServeCall(service, pipe, std::move(call));
}
} // namespace

void ServePipe(CService& service, CServiceLife::CUse use, std::unique_ptr<CPipe> pipe)
{
    auto held = std::make_shared<CServiceLife::CUse>(std::move(use));
    RunOnWorker(
        [&service, held = std::move(held), pipe = std::shared_ptr<CPipe>(std::move(pipe))]() mutable
        {
            Serve(service, *pipe);
            // The client sees its pipe go before the service counts as unused.
            pipe.reset();
        });
}
} // namespace standin
