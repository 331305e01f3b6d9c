// Own permissions of the COM application, whose bytes can be anything.
#include "CommandsFixture.h"
#include "tests/support/CaseName.h"
#include "tools/zebdiag/doctor/DescriptorBounds.h"
#include "tools/zebdiag/doctor/Places.h"

#include <cstddef>
#include <stdexcept>

namespace zebdiag
{
namespace
{
constexpr WORD kEntrySize = sizeof(ACE_HEADER) + sizeof(ACCESS_MASK) + sizeof(SID);

// Everyone has one right. Laid out as the bytes in the registry are.
struct CPermissions
{
    SECURITY_DESCRIPTOR_RELATIVE Head = {
        SECURITY_DESCRIPTOR_REVISION,        0, SE_SELF_RELATIVE | SE_DACL_PRESENT, 0, 0, 0,
        sizeof(SECURITY_DESCRIPTOR_RELATIVE)};
    ACL List = {ACL_REVISION, 0, sizeof(ACL) + kEntrySize, 1, 0};
    ACE_HEADER Entry = {ACCESS_ALLOWED_ACE_TYPE, 0, kEntrySize};
    ACCESS_MASK Rights = 1;
    SID Everyone = {SID_REVISION, 1, {SECURITY_WORLD_SID_AUTHORITY}, {SECURITY_WORLD_RID}};
};
constexpr size_t kWhole = sizeof(CPermissions);
static_assert(kWhole == sizeof(SECURITY_DESCRIPTOR_RELATIVE) + sizeof(ACL) + kEntrySize);

template <class... Parts>
std::vector<BYTE> InOneRow(const Parts&... parts)
{
    std::vector<BYTE> bytes;
    const auto add = [&bytes](const auto& part)
    {
        const auto* first = reinterpret_cast<const BYTE*>(&part);
        bytes.insert(bytes.end(), first, first + sizeof part);
    };
    (add(parts), ...);
    return bytes;
}

class PermissionsTest : public CommandsTest
{
  protected:
    // What the doctor says of the application.
    nlohmann::json Identity(const std::vector<BYTE>& permissions)
    {
        m_machine.Binaries[CFakeMachine::Place(AppIdKey(kAppId), L"AccessPermission")] = permissions;
        Run({L"doctor", L"--json"});
        const nlohmann::json document = Document();
        for (const auto& point : document.at("points"))
            if (point.at("point") == "identity")
                return point;
        throw std::out_of_range("identity");
    }
};

TEST_F(PermissionsTest, AreShown)
{
    const nlohmann::json point = Identity(InOneRow(CPermissions()));
    EXPECT_EQ(point.at("state"), "good");
    EXPECT_EQ(
        point.at("finding"),
        "The provider runs as NT AUTHORITY\\LocalService. Launch permissions: as the computer's default; "
        "access permissions: D:(A;;CC;;;WD).");
}

TEST_F(PermissionsTest, ListWithoutEntriesIsShown)
{
    CPermissions permissions;
    permissions.List.AceCount = 0;
    permissions.List.AclSize = sizeof(ACL);
    const std::string finding = Identity(InOneRow(permissions.Head, permissions.List)).at("finding");
    EXPECT_TRUE(finding.ends_with("access permissions: D:.")) << finding;
}

struct DamageCase
{
    const char* name;
    void (*damage)(CPermissions&);
    size_t size; // of what is left
};

class DamagedPermissionsTest : public PermissionsTest, public testing::WithParamInterface<DamageCase>
{
};

TEST_P(DamagedPermissionsTest, AreNamed)
{
    CPermissions permissions;
    GetParam().damage(permissions);
    std::vector<BYTE> bytes = InOneRow(permissions);
    bytes.resize(GetParam().size);
    const nlohmann::json point = Identity(bytes);
    EXPECT_EQ(point.at("state"), "wrong");
    EXPECT_EQ(point.at("finding"), "The permissions of the COM application are damaged.");
}

INSTANTIATE_TEST_SUITE_P(
    Bytes, DamagedPermissionsTest,
    testing::Values(
        DamageCase{"Nothing", [](CPermissions&) {}, 0},
        DamageCase{"ShorterThanTheHead", [](CPermissions&) {}, sizeof(SECURITY_DESCRIPTOR_RELATIVE) - 1},
        DamageCase{"HeadAlone", [](CPermissions&) {}, sizeof(SECURITY_DESCRIPTOR_RELATIVE)},
        DamageCase{"LastByteIsMissing", [](CPermissions&) {}, kWhole - 1},
        DamageCase{"OtherRevision", [](CPermissions& p) { p.Head.Revision = 2; }, kWhole},
        DamageCase{"NotSelfRelative", [](CPermissions& p) { p.Head.Control = SE_DACL_PRESENT; }, kWhole},
        DamageCase{"OwnerBehindTheEnd", [](CPermissions& p) { p.Head.Owner = 0x10000; }, kWhole},
        DamageCase{"OwnerAcrossTheEnd", [](CPermissions& p) { p.Head.Owner = kWhole - 4; }, kWhole},
        DamageCase{"GroupBehindTheEnd", [](CPermissions& p) { p.Head.Group = kWhole; }, kWhole},
        DamageCase{"SystemListAcrossTheEnd", [](CPermissions& p) { p.Head.Sacl = kWhole - 4; }, kWhole},
        DamageCase{"ListBehindTheEnd", [](CPermissions& p) { p.Head.Dacl = 0xFFFFFFF0; }, kWhole},
        DamageCase{"ListInTheHead", [](CPermissions& p) { p.Head.Dacl = 4; }, kWhole},
        DamageCase{"ListAcrossTheEnd", [](CPermissions& p) { ++p.List.AclSize; }, kWhole},
        DamageCase{"ListShorterThanItsHead", [](CPermissions& p) { p.List.AclSize = 4; }, kWhole},
        DamageCase{"MoreEntriesThanThereAre", [](CPermissions& p) { p.List.AceCount = 2; }, kWhole},
        DamageCase{"EntryWithoutSize", [](CPermissions& p) { p.Entry.AceSize = 0; }, kWhole},
        DamageCase{"EntryAcrossTheEnd", [](CPermissions& p) { p.Entry.AceSize += 4; }, kWhole},
        DamageCase{"SidAcrossTheEnd", [](CPermissions& p) { p.Everyone.SubAuthorityCount = 2; }, kWhole},
        DamageCase{"SidBehindTheEnd",
                   [](CPermissions& p) { p.Entry.AceType = ACCESS_ALLOWED_OBJECT_ACE_TYPE; }, kWhole}),
    NameOf<DamageCase>);

TEST(DescriptorBoundsTest, WholeDescriptorsAreNotTakenForDamaged)
{
    CPermissions permissions;
    EXPECT_TRUE(IsWholeDescriptor(InOneRow(permissions)));
    permissions.Head.Owner = permissions.Head.Group = offsetof(CPermissions, Everyone);
    permissions.Head.Sacl = permissions.Head.Dacl;
    EXPECT_TRUE(IsWholeDescriptor(InOneRow(permissions))) << "with all four parts";
    permissions.Head.Owner = permissions.Head.Group = permissions.Head.Sacl = permissions.Head.Dacl = 0;
    EXPECT_TRUE(IsWholeDescriptor(InOneRow(permissions.Head))) << "with none";
}

TEST(DescriptorBoundsTest, IdentifiersOfAnObjectStandBeforeTheSid)
{
    constexpr WORD kMore = sizeof(DWORD) + sizeof(GUID);
    CPermissions permissions;
    permissions.List.AclSize += kMore;
    permissions.Entry.AceType = ACCESS_ALLOWED_OBJECT_ACE_TYPE;
    permissions.Entry.AceSize += kMore;
    const auto isWhole = [&permissions](DWORD flags)
    {
        return IsWholeDescriptor(InOneRow(permissions.Head, permissions.List, permissions.Entry,
                                          permissions.Rights, flags, GUID(), permissions.Everyone));
    };
    EXPECT_TRUE(isWhole(ACE_OBJECT_TYPE_PRESENT));
    EXPECT_TRUE(isWhole(ACE_INHERITED_OBJECT_TYPE_PRESENT));
    EXPECT_FALSE(isWhole(ACE_OBJECT_TYPE_PRESENT | ACE_INHERITED_OBJECT_TYPE_PRESENT));
}
} // namespace
} // namespace zebdiag
