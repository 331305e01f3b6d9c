// A result as bytes: one stream per value in the result's own sub-storage, and back. A stream is named by the
// value's prefix and the result identifier. It holds a 32-bit byte count and that many bytes of UTF-16 text,
// the terminating NUL included. Never reads more than a stream has, whatever its count says. Throws
// std::bad_alloc.
#pragma once

#include "CDM/src/engine/DiagRecords.h"

#include <objidl.h>
#include <string>

class CResultStreams
{
  public:
    // Whose result the sub-storage holds.
    enum class Owner
    {
        ThisAdapter,
        OtherAdapter,
        OtherVersion,
        Illegible // traced
    };

    CResultStreams(IStorage& storage, std::wstring resultId) : m_storage(storage), m_id(std::move(resultId))
    {
    }

    // Into an empty sub-storage. A value whose stream cannot be made is left out, which is traced. Fails for
    // a stream that takes no text, as the file takes no more then.
    HRESULT Write(const CResultData& data, const std::wstring& adapterKey);
    Owner ReadOwner(const std::wstring& adapterKey);
    // Values without a stream stay as they are. wmi::Failed, traced, for a damaged one.
    HRESULT Read(CResultData& data);

  private:
    enum class Found
    {
        Yes,
        Missing, // traced
        Refused, // the stream is there and cannot be opened, which is traced, or not be read
        Damaged  // its content is not such a text
    };

    HRESULT WriteText(const std::wstring& name, const std::wstring& text);
    HRESULT WriteMessages(const CResultData& data);
    Found ReadText(const std::wstring& name, std::wstring& text);
    bool ReadNumber(const std::wstring& name, ULONG& number);
    HRESULT ReadMessages(CResultData& data);
    Owner Illegible(const wchar_t* prefix) const;
    HRESULT Damaged(const std::wstring& name) const;
    std::wstring Name(const wchar_t* prefix) const { return prefix + m_id; }

    IStorage& m_storage;
    const std::wstring m_id;
};
