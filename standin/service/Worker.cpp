#include "standin/service/Worker.h"

#include "Common/src/com/ComBoundary.h"
#include "Common/src/com/Owned.h"

#include <memory>
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
} // namespace

void RunOnWorker(std::function<void()> work)
{
    auto owned = std::make_unique<std::function<void()>>(std::move(work));
    if (const CHandle thread(CreateThread(nullptr, 0, RunWork, owned.get(), 0, nullptr)); thread)
        owned.release();
    else
        (*owned)();
}
} // namespace standin
