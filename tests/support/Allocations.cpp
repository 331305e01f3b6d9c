#include "tests/support/Allocations.h"

#include "Common/src/com/ComObject.h"

#include <atomic>
#include <cstdlib>
#include <new>
#include <objbase.h>
#include <oleauto.h>
#include <stdexcept>

extern "C" void WINAPI SetOaNoCache(void);

namespace
{
thread_local bool s_failed = false;
std::atomic<long> s_blocks{0};
std::atomic<long> s_comBlocks{0};

bool FailsNow() noexcept
{
    if (t_failAllocationIn == 0 || --t_failAllocationIn > 0)
        return false;
    s_failed = true;
    return true;
}

void* Allocate(size_t size) noexcept
{
    void* const memory = FailsNow() ? nullptr : std::malloc(size ? size : 1);
    if (memory)
        ++s_blocks;
    return memory;
}

void Free(void* memory) noexcept
{
    if (memory)
        --s_blocks;
    std::free(memory);
}

class CMallocSpy final : public CComObject<IMallocSpy>
{
  public:
    STDMETHODIMP_(SIZE_T) PreAlloc(SIZE_T size) override { return FailsNow() ? 0 : size; }
    STDMETHODIMP_(void*) PostAlloc(void* memory) override
    {
        if (memory)
            ++s_comBlocks;
        return memory;
    }
    STDMETHODIMP_(void*) PreFree(void* memory, BOOL spied) override
    {
        if (memory && spied)
            --s_comBlocks;
        return memory;
    }
    STDMETHODIMP_(void) PostFree(BOOL) override {}
    STDMETHODIMP_(SIZE_T) PreRealloc(void* memory, SIZE_T size, void** again, BOOL) override
    {
        *again = memory;
        return size;
    }
    STDMETHODIMP_(void*) PostRealloc(void* memory, BOOL) override { return memory; }
    STDMETHODIMP_(void*) PreGetSize(void* memory, BOOL) override { return memory; }
    STDMETHODIMP_(SIZE_T) PostGetSize(SIZE_T size, BOOL) override { return size; }
    STDMETHODIMP_(void*) PreDidAlloc(void* memory, BOOL) override { return memory; }
    STDMETHODIMP_(int) PostDidAlloc(void*, BOOL, int did) override { return did; }
    STDMETHODIMP_(void) PreHeapMinimize() override {}
    STDMETHODIMP_(void) PostHeapMinimize() override {}
};
} // namespace

void* operator new(size_t size)
{
    if (void* memory = Allocate(size))
        return memory;
    throw std::bad_alloc();
}
void* operator new(size_t size, const std::nothrow_t&) noexcept
{
    return Allocate(size);
}
void operator delete(void* memory) noexcept
{
    Free(memory);
}
void operator delete(void* memory, size_t) noexcept
{
    Free(memory);
}
void operator delete(void* memory, const std::nothrow_t&) noexcept
{
    Free(memory);
}

CFailingAllocation::CFailingAllocation(int n) noexcept
{
    s_failed = false;
    t_failAllocationIn = n;
}

CFailingAllocation::~CFailingAllocation()
{
    t_failAllocationIn = 0;
}

bool CFailingAllocation::Failed() noexcept
{
    return s_failed;
}

long LiveBlocks() noexcept
{
    return s_blocks;
}

long LiveComBlocks()
{
    static const bool watched = []
    {
        SetOaNoCache(); // a BSTR that is kept for reuse would count as one in use
        return SUCCEEDED(CoRegisterMallocSpy(MakeCom<CMallocSpy>().Get()));
    }();
    if (!watched)
        throw std::runtime_error("COM's allocator could not be watched");
    return s_comBlocks;
}
