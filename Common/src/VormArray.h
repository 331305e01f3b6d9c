// Lists that cross the agent interface: a block from the COM task allocator with a 32-bit count. Whoever
// receives one frees it, never the agent.
#pragma once

#include <memory>
#include <objbase.h>
#include <span>

template <class T>
struct VormArray
{
    T* items = nullptr;
    ULONG count = 0;
};

// Frees a list of strings with its strings.
void VormDeleteData(VormArray<BSTR>& list) noexcept;

// Frees the block of a list of plain records.
void VormDeleteRecords(void* items) noexcept;
template <class T>
void VormDeleteData(VormArray<T>& list) noexcept
{
    VormDeleteRecords(list.items);
    list = {};
}

// A counted holder of such a list: copies share it, and the last one that lets go frees it.
template <class T>
class CVormArray
{
  public:
    CVormArray() : m_list(new VormArray<T>(), Free{}) {}

    T* Items() const noexcept { return m_list->items; }
    ULONG Count() const noexcept { return m_list->count; }
    std::span<T> View() const noexcept { return {Items(), Items() ? Count() : 0}; }
    // How many holders share the list.
    long Holders() const noexcept { return m_list.use_count(); }

    // Where an enumeration of the agent stores its list. Only for a holder that has no list yet.
    T** PutItems() noexcept { return &m_list->items; }
    ULONG* PutCount() noexcept { return &m_list->count; }

    // Makes room for `count` elements, all zero, in a holder that has no list yet. E_OUTOFMEMORY leaves it
    // without one.
    HRESULT Allocate(ULONG count) noexcept
    {
        const size_t size = sizeof(T) * static_cast<size_t>(count);
        T* const items = static_cast<T*>(CoTaskMemAlloc(size ? size : 1));
        if (!items)
            return E_OUTOFMEMORY;
        std::uninitialized_value_construct_n(items, count);
        m_list->items = items;
        m_list->count = count;
        return S_OK;
    }

  private:
    struct Free
    {
        void operator()(VormArray<T>* list) const noexcept
        {
            VormDeleteData(*list);
            delete list;
        }
    };

    std::shared_ptr<VormArray<T>> m_list;
};
