// One owner template and one traits struct per kind of handle. An owner releases what it holds when it
// goes out of scope; it is moved, never copied. Owners are not shared between threads.
#pragma once

#include <objbase.h>
#include <utility>
#include <windows.h>

template <class Traits>
class COwned
{
  public:
    using Type = typename Traits::Type;

    explicit COwned(Type value = Traits::Empty()) noexcept : m_value(value) {}
    COwned(COwned&& other) noexcept : m_value(other.Detach()) {}
    COwned& operator=(COwned&& other) noexcept
    {
        if (this != &other)
            Reset(other.Detach());
        return *this;
    }
    COwned(const COwned&) = delete;
    COwned& operator=(const COwned&) = delete;
    ~COwned() { Reset(); }

    Type Get() const noexcept { return m_value; }
    explicit operator bool() const noexcept { return m_value != Traits::Empty(); }

    // The address to receive a new value; what was held is released first.
    Type* Put() noexcept
    {
        Reset();
        return &m_value;
    }
    Type Detach() noexcept { return std::exchange(m_value, Traits::Empty()); }
    void Reset(Type value = Traits::Empty()) noexcept
    {
        const Type old = std::exchange(m_value, value);
        if (old != Traits::Empty())
            Traits::Close(old);
    }

  private:
    Type m_value;
};

struct HandleTraits
{
    using Type = HANDLE;
    static Type Empty() noexcept { return nullptr; }
    static void Close(Type h) noexcept { CloseHandle(h); }
};
using CHandle = COwned<HandleTraits>;

// For CreateFile and the find functions, whose failure is INVALID_HANDLE_VALUE.
struct FileHandleTraits
{
    using Type = HANDLE;
    static Type Empty() noexcept { return INVALID_HANDLE_VALUE; }
    static void Close(Type h) noexcept { CloseHandle(h); }
};
using CFileHandle = COwned<FileHandleTraits>;

struct RegKeyTraits
{
    using Type = HKEY;
    static Type Empty() noexcept { return nullptr; }
    static void Close(Type h) noexcept { RegCloseKey(h); }
};
using CRegKey = COwned<RegKeyTraits>;

struct ModuleTraits
{
    using Type = HMODULE;
    static Type Empty() noexcept { return nullptr; }
    static void Close(Type h) noexcept { FreeLibrary(h); }
};
using CModule = COwned<ModuleTraits>;

// LocalAlloc memory, such as FormatMessage's.
struct LocalTextTraits
{
    using Type = char*;
    static Type Empty() noexcept { return nullptr; }
    static void Close(Type p) noexcept { LocalFree(p); }
};
using CLocalText = COwned<LocalTextTraits>;

// Memory from the COM task allocator.
template <class T>
struct CoTaskMemTraits
{
    using Type = T*;
    static Type Empty() noexcept { return nullptr; }
    static void Close(Type p) noexcept { CoTaskMemFree(p); }
};
template <class T>
using CCoTaskMem = COwned<CoTaskMemTraits<T>>;

// A system service, or the service control manager.
struct ServiceHandleTraits
{
    using Type = SC_HANDLE;
    static Type Empty() noexcept { return nullptr; }
    static void Close(Type h) noexcept { CloseServiceHandle(h); }
};
using CServiceHandle = COwned<ServiceHandleTraits>;
