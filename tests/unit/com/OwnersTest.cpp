#include "Common/src/com/CriticalSection.h"
#include "Common/src/com/Owned.h"
#include "Common/src/com/SafeArray.h"
#include "Common/src/com/Variant.h"

#include <gtest/gtest.h>

namespace
{
struct CountingTraits
{
    using Type = int;
    static inline int closed = 0;
    static Type Empty() noexcept { return 0; }
    static void Close(Type) noexcept { ++closed; }
};

TEST(Owned, ClosesOnceOnEveryPath)
{
    CountingTraits::closed = 0;
    {
        COwned<CountingTraits> first(1);
        COwned<CountingTraits> second(std::move(first));
        EXPECT_FALSE(first); // NOLINT(bugprone-use-after-move): what a move leaves is what is tested
        *second.Put() = 2;
        EXPECT_EQ(1, CountingTraits::closed);
        EXPECT_EQ(2, second.Detach());
        second.Reset(3);
    }
    EXPECT_EQ(2, CountingTraits::closed);
}

TEST(Bstr, KeepsNullApartFromEmpty)
{
    EXPECT_FALSE(CBstr());
    EXPECT_FALSE(CBstr(static_cast<const wchar_t*>(nullptr)));
    EXPECT_TRUE(CBstr(L""));
    EXPECT_STREQ(L"", CBstr().Text());
    const CBstr copied = CBstr(L"link");
    EXPECT_EQ(4u, CBstr(copied).Length());
    EXPECT_EQ(std::wstring_view(L"a\0b", 3), CBstr(std::wstring_view(L"a\0b", 3)).View());
}

TEST(Bstr, AnOutParameterStartsFromNull)
{
    CBstr text(L"link");
    EXPECT_EQ(nullptr, *text.Put());
}

TEST(Variant, OwnsWhatItHolds)
{
    CVariant text = CVariant::FromText(L"x");
    CVariant moved = std::move(text);
    EXPECT_EQ(VT_EMPTY, text.vt); // NOLINT(bugprone-use-after-move): likewise
    EXPECT_STREQ(L"x", moved.bstrVal);
    moved.Put();
    EXPECT_EQ(VT_EMPTY, moved.vt);
    EXPECT_EQ(VARIANT_TRUE, CVariant::FromBool(true).boolVal);
}

TEST(SafeArrayView, ChecksTypeAndDimensions)
{
    CSafeArray array(SafeArrayCreateVector(VT_I4, 0, 3));
    LONG index = 1;
    LONG value = 42;
    ASSERT_EQ(S_OK, SafeArrayPutElement(array.Get(), &index, &value));
    const CSafeArrayView<LONG> view(array.Get(), VT_I4);
    ASSERT_TRUE(view.Valid());
    ASSERT_EQ(3u, view.Items().size());
    EXPECT_EQ(42, view.Items()[1]);
    EXPECT_FALSE(CSafeArrayView<BSTR>(array.Get(), VT_BSTR).Valid());
    EXPECT_FALSE(CSafeArrayView<LONG>(nullptr, VT_I4).Valid());
}
} // namespace
