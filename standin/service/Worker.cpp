#include "standin/service/Worker.h"

#include "Common/src/com/ComBoundary.h"

#include <memory>
#include <objbase.h>

namespace standin
{
namespace
{
void CALLBACK RunWork(PTP_CALLBACK_INSTANCE instance, void* context)
{
    const std::unique_ptr<std::function<void()>> work(static_cast<std::function<void()>*>(context));
    // A request may take as long as a diagnostic does.
    CallbackMayRunLong(instance);
    CoInitializeEx(nullptr, COINIT_MULTITHREADED);
    AtComBoundary(
        [&]
        {
            (*work)();
            // What the work holds goes before the apartment does.
            *work = nullptr;
            return S_OK;
        });
    CoUninitialize();
}
} // namespace

void RunOnWorker(std::function<void()> work)
{
    auto owned = std::make_unique<std::function<void()>>(std::move(work));
    if (TrySubmitThreadpoolCallback(RunWork, owned.get(), nullptr))
        owned.release();
    else
        (*owned)();
}
} // namespace standin
