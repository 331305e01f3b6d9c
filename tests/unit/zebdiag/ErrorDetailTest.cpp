#include "tools/zebdiag/ErrorDetail.h"

#include "Common/src/com/Variant.h"
#include "InstanceError.h"
#include "standin/object/Objects.h"
#include "tests/support/ServedSchema.h"

#include <gtest/gtest.h>

namespace zebdiag
{
namespace
{
void Put(const ComPtr<IWbemClassObject>& object, const wchar_t* name, CVariant value)
{
    ASSERT_EQ(object->Put(name, 0, &value, 0), S_OK);
}

class ErrorDetailTest : public testing::Test
{
  protected:
    void SetUp() override { ClearErrorDetail(); }

    void Leave(ComPtr<IWbemClassObject> instance)
    {
        const ComPtr<CInstanceError> error = MakeCom<CInstanceError>(std::move(instance));
        ASSERT_EQ(SetErrorInfo(0, error.Get()), S_OK);
    }
    ComPtr<IWbemClassObject> m_status =
        standin::MakeInstance(ServedSchema().GetDefinition(kServedNamespace, L"Tolva_ExtendedStatus"));
};

TEST_F(ErrorDetailTest, ExtendedStatusIsPutIntoWords)
{
    Put(m_status, L"Description", CVariant::FromText(L"The test could not be read."));
    Put(m_status, L"Operation", CVariant::FromText(L"GetObjectAsync"));
    Put(m_status, L"ParameterInfo", CVariant::FromText(L"Name"));
    Put(m_status, L"StatusCode", CVariant::FromLong(static_cast<LONG>(0x8004091A)));
    Put(m_status, L"File", CVariant::FromText(L"CDM/src/ProviderImp"));
    Put(m_status, L"Line", CVariant::FromLong(361));
    Leave(m_status);
    EXPECT_EQ(TakeErrorDetail(),
              L"The test could not be read. (operation GetObjectAsync, on Name, status 0x8004091A, "
              L"at CDM/src/ProviderImp:361)");
}

TEST_F(ErrorDetailTest, ReasonsFollowOnLinesOfTheirOwn)
{
    SAFEARRAY* reasons = SafeArrayCreateVector(VT_BSTR, 0, 2);
    for (LONG i = 0; i < 2; ++i)
        SafeArrayPutElement(reasons, &i, CBstr(i ? L"second" : L"first").Get());
    Put(m_status, L"Description", CVariant::FromText(L"No."));
    Put(m_status, L"RuleFailureReasons", CVariant::FromArray(reasons, VT_BSTR));
    Leave(m_status);
    EXPECT_EQ(TakeErrorDetail(), L"No.\nfirst\nsecond");
}

TEST_F(ErrorDetailTest, StatusWithoutDescriptionSaysWhereItWas)
{
    Put(m_status, L"Operation", CVariant::FromText(L"PutInstanceAsync"));
    Leave(m_status);
    EXPECT_EQ(TakeErrorDetail(), L"operation PutInstanceAsync");
}

TEST_F(ErrorDetailTest, EmptyStatusSaysNothing)
{
    Leave(m_status);
    EXPECT_EQ(TakeErrorDetail(), L"");
}

TEST_F(ErrorDetailTest, NoErrorObject)
{
    EXPECT_EQ(TakeErrorDetail(), L"");
}

TEST_F(ErrorDetailTest, ErrorObjectOfAnotherKind)
{
    Leave(nullptr);
    EXPECT_EQ(TakeErrorDetail(), L"");
}

// What one call left must not be taken for the detail of the next.
TEST_F(ErrorDetailTest, IsTakenOnce)
{
    Put(m_status, L"Description", CVariant::FromText(L"No."));
    Leave(m_status);
    EXPECT_EQ(TakeErrorDetail(), L"No.");
    EXPECT_EQ(TakeErrorDetail(), L"");
    Leave(m_status);
    ClearErrorDetail();
    EXPECT_EQ(TakeErrorDetail(), L"");
}
} // namespace
} // namespace zebdiag
