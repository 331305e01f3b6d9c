#include "CDM/src/engine/runs/RunEnvironment.h"

namespace
{
class CSystemRunEnvironment : public IRunEnvironment
{
  public:
    SYSTEMTIME LocalTime() override
    {
        SYSTEMTIME now{};
        GetLocalTime(&now);
        return now;
    }
    ULONGLONG ProcessMilliseconds() override { return GetTickCount64(); }
    CHandle StartThread(LPTHREAD_START_ROUTINE procedure, void* parameter) override
    {
        return CHandle(CreateThread(nullptr, 0, procedure, parameter, 0, nullptr));
    }
    DWORD WaitForEither(HANDLE event, HANDLE worker, DWORD milliseconds) override
    {
        const HANDLE both[] = {event, worker};
        return WaitForMultipleObjects(2, both, FALSE, milliseconds);
    }
    DWORD Wait(HANDLE object, DWORD milliseconds) override
    {
        return WaitForSingleObject(object, milliseconds);
    }
};
} // namespace

IRunEnvironment& SystemRunEnvironment() noexcept
{
    static CSystemRunEnvironment environment;
    return environment;
}
