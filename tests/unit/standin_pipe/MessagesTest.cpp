// What goes into a message comes out of it.
#include "standin/pipe/Messages.h"
#include "Common/src/com/Variant.h"
#include "standin/object/Bytes.h"
#include "standin/object/Objects.h"
#include "standin/pipe/Pipe.h"

#include <gtest/gtest.h>

namespace
{
using namespace standin;

TEST(Messages, CarryACall)
{
    CCallMessage call;
    call.What = Operation::ExecuteMethod;
    call.Service = L"service";
    call.NameSpace = L"root\\cimv2";
    call.Flags = -5;
    call.Subject = L"Class.Key=\"x\"";
    call.Detail = L"Method";
    call.Context = MakeContext();
    CVariant value = CVariant::FromText(L"S1");
    ASSERT_EQ(call.Context->SetValue(L"SessionHandle", 0, &value), S_OK);

    const CCallMessage read = DecodeCall(Encode(call));
    EXPECT_EQ(read.What, call.What);
    EXPECT_EQ(read.Service, call.Service);
    EXPECT_EQ(read.NameSpace, call.NameSpace);
    EXPECT_EQ(read.Flags, call.Flags);
    EXPECT_EQ(read.Subject, call.Subject);
    EXPECT_EQ(read.Detail, call.Detail);
    EXPECT_FALSE(read.Object);
    CVariant session;
    ASSERT_EQ(read.Context->GetValue(L"SessionHandle", 0, session.Put()), S_OK);
    EXPECT_STREQ(session.bstrVal, L"S1");
}

TEST(Messages, CarryAnOutcome)
{
    COutcome outcome(static_cast<HRESULT>(WBEM_E_NOT_FOUND));
    outcome.Text = CBstr(L"path");
    const CAnswer read = DecodeAnswer(Encode(CAnswer(outcome)));
    const COutcome& told = std::get<COutcome>(read);
    EXPECT_EQ(told.Result, outcome.Result);
    EXPECT_STREQ(told.Text.Text(), L"path");
    EXPECT_FALSE(told.Status);
    EXPECT_FALSE(told.Object);
}

TEST(Messages, TellNoTextFromAnEmptyOne)
{
    COutcome outcome;
    EXPECT_FALSE(std::get<COutcome>(DecodeAnswer(Encode(CAnswer(outcome)))).Text);
    outcome.Text = CBstr(L"");
    EXPECT_TRUE(std::get<COutcome>(DecodeAnswer(Encode(CAnswer(outcome)))).Text);
}

TEST(Messages, TellThatAnAnswerIsTooLong)
{
    COutcome outcome;
    outcome.Text = CBstr(std::wstring_view(std::wstring(kLargestFrame / sizeof(wchar_t), L'x')));
    const COutcome told = std::get<COutcome>(DecodeAnswer(Encode(CAnswer(outcome))));
    EXPECT_EQ(told.Result, static_cast<HRESULT>(WBEM_E_QUOTA_VIOLATION));
    EXPECT_FALSE(told.Text);
}

TEST(Messages, RefuseBytesThatEndTooSoon)
{
    const std::vector<BYTE> bytes = Encode(CCallMessage());
    for (size_t size = 0; size < bytes.size(); ++size)
        EXPECT_THROW(DecodeCall(std::span(bytes).first(size)), CBadBytes) << size;
}
} // namespace
