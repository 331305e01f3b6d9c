#include "tools/zebdiag/doctor/DescriptorBounds.h"

#include <algorithm>
#include <bit>
#include <cstddef>
#include <cstring>
#include <iterator>

namespace zebdiag
{
namespace
{
using ByteView = std::span<const BYTE>;

constexpr BYTE kObjectEntries[] = {ACCESS_ALLOWED_OBJECT_ACE_TYPE,
                                   ACCESS_DENIED_OBJECT_ACE_TYPE,
                                   SYSTEM_AUDIT_OBJECT_ACE_TYPE,
                                   SYSTEM_ALARM_OBJECT_ACE_TYPE,
                                   ACCESS_ALLOWED_CALLBACK_OBJECT_ACE_TYPE,
                                   ACCESS_DENIED_CALLBACK_OBJECT_ACE_TYPE,
                                   SYSTEM_AUDIT_CALLBACK_OBJECT_ACE_TYPE,
                                   SYSTEM_ALARM_CALLBACK_OBJECT_ACE_TYPE};

// Empty for an offset behind the end.
ByteView RestFrom(ByteView bytes, size_t offset)
{
    return bytes.subspan(std::min(offset, bytes.size()));
}

template <class Value>
bool BeginsWith(ByteView bytes, Value& value)
{
    if (bytes.size() < sizeof value)
        return false;
    memcpy(&value, bytes.data(), sizeof value);
    return true;
}

bool HoldsSid(ByteView bytes)
{
    constexpr size_t kFixedPart = offsetof(SID, SubAuthority);
    return bytes.size() >= kFixedPart && bytes[0] == SID_REVISION && bytes[1] <= SID_MAX_SUB_AUTHORITIES &&
           bytes.size() >= kFixedPart + bytes[1] * sizeof(DWORD);
}

// Where the SID of an entry begins. Up to two identifiers stand before that of an object's entry.
size_t SidOffset(ByteView entry, BYTE type)
{
    if (std::ranges::find(kObjectEntries, type) == std::end(kObjectEntries))
        return offsetof(ACCESS_ALLOWED_ACE, SidStart);
    DWORD flags = 0;
    BeginsWith(RestFrom(entry, offsetof(ACCESS_ALLOWED_OBJECT_ACE, Flags)), flags);
    flags &= ACE_OBJECT_TYPE_PRESENT | ACE_INHERITED_OBJECT_TYPE_PRESENT;
    return offsetof(ACCESS_ALLOWED_OBJECT_ACE, ObjectType) +
           sizeof(GUID) * static_cast<size_t>(std::popcount(flags));
}

bool HoldsList(ByteView bytes)
{
    ACL head = {};
    if (!BeginsWith(bytes, head) || head.AclSize < sizeof head || head.AclSize > bytes.size())
        return false;
    ByteView rest = bytes.first(head.AclSize).subspan(sizeof head);
    for (unsigned left = head.AceCount; left > 0; --left)
    {
        ACE_HEADER begin = {};
        if (!BeginsWith(rest, begin) || begin.AceSize < sizeof begin || begin.AceSize > rest.size())
            return false;
        const ByteView entry = rest.first(begin.AceSize);
        if (!HoldsSid(RestFrom(entry, SidOffset(entry, begin.AceType))))
            return false;
        rest = rest.subspan(begin.AceSize);
    }
    return true;
}
} // namespace

bool IsWholeDescriptor(ByteView bytes)
{
    SECURITY_DESCRIPTOR_RELATIVE head = {};
    if (!BeginsWith(bytes, head) || head.Revision != SECURITY_DESCRIPTOR_REVISION ||
        !(head.Control & SE_SELF_RELATIVE))
        return false;
    const struct
    {
        DWORD Offset; // 0 where there is none
        bool (*IsThere)(ByteView);
    } parts[] = {
        {head.Owner, HoldsSid}, {head.Group, HoldsSid}, {head.Sacl, HoldsList}, {head.Dacl, HoldsList}};
    return std::ranges::all_of(parts,
                               [&](const auto& part) {
                                   return part.Offset == 0 || (part.Offset >= sizeof head &&
                                                               part.IsThere(RestFrom(bytes, part.Offset)));
                               });
}
} // namespace zebdiag
