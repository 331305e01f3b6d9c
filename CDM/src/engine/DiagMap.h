// The map from a key to an object that several requests share. Keys are matched in their folded form. A
// reader gets a reference of its own on the object; an enumeration gives the keys as they were when it began,
// while others add and remove. Maps change seldom and are asked often: the sorted list of their keys is kept
// until the next change.
#pragma once

#include "CDM/src/ZebTrace.h"
#include "CDM/src/engine/DiagObject.h"
#include "CDM/src/engine/EngineStatus.h"
#include "CDM/src/engine/naming/DiagKeys.h"
#include "Common/src/VormArray.h"

#include <algorithm>
#include <atomic>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

template <class T>
class CDiagMap
{
  public:
    CDiagMap() = default;
    CDiagMap(const CDiagMap&) = delete;
    CDiagMap& operator=(const CDiagMap&) = delete;

    // To be called before anything is added; until then the map is empty. `failure` tells of no memory for
    // it.
    HRESULT Create(const char* failure)
    {
        m_objects = TryMake<Objects>();
        return m_objects ? S_OK : OutOfMemory(failure);
    }

    // engine::AlreadyPresent keeps the object that is there. Throws std::bad_alloc, as the others do.
    HRESULT AddObj(BSTR key, std::shared_ptr<T> object)
    {
        std::wstring folded = FoldKey(key);
        KeyList outdated; // dies after the lock is given up
        const CWriteScope held(m_lock);
        outdated.swap(m_keys);
        return Writable().emplace(std::move(folded), std::move(object)).second ? S_OK
                                                                               : engine::AlreadyPresent;
    }

    HRESULT GetObj(BSTR key, std::shared_ptr<T>& object) const
    {
        // Most keys come from an enumeration and are folded already: the conversion is left for the others.
        object = Find(key ? std::wstring_view(key) : std::wstring_view());
        if (!object)
            object = Find(FoldKey(key));
        return object ? S_OK : engine::NotFound;
    }

    bool Contains(BSTR key) const
    {
        std::shared_ptr<T> object;
        return WithinMemory([&] { return GetObj(key, object); }) == S_OK;
    }

    HRESULT RemoveObj(BSTR key)
    {
        const std::wstring folded = FoldKey(key);
        std::shared_ptr<T> removed; // these die after the lock is given up
        KeyList outdated;
        const CWriteScope held(m_lock);
        outdated.swap(m_keys);
        Objects& objects = Writable();
        const auto found = objects.find(folded);
        if (found == objects.end())
            return engine::NotFound;
        removed = std::move(found->second);
        objects.erase(found);
        return S_OK;
    }

    // All objects, in no order.
    std::vector<std::shared_ptr<T>> All() const
    {
        std::vector<std::shared_ptr<T>> list;
        const CReadScope held(m_lock);
        if (m_objects)
            for (const auto& [key, object] : *m_objects)
                list.push_back(object);
        return list;
    }

    // All keys, in the order of their text. The list is shared: it is read only, and the same one until
    // the map changes.
    HRESULT EnumObj(CVormArray<BSTR>& keys) const
    {
        std::shared_ptr<const Objects> objects;
        // Freeing a list is traced, so that none may go while the lock is held, the caller's old one neither.
        KeyList known;
        {
            const CReadScope held(m_lock);
            known = m_keys;
            if (!known)
                objects = m_objects;
        }
        if (known)
        {
            keys = *known;
            return S_OK;
        }
        CVormArray<BSTR> list;
        if (const HRESULT hr = ListKeys(objects.get(), list); FAILED(hr))
            return hr;
        keys = list;
        // A writer in the meantime has gone on with another map: this one was in use.
        const CWriteScope held(m_lock);
        if (objects == m_objects && !m_keys)
            m_keys = list;
        return S_OK;
    }

  private:
    struct CHash
    {
        using is_transparent = void;
        size_t operator()(std::wstring_view key) const noexcept
        {
            return std::hash<std::wstring_view>()(key);
        }
    };
    using Objects = std::unordered_map<std::wstring, std::shared_ptr<T>, CHash, std::equal_to<>>;
    using KeyList = std::optional<CVormArray<BSTR>>;

    static HRESULT ListKeys(const Objects* objects, CVormArray<BSTR>& list)
    {
        std::vector<std::wstring_view> sorted;
        if (objects)
            for (const auto& [key, object] : *objects)
                sorted.push_back(key);
        std::sort(sorted.begin(), sorted.end());
        if (FAILED(list.Allocate(static_cast<ULONG>(sorted.size()))))
            return wmi::OutOfMemory;
        BSTR* item = list.Items();
        for (const std::wstring_view key : sorted)
        {
            *item = SysAllocStringLen(key.data(), static_cast<UINT>(key.size()));
            if (!*item++)
                return wmi::OutOfMemory;
        }
        return S_OK;
    }

    std::shared_ptr<T> Find(std::wstring_view key) const
    {
        const CReadScope held(m_lock);
        if (!m_objects)
            return nullptr;
        const auto found = m_objects->find(key);
        return found == m_objects->end() ? nullptr : found->second;
    }

    // The map for a writer that holds the lock: a copy where an enumeration still walks the present one.
    Objects& Writable()
    {
        if (m_objects.use_count() > 1)
            m_objects = std::make_shared<Objects>(*m_objects);
        // The enumeration that let go last must have finished reading before the map changes.
        std::atomic_thread_fence(std::memory_order_acquire);
        return *m_objects;
    }

    mutable CSharedLock m_lock;
    std::shared_ptr<Objects> m_objects;
    mutable KeyList m_keys; // of the map as it is; empty until it is asked for
};

// What `action` makes of the object with this key. A key that is not there is traced as `failure`.
template <class T, class Action>
HRESULT WithObject(const CDiagMap<T>& map, BSTR key, const char* failure, Action&& action)
{
    return WithinMemory(
        [&]
        {
            std::shared_ptr<T> object;
            const HRESULT hr = map.GetObj(key, object);
            return Failed(hr, failure) ? hr : action(*object);
        });
}

template <class T, class Data>
HRESULT ReadObject(const CDiagMap<T>& map, BSTR key, const char* failure, Data* data)
{
    if (!data)
        return E_POINTER;
    return WithObject(map, key, failure, [&](const T& object) { return *data = object.Data(), S_OK; });
}

template <class T>
HRESULT EnumKeys(const CDiagMap<T>& map, const char* failure, CVormArray<BSTR>& keys)
{
    const HRESULT hr = WithinMemory([&] { return map.EnumObj(keys); });
    Failed(hr, failure);
    return hr;
}

// Which position each adapter had in the agent's list. Filled at start-up, only read afterwards.
class CIndexMap
{
  public:
    // engine::AlreadyPresent keeps the first index. Throws std::bad_alloc.
    HRESULT AddIndexToMap(BSTR adapterKey, const CBstr& index)
    {
        return m_indexes.emplace(FoldKey(adapterKey), index).second ? S_OK : engine::AlreadyPresent;
    }

    // A null BSTR for an unknown adapter.
    CBstr GetIndexFromMap(BSTR adapterKey) const
    {
        const auto found = m_indexes.find(FoldKey(adapterKey));
        return found == m_indexes.end() ? CBstr() : found->second;
    }

  private:
    std::map<std::wstring, CBstr> m_indexes;
};
