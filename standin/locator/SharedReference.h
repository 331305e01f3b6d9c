// A reference to a COM object, left under a name for another process.
//
// It does what COM's table of running servers does, and what that one under Wine does not: who is killed
// takes his reference along.
#pragma once

#include "Common/src/com/ComPtr.h"
#include "Common/src/com/Owned.h"

#include <objidl.h>

namespace standin
{
// Room for one reference. The name lives as long as somebody has the room.
class CSharedReference
{
  public:
    // Makes the room, or finds it where it has been made. False where it can be neither.
    bool Create(const wchar_t* name) noexcept;
    bool Open(const wchar_t* name) noexcept;

    // Leaves a reference, of which `marshalFlags` (MSHLFLAGS) says how often it may be taken.
    HRESULT Leave(REFIID riid, IUnknown* object, DWORD marshalFlags) noexcept;
    // Empties the room.
    void Withdraw() noexcept;
    bool Empty() const noexcept;
    // RPC_S_SERVER_UNAVAILABLE where nothing has been left.
    HRESULT Take(REFIID riid, void** out) const noexcept;

  private:
    struct CRoom;
    struct ViewTraits
    {
        using Type = CRoom*;
        static Type Empty() noexcept { return nullptr; }
        static void Close(Type view) noexcept { UnmapViewOfFile(view); }
    };

    CHandle m_section;
    COwned<ViewTraits> m_room;
};
} // namespace standin
