// The memory of a test program under the test's control. Linking Allocations.cpp replaces the program's
// operator new and lets the test see what COM's allocator gives: BSTRs, arrays, blocks that cross interfaces.
#pragma once

#include <utility>

// How many allocations of the thread are left until one fails; 0 for none.
inline thread_local int t_failAllocationIn = 0;

// Makes the n-th allocation of this thread from now on fail (counted from 1), of whichever kind, until the
// scope ends. For one scope at a time.
class CFailingAllocation
{
  public:
    explicit CFailingAllocation(int n) noexcept;
    CFailingAllocation(const CFailingAllocation&) = delete;
    CFailingAllocation& operator=(const CFailingAllocation&) = delete;
    ~CFailingAllocation();

    static bool Failed() noexcept;
};

// Lets this thread's allocations pass, for doubles that stand where another program would be. Needs nothing
// to be linked.
class CSparedAllocations
{
  public:
    CSparedAllocations() noexcept : m_failIn(std::exchange(t_failAllocationIn, 0)) {}
    CSparedAllocations(const CSparedAllocations&) = delete;
    CSparedAllocations& operator=(const CSparedAllocations&) = delete;
    ~CSparedAllocations() { t_failAllocationIn = m_failIn; }

  private:
    const int m_failIn;
};

// How many blocks of operator new exist, made by any thread.
long LiveBlocks() noexcept;

// How many blocks of COM's allocator exist, of those that were made since the first call.
long LiveComBlocks();
