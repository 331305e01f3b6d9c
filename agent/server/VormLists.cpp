#include "agent/server/VormLists.h"

#include "Common/src/com/Bstr.h"
#include "Common/src/com/Owned.h"

#include <algorithm>
#include <limits>

namespace
{
// An owner of `count` zeroed elements; null if memory ran out.
template <class T>
CCoTaskMem<T> MakeBlock(size_t count) noexcept
{
    CCoTaskMem<T> block;
    if (count <= std::numeric_limits<ULONG>::max() / sizeof(T))
        block.Reset(static_cast<T*>(CoTaskMemAlloc(count * sizeof(T))));
    if (block)
        std::fill_n(block.Get(), count, T());
    return block;
}
} // namespace

HRESULT HandOutKeys(const std::vector<std::wstring>& keys, ULONG* count, BSTR** out)
{
    *count = 0;
    *out = nullptr;
    if (keys.empty())
        return S_OK;
    std::vector<CBstr> texts;
    texts.reserve(keys.size());
    for (const std::wstring& key : keys)
        texts.emplace_back(std::wstring_view(key));
    CCoTaskMem<BSTR> block = MakeBlock<BSTR>(keys.size());
    if (!block)
        return E_OUTOFMEMORY;
    std::transform(texts.begin(), texts.end(), block.Get(), [](CBstr& text) { return text.Detach(); });
    *count = static_cast<ULONG>(keys.size());
    *out = block.Detach();
    return S_OK;
}

HRESULT HandOutTests(const std::vector<VormTestDescriptor>& tests, ULONG* count, VormTestDescriptor** out)
{
    *count = 0;
    *out = nullptr;
    if (tests.empty())
        return S_OK;
    CCoTaskMem<VormTestDescriptor> block = MakeBlock<VormTestDescriptor>(tests.size());
    if (!block)
        return E_OUTOFMEMORY;
    std::copy(tests.begin(), tests.end(), block.Get());
    *count = static_cast<ULONG>(tests.size());
    *out = block.Detach();
    return S_OK;
}
