// The map from a key to an object that several requests share. Keys are matched in their folded form. A
// reader gets a reference of its own on the object; an enumeration walks the map as it stood when it began,
// while others add and remove.
#pragma once

#include "CDM/src/engine/DiagKeys.h"
#include "CDM/src/engine/EngineBoundary.h"
#include "CDM/src/engine/EngineStatus.h"
#include "CDM/src/engine/SharedLock.h"
#include "Common/src/VormArray.h"

#include <atomic>
#include <map>
#include <memory>
#include <string>
#include <string_view>

template <class T>
class CDiagMap
{
  public:
    CDiagMap() = default;
    CDiagMap(const CDiagMap&) = delete;
    CDiagMap& operator=(const CDiagMap&) = delete;

    // To be called before anything is added; until then the map is empty. False where memory ran out.
    bool Create()
    {
        m_objects = TryMake<Objects>();
        return m_objects != nullptr;
    }

    // engine::AlreadyPresent keeps the object that is there. Throws std::bad_alloc, as the others do.
    HRESULT AddObj(BSTR key, std::shared_ptr<T> object)
    {
        std::wstring folded = FoldKey(key);
        const CWriteScope held(m_lock);
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

    HRESULT RemoveObj(BSTR key)
    {
        const std::wstring folded = FoldKey(key);
        std::shared_ptr<T> removed; // dies after the lock is given up
        const CWriteScope held(m_lock);
        Objects& objects = Writable();
        const auto found = objects.find(folded);
        if (found == objects.end())
            return engine::NotFound;
        removed = std::move(found->second);
        objects.erase(found);
        return S_OK;
    }

    // All keys in map order.
    HRESULT EnumObj(CVormArray<BSTR>& keys) const
    {
        const std::shared_ptr<const Objects> objects = Snapshot();
        CVormArray<BSTR> list;
        if (FAILED(list.Allocate(objects ? static_cast<ULONG>(objects->size()) : 0)))
            return wmi::OutOfMemory;
        BSTR* item = list.Items();
        if (objects)
            for (const auto& [key, object] : *objects)
            {
                *item = SysAllocStringLen(key.data(), static_cast<UINT>(key.size()));
                if (!*item++)
                    return wmi::OutOfMemory;
            }
        keys = list;
        return S_OK;
    }

  private:
    using Objects = std::map<std::wstring, std::shared_ptr<T>, std::less<>>;

    std::shared_ptr<const Objects> Snapshot() const
    {
        const CReadScope held(m_lock);
        return m_objects;
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
};
