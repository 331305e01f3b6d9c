#include "CDM/src/classes/TestHandler.h"
#include "tests/unit/classes/HandlerTest.h"

namespace
{
class DiagTestInstancesTest : public HandlerTest
{
  protected:
    HRESULT GetObjectOf(const wchar_t* path)
    {
        return Prepared(m_handler).GetObjectAsync(Path(path), Context(), m_sink);
    }
    HRESULT Enumerate() { return Prepared(m_handler).CreateInstanceEnumAsync(Context(), m_sink); }

    CTolva_DiagTest m_handler;
};

TEST_F(DiagTestInstancesTest, ServesTheTestClass)
{
    EXPECT_STREQ(m_handler.GetClassName(), L"Tolva_DiagTest");
}

TEST_F(DiagTestInstancesTest, InstanceHoldsTheRecord)
{
    CTestData& record = m_manager.Tests[L"9@B"];
    record.Characteristics = {2, 7};
    record.ResourcesUsed = {5, 3, 4};
    record.Locked = 1;
    EXPECT_EQ(GetObjectOf(L"Tolva_DiagTest.Name=\"9@B\""), S_OK);

    ASSERT_EQ(Indicated().size(), 1u);
    const ComPtr<IWbemClassObject> instance = Indicated()[0];
    EXPECT_EQ(ReadText(instance, L"__CLASS"), L"Tolva_DiagTest");
    EXPECT_EQ(ReadText(instance, L"Name"), L"9@B");
    EXPECT_EQ(ReadText(instance, L"Caption"), L"_8023 3509");
    EXPECT_EQ(Read(instance, L"IsInUse").boolVal, VARIANT_TRUE);
    EXPECT_EQ(ReadText(instance, L"Description"), L"_8023 3609");
    EXPECT_TRUE(IsNull(instance, L"OtherCharacteristicDescription"));
    EXPECT_EQ(ReadLongs(instance, L"Characteristics"), (std::vector<LONG>{2, 7}));
    EXPECT_EQ(ReadLongs(instance, L"ResourcesUsed"), (std::vector<LONG>{5, 3, 4}));
    EXPECT_EQ(ReadText(instance, L"CreationClassName"), L"Tolva_DiagTest");
    EXPECT_EQ(ReadText(instance, L"SystemCreationClassName"), L"Win32_ComputerSystem");
    EXPECT_EQ(ReadText(instance, L"SystemName"), ComputerName());
    EXPECT_EQ(m_plan->Count(CCallPlan::Call::Put), 10);
    EXPECT_TRUE(m_sink->Statuses().empty());
}

TEST_F(DiagTestInstancesTest, EmptyListsArriveAsEmptyArrays)
{
    m_manager.Tests[L"1@A"].Characteristics.clear();
    EXPECT_EQ(GetObjectOf(L"Tolva_DiagTest.Name=\"1@A\""), S_OK);
    ASSERT_EQ(Indicated().size(), 1u);
    EXPECT_TRUE(ReadLongs(Indicated()[0], L"Characteristics").empty());
    EXPECT_TRUE(ReadLongs(Indicated()[0], L"ResourcesUsed").empty());
    EXPECT_EQ(Read(Indicated()[0], L"IsInUse").boolVal, VARIANT_FALSE);
}

struct PathCase
{
    const char* name;
    const wchar_t* path;
    HRESULT status;
};

class DiagTestPathTest : public DiagTestInstancesTest, public testing::WithParamInterface<PathCase>
{
};

TEST_P(DiagTestPathTest, Answers)
{
    EXPECT_EQ(GetObjectOf(GetParam().path), GetParam().status);
    EXPECT_EQ(Indicated().size(), SUCCEEDED(GetParam().status) ? 1u : 0u);
}

INSTANTIATE_TEST_SUITE_P(
    Paths, DiagTestPathTest,
    testing::Values(
        PathCase{"KeyInOtherCase", L"Tolva_DiagTest.NAME=\"1@A\"", S_OK},
        PathCase{"UnnamedKey", L"Tolva_DiagTest=\"1@A\"", S_OK},
        PathCase{"FullKeySet",
                 L"Tolva_DiagTest.CreationClassName=\"Tolva_DiagTest\",Name=\"1@A\",SystemName=\"X\"", S_OK},
        PathCase{"NoSuchTest", L"Tolva_DiagTest.Name=\"7@A\"", wmi::NotFound},
        PathCase{"NumberAsName", L"Tolva_DiagTest.Name=7", wmi::NotFound},
        PathCase{"EmptyName", L"Tolva_DiagTest.Name=\"\"", wmi::NotFound},
        PathCase{"QuotesInName", L"Tolva_DiagTest.Name=\"1@\\\"A\\\\\\\"\"", wmi::NotFound},
        PathCase{"OtherKey", L"Tolva_DiagTest.Caption=\"1@A\"", wmi::NotFound},
        PathCase{"NoKey", L"Tolva_DiagTest", wmi::NotFound}),
    [](const auto& info) { return info.param.name; });

TEST_F(DiagTestInstancesTest, NameOfTenThousandCharactersIsNotFound)
{
    const std::wstring path = L"Tolva_DiagTest.Name=\"" + std::wstring(10000, L'x') + L"\"";
    EXPECT_EQ(GetObjectOf(path.c_str()), wmi::NotFound);
}

TEST_F(DiagTestInstancesTest, MissingTestLeavesNoLineOfItsOwn)
{
    const CTraceCapture trace;
    EXPECT_EQ(GetObjectOf(L"Tolva_DiagTest.Name=\"7@A\""), wmi::NotFound);
    EXPECT_EQ(trace.Count("} <-- CTolva_DiagTest::GetObjectAsync"), 1u);
    EXPECT_FALSE(trace.Has("Tolva_DiagTest:GetObjectAsync:"));
}

TEST_F(DiagTestInstancesTest, OtherFailuresOfTheManagerPassThrough)
{
    m_manager.Answers[L"GetTestData"] = E_POINTER;
    const CTraceCapture trace;
    EXPECT_EQ(GetObjectOf(L"Tolva_DiagTest.Name=\"1@A\""), E_POINTER);
    EXPECT_TRUE(trace.Has("Tolva_DiagTest:GetObjectAsync:GetTestData failed, hr = <80004003>"));
    EXPECT_EQ(Enumerate(), E_POINTER);
    EXPECT_TRUE(trace.Has("Tolva_DiagTest:CreateInstanceEnumAsync:GetTestData failed, hr = <80004003>"));
    EXPECT_TRUE(Indicated().empty());
}

TEST_F(DiagTestInstancesTest, EnumerationSendsEveryTestInOrder)
{
    EXPECT_EQ(Enumerate(), S_OK);
    ASSERT_EQ(Indicated().size(), 3u);
    EXPECT_EQ(ReadText(Indicated()[0], L"Name"), L"1@A");
    EXPECT_EQ(ReadText(Indicated()[1], L"Name"), L"2@A");
    EXPECT_EQ(ReadText(Indicated()[2], L"Name"), L"9@B");
    EXPECT_EQ(ReadText(Indicated()[1], L"Caption"), L"_8023 3502");
    EXPECT_EQ(m_sink->Indications(), (std::vector<long>{1, 1, 1}));
    EXPECT_EQ(m_services->GetCalls().size(), 1u);
}

TEST_F(DiagTestInstancesTest, EveryInstanceAsksForItsTextsAndTheComputersName)
{
    m_manager.Tests[L"2@A"].NameStringID = 3501;
    const CTraceCapture trace;
    EXPECT_EQ(Enumerate(), S_OK);
    EXPECT_EQ(m_texts.Asked, (std::vector<UINT>{3501, 3601, 3501, 3602, 3509, 3609}));
    EXPECT_EQ(trace.Count("Computer name is "), 3u);
}

TEST_F(DiagTestInstancesTest, EnumerationOfNoTestsSucceeds)
{
    m_manager.Tests.clear();
    EXPECT_EQ(Enumerate(), S_OK);
    EXPECT_TRUE(m_sink->Indications().empty());
}

TEST_F(DiagTestInstancesTest, EnumerationThatCannotBeginFails)
{
    m_manager.Answers[L"EnumTests"] = E_OUTOFMEMORY;
    const CTraceCapture trace;
    EXPECT_EQ(Enumerate(), E_OUTOFMEMORY);
    EXPECT_TRUE(trace.Has("Tolva_DiagTest:CreateInstanceEnumAsync:EnumTests failed, hr = <8007000e>"));
}

TEST_F(DiagTestInstancesTest, EnumerationEndsAtTheFirstTestThatCannotBeRead)
{
    m_manager.Answers[L"GetTestData 2@A"] = engine::NotFound;
    EXPECT_EQ(Enumerate(), engine::NotFound);
    EXPECT_EQ(Indicated().size(), 1u);
}

TEST_F(DiagTestInstancesTest, CaptionThatCannotBeHadEndsTheEnumeration)
{
    m_texts.NotWidened = {3502};
    const CTraceCapture trace;
    EXPECT_EQ(Enumerate(), E_FAIL);
    EXPECT_EQ(trace.Count("CTolva_DiagTest::SendInstance:GetResourceString for caption failed"), 1u);
    EXPECT_EQ(trace.Count("Tolva_DiagTest:CreateInstanceEnumAsync:SendInstance failed, hr = <80004005>"), 1u);
    EXPECT_EQ(Indicated().size(), 1u);
}

TEST_F(DiagTestInstancesTest, DescriptionThatCannotBeHadEndsTheRequest)
{
    m_texts.NotWidened = {3601};
    const CTraceCapture trace;
    EXPECT_EQ(GetObjectOf(L"Tolva_DiagTest.Name=\"1@A\""), E_FAIL);
    EXPECT_EQ(trace.Count("CTolva_DiagTest::SendInstance:GetResourceString for Description failed"), 1u);
    EXPECT_EQ(trace.Count("Tolva_DiagTest:GetObjectAsync:SendInstance failed, hr = <80004005>"), 1u);
    EXPECT_TRUE(Indicated().empty());
    EXPECT_EQ(m_plan->Count(CCallPlan::Call::Put), 3);
}

TEST_F(DiagTestInstancesTest, DefaultOfTheClassDoesNotShineThrough)
{
    auto definition = std::make_shared<standin::CClassDefinition>(
        *ServedSchema().GetDefinition(kServedNamespace, L"Tolva_DiagTest"));
    definition->PropertyAt(definition->IndexOf(L"OtherCharacteristicDescription")).Default =
        CVariant::FromText(L"from the class");
    m_services = MakeCom<CFakeServices>([definition](const std::wstring&)
                                        { return standin::MakeClassObject(definition); });
    EXPECT_EQ(GetObjectOf(L"Tolva_DiagTest.Name=\"1@A\""), S_OK);
    ASSERT_EQ(Indicated().size(), 1u);
    EXPECT_TRUE(IsNull(Indicated()[0], L"OtherCharacteristicDescription"));
}
} // namespace
