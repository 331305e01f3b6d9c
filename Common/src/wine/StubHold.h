// Keeps Wine from locking up a process that others call. On Windows this does nothing that can be noticed.
//
// When the last stub of an interface goes, Wine waits for the calls on that interface that are still under
// way, misses the end of one that ends at that very moment, and then waits forever, with a lock held that the
// next activation needs. A client that calls and at once lets go is enough, and COM's own activation does
// just that with the class factory. An interface of which one stub stays is never waited for.
#pragma once

#include <initializer_list>
#include <windows.h>

// Keeps one stub of each interface in the calling thread's apartment until that ends; there is no way back.
// The stubs stand for an object that no client can reach. Fails if an interface cannot be marshalled.
HRESULT HoldStubs(std::initializer_list<IID> interfaces) noexcept;

// The same for what activation uses.
HRESULT HoldActivationStubs() noexcept;
