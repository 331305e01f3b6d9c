// IUnknown, written once. A class derives from CComObject<First, Rest...> and gets reference counting,
// QueryInterface over the listed interfaces (identity goes through the first) and a count of live objects
// that tests compare. Free-threaded. An object is born with one reference, which belongs to its maker.
#pragma once

#include "Common/src/com/ComPtr.h"

#include <atomic>
#include <new>
#include <unknwn.h>
#include <utility>

// How many objects made from CComObject exist in this process. For tests and shutdown decisions.
inline std::atomic<long> g_liveComObjects{0};

// For an interface that derives from another one, specialise ComBaseOf to answer for the base as well.
template <class Interface>
struct ComBaseOf
{
    using Type = IUnknown;
};

template <class First, class... Rest>
class CComObject : public First, public Rest...
{
  public:
    CComObject() noexcept { ++g_liveComObjects; }
    CComObject(const CComObject&) = delete;
    CComObject& operator=(const CComObject&) = delete;

    STDMETHODIMP QueryInterface(REFIID riid, void** out) override
    {
        if (!out)
            return E_POINTER;
        *out = nullptr;
        if (IsEqualIID(riid, __uuidof(IUnknown)) || Answers<First>(riid))
            *out = static_cast<First*>(this);
        else
            (void)((Answers<Rest>(riid) ? (*out = static_cast<Rest*>(this), true) : false) || ...);
        if (!*out)
            return E_NOINTERFACE;
        AddRef();
        return S_OK;
    }
    STDMETHODIMP_(ULONG) AddRef() override { return ++m_references; }
    STDMETHODIMP_(ULONG) Release() override
    {
        const ULONG left = --m_references;
        if (left == 0)
            delete this;
        return left;
    }

  protected:
    virtual ~CComObject() { --g_liveComObjects; }

  private:
    template <class Interface>
    static bool Answers(REFIID riid) noexcept
    {
        using Base = typename ComBaseOf<Interface>::Type;
        return IsEqualIID(riid, __uuidof(Interface)) || IsEqualIID(riid, __uuidof(Base));
    }

    std::atomic<ULONG> m_references{1};
};

// Makes an object and hands its first reference to the pointer. Throws what the constructor throws.
template <class T, class... Args>
ComPtr<T> MakeCom(Args&&... args)
{
    ComPtr<T> object;
    object.Attach(new T(std::forward<Args>(args)...));
    return object;
}
