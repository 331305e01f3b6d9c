// Which position each adapter had in the agent's list. Filled at start-up, only read afterwards.
#pragma once

#include "CDM/src/engine/EngineStatus.h"
#include "CDM/src/engine/naming/DiagKeys.h"

#include <map>
#include <string>

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
