// The owner of one reference on a COM interface. Our own because the toolchain's WRL ComPtr takes a second
// reference in Attach, so that whatever it attaches leaks.
#pragma once

#include <unknwn.h>
#include <utility>

template <class T>
class ComPtr
{
  public:
    ComPtr() noexcept = default;
    ComPtr(std::nullptr_t) noexcept {}
    // Takes a reference of its own; Attach takes over the caller's.
    ComPtr(T* object) noexcept : m_object(object)
    {
        if (m_object)
            m_object->AddRef();
    }
    ComPtr(const ComPtr& other) noexcept : ComPtr(other.m_object) {}
    template <class U>
    ComPtr(const ComPtr<U>& other) noexcept : ComPtr(static_cast<T*>(other.Get()))
    {
    }
    ComPtr(ComPtr&& other) noexcept : m_object(other.Detach()) {}
    template <class U>
    ComPtr(ComPtr<U>&& other) noexcept : m_object(other.Detach())
    {
    }
    ComPtr& operator=(ComPtr other) noexcept
    {
        std::swap(m_object, other.m_object);
        return *this;
    }
    ~ComPtr() { Reset(); }

    // The analyser does not follow reference counts: it believes that any Release destroys.
    // NOLINTBEGIN(clang-analyzer-cplusplus.NewDelete)
    T* Get() const noexcept { return m_object; }
    T* operator->() const noexcept { return m_object; }
    T& operator*() const noexcept { return *m_object; }
    // NOLINTEND(clang-analyzer-cplusplus.NewDelete)
    explicit operator bool() const noexcept { return m_object != nullptr; }

    // The address to receive a new reference; what was held is released first.
    T** Put() noexcept
    {
        Reset();
        return &m_object;
    }
    void** PutVoid() noexcept { return reinterpret_cast<void**>(Put()); }
    void Attach(T* object) noexcept
    {
        if (T* old = std::exchange(m_object, object))
            old->Release();
    }
    T* Detach() noexcept { return std::exchange(m_object, nullptr); }
    void Reset() noexcept { Attach(nullptr); }

    // A further reference for an out-parameter.
    T* Copy() const noexcept
    {
        if (m_object)
            m_object->AddRef();
        return m_object;
    }
    template <class U>
    HRESULT As(ComPtr<U>& out) const noexcept
    {
        return m_object ? m_object->QueryInterface(__uuidof(U), out.PutVoid()) : E_POINTER;
    }

  private:
    T* m_object = nullptr;
};
