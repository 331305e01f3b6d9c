#include "tests/support/FakeCallContext.h"
#include "tests/support/FakeSink.h"
#include "tests/unit/framework/FrameworkTest.h"

#include <atomic>
#include <barrier>
#include <thread>

using testing::ElementsAre;

namespace
{
constexpr HRESULT kRefused = static_cast<HRESULT>(0x80041017);

// Lets go of the object and tells whether nobody else held it.
template <class T>
bool WasLastReference(ComPtr<T>& object)
{
    const long before = g_liveComObjects;
    object.Reset();
    return g_liveComObjects < before;
}

class ClassObjectTest : public FrameworkTest
{
};

TEST_F(ClassObjectTest, IsBornWithOneReference)
{
    const auto wrapper = Wrapper();
    EXPECT_EQ(2u, wrapper->AddRef());
    EXPECT_EQ(1u, wrapper->Release());
    EXPECT_EQ(nullptr, wrapper->Object());
}

TEST_F(ClassObjectTest, WrapTakesAReferenceAndReleasesThePreviousObject)
{
    auto first = standin::MakeInstance(SampleClass());
    auto second = standin::MakeInstance(SampleClass());
    const auto wrapper = Wrapper();
    wrapper->Wrap(first.Get());
    wrapper->Wrap(second.Get());
    EXPECT_TRUE(WasLastReference(first));
    EXPECT_EQ(second.Get(), wrapper->Object());
    EXPECT_FALSE(WasLastReference(second));
    const long held = g_liveComObjects;
    wrapper->Wrap(nullptr);
    EXPECT_EQ(nullptr, wrapper->Object());
    EXPECT_EQ(held - 1, g_liveComObjects);
}

TEST_F(ClassObjectTest, CreateClassAsksForTheLocalisedDefinitionWithTheCallersContext)
{
    const auto caller = standin::MakeContext();
    m_context = MakeContext(caller.Get());
    const auto wrapper = Wrapper();
    const CTraceCapture trace;
    EXPECT_EQ(S_OK, wrapper->CreateClass(L"Tolva_Sample"));
    ASSERT_EQ(1u, m_services->GetCalls().size());
    const CFakeServices::CGetCall call = m_services->GetCalls()[0];
    EXPECT_EQ(L"Tolva_Sample", call.Path);
    EXPECT_EQ(0x20000, call.Flags);
    EXPECT_EQ(caller.Get(), call.Context);
    EXPECT_THAT(trace.Lines(),
                ElementsAre(" { --> CWomClassObject::CreateClass", testing::StartsWith("Locking "), "Entered",
                            testing::StartsWith("Unlocking "), " } <-- CWomClassObject::CreateClass"));
}

TEST_F(ClassObjectTest, AClassIsFetchedOncePerNameLocaleAndNamespace)
{
    const auto first = Wrapper();
    const auto second = Wrapper();
    EXPECT_EQ(S_OK, first->CreateClass(L"Tolva_Sample"));
    EXPECT_EQ(S_OK, second->CreateClass(L"Tolva_Sample"));
    EXPECT_EQ(first->Object(), second->Object());
    EXPECT_EQ(1u, m_services->GetCalls().size());

    m_context->SetLocale(0x407);
    const auto german = Wrapper();
    EXPECT_EQ(S_OK, german->CreateClass(L"Tolva_Sample"));
    EXPECT_EQ(S_OK, german->CreateClass(L"Tolva_Sample"));
    EXPECT_NE(first->Object(), german->Object());
    EXPECT_EQ(2u, m_services->GetCalls().size());

    const auto otherSpace = MakeServices(m_plan);
    const auto otherContext = MakeContext(nullptr, otherSpace.Get());
    CWomClassObject other(otherContext.get());
    EXPECT_EQ(S_OK, other.CreateClass(L"Tolva_Sample"));
    EXPECT_EQ(1u, otherSpace->GetCalls().size());
    EXPECT_EQ(2u, m_services->GetCalls().size());
}

TEST_F(ClassObjectTest, NamesOfClassesDifferByTheirCaseAndNoNameIsAName)
{
    const auto wrapper = Wrapper(false);
    EXPECT_EQ(S_OK, wrapper->CreateClass(L"Tolva_Sample"));
    EXPECT_EQ(wmi::NotFound, wrapper->CreateClass(L"tolva_sample"));
    EXPECT_EQ(wmi::NotFound, wrapper->CreateClass(nullptr));
    EXPECT_EQ(wmi::NotFound, wrapper->CreateClass(L""));
    EXPECT_EQ(4u, m_services->GetCalls().size());
}

TEST_F(ClassObjectTest, ManyThreadsFetchAClassOnce)
{
    constexpr int kThreads = 8;
    std::barrier start(kThreads);
    std::vector<std::thread> threads;
    threads.reserve(kThreads);
    for (int i = 0; i < kThreads; ++i)
        threads.emplace_back(
            [&]
            {
                CWomClassObject wrapper(m_context.get());
                start.arrive_and_wait();
                EXPECT_EQ(S_OK, wrapper.CreateClass(L"Tolva_Sample"));
                EXPECT_NE(nullptr, wrapper.Object());
            });
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(1u, m_services->GetCalls().size());
}

TEST_F(ClassObjectTest, AClassThatCannotBeFetchedRaisesAndIsAskedForAgain)
{
    const auto wrapper = Wrapper();
    wrapper->CreateClass(L"Tolva_ExtendedStatus");
    IWbemClassObject* const before = wrapper->Object();
    m_services->FailGetObject(1, kRefused);
    const auto e = Thrown([&] { wrapper->CreateClass(L"Tolva_Sample"); });
    ASSERT_TRUE(e);
    ExpectRaised(e, 0x80040903, kRefused, 57, L"Tolva_Sample");
    EXPECT_EQ(before, wrapper->Object());
    EXPECT_EQ(S_OK, wrapper->CreateClass(L"Tolva_Sample"));
}

TEST_F(ClassObjectTest, AClassThatCannotBeFetchedLeavesNothingInTheCache)
{
    EXPECT_EQ(wmi::NotFound, Wrapper(false)->CreateClass(L"Tolva_Nothing"));
    const auto throwing = Wrapper();
    EXPECT_TRUE(Thrown([&] { throwing->CreateClass(L"Tolva_Nothing"); }));
    m_context.reset();
    EXPECT_TRUE(WasLastReference(m_services)) << "an entry holds its name space";
}

TEST_F(ClassObjectTest, CallersThatWaitedForAFailureFetchTheClassThemselvesAndKeepIt)
{
    constexpr int kThreads = 8;
    for (int round = 0; round < 5; ++round)
    {
        WomClassCache::Drop();
        m_services->Forget();
        m_services->FailGetObject(1, kRefused);
        std::barrier start(kThreads);
        std::atomic<int> failures{0};
        std::vector<std::thread> threads;
        for (int i = 0; i < kThreads; ++i)
            threads.emplace_back(
                [&]
                {
                    CWomClassObject wrapper(m_context.get());
                    wrapper.SetThrowing(false);
                    start.arrive_and_wait();
                    failures += wrapper.CreateClass(L"Tolva_Sample") == kRefused;
                });
        for (std::thread& thread : threads)
            thread.join();
        EXPECT_EQ(1, failures);
        EXPECT_EQ(S_OK, Wrapper()->CreateClass(L"Tolva_Sample"));
        EXPECT_EQ(2u, m_services->GetCalls().size()) << "one that failed, one that all others share";
    }
}

TEST_F(ClassObjectTest, WithoutANamespaceNoClassCanBeFetched)
{
    m_services.Reset();
    m_context = MakeContext();
    EXPECT_EQ(E_FAIL, Wrapper(false)->CreateClass(L"Tolva_Sample"));
}

TEST_F(ClassObjectTest, TheCacheKeepsItsNamespaceUntilItIsDropped)
{
    EXPECT_EQ(S_OK, Wrapper()->CreateClass(L"Tolva_Sample"));
    m_context.reset();
    EXPECT_FALSE(WasLastReference(m_services));
    EXPECT_LT(m_objectsBefore, g_liveComObjects);
    WomClassCache::Drop();
    EXPECT_EQ(m_objectsBefore, g_liveComObjects);
}

TEST_F(ClassObjectTest, SpawnFillsTheTarget)
{
    const auto definition = Wrapper();
    definition->CreateClass(L"Tolva_Sample");
    const auto target = Wrapper();
    auto previous = standin::MakeInstance(SampleClass());
    target->Wrap(previous.Get());
    const CTraceCapture trace;
    EXPECT_EQ(S_OK, definition->SpawnInstanceFromClass(*target));
    EXPECT_NE(previous.Get(), target->Object());
    EXPECT_TRUE(WasLastReference(previous));
    CBstr className;
    EXPECT_EQ(S_OK, target->GetProperty(L"__CLASS", className));
    EXPECT_EQ(L"Tolva_Sample", className.View());
    EXPECT_THAT(trace.Lines(), ElementsAre(" { --> CWomClassObject::SpawnInstanceFromClass",
                                           " } <-- CWomClassObject::SpawnInstanceFromClass"));
}

TEST_F(ClassObjectTest, AFailedSpawnLeavesTheTargetAlone)
{
    const auto definition = Wrapper();
    definition->CreateClass(L"Tolva_Sample");
    const auto target = Instance();
    IWbemClassObject* const before = target->Object();
    m_plan->Fail(Call::SpawnInstance, 1, kRefused);
    const CTraceCapture trace;
    const auto e = Thrown([&] { definition->SpawnInstanceFromClass(*target); });
    ASSERT_TRUE(e);
    ExpectRaised(e, 0x80040904, kRefused, 73, L"Tolva_Sample");
    EXPECT_EQ(before, target->Object());
    EXPECT_EQ(" } <-- CWomClassObject::SpawnInstanceFromClass", trace.Lines().back());
}

TEST_F(ClassObjectTest, SpawnNeedsAClass)
{
    const auto target = Wrapper();
    const auto e = Thrown([&] { Wrapper()->SpawnInstanceFromClass(*target); });
    ASSERT_TRUE(e);
    ExpectRaised(e, 0x80040902, E_FAIL, 67, L"<no object>");
}

TEST_F(ClassObjectTest, CreateInstanceGivesAFreshInstance)
{
    const auto wrapper = Wrapper();
    EXPECT_EQ(S_OK, wrapper->CreateInstance(L"Tolva_Sample"));
    IWbemClassObject* const first = wrapper->Object();
    ASSERT_NE(nullptr, first);
    EXPECT_EQ(S_OK, Wrapper()->CreateInstance(L"Tolva_Sample"));
    EXPECT_EQ(1u, m_services->GetCalls().size());
}

TEST_F(ClassObjectTest, CreateInstanceGivesTheFirstFailure)
{
    const auto wrapper = Wrapper(false);
    m_services->FailGetObject(1, kRefused);
    EXPECT_EQ(kRefused, wrapper->CreateInstance(L"Tolva_Sample"));
    m_plan->Fail(Call::SpawnInstance, 1, E_OUTOFMEMORY);
    EXPECT_EQ(E_OUTOFMEMORY, wrapper->CreateInstance(L"Tolva_Sample"));
    EXPECT_EQ(nullptr, wrapper->Object());
}

TEST_F(ClassObjectTest, MethodOutputFillsTheTarget)
{
    const auto definition = Wrapper();
    definition->CreateClass(L"Tolva_Sample");
    const auto target = Instance();
    EXPECT_EQ(S_OK, definition->GetMethodOutput(L"Run", *target));
    EXPECT_EQ(S_OK, target->SetProperty(L"ReturnValue", 0L));
}

TEST_F(ClassObjectTest, AMethodWithoutOutputEmptiesTheTarget)
{
    const auto definition = Wrapper();
    definition->CreateClass(L"Tolva_Sample");
    const auto target = Instance();
    EXPECT_EQ(S_OK, definition->GetMethodOutput(L"Mute", *target));
    EXPECT_EQ(nullptr, target->Object());
}

TEST_F(ClassObjectTest, MethodOutputNeedsAClass)
{
    const auto target = Wrapper();
    ExpectRaised(Thrown([&] { Wrapper()->GetMethodOutput(L"Run", *target); }), 0x80040902, E_FAIL, 2020,
                 L"<no object>.Run");
}

TEST_F(ClassObjectTest, AnyAnswerButZeroToGetMethodIsAFailure)
{
    const auto definition = Wrapper();
    definition->CreateClass(L"Tolva_Sample");
    const auto target = Instance();
    IWbemClassObject* const before = target->Object();
    for (const HRESULT answer : {kRefused, S_FALSE})
    {
        m_plan->Fail(Call::GetMethod, 1, answer);
        ExpectRaised(Thrown([&] { definition->GetMethodOutput(L"Run", *target); }), 0x80040904, answer, 2048,
                     L"Tolva_Sample.Run");
    }
    EXPECT_EQ(before, target->Object());
}

TEST_F(ClassObjectTest, IndicateSendsOneObjectAndThenTracesIt)
{
    auto sink = MakeCom<CFakeSink>();
    const auto instance = Instance();
    const CTraceCapture trace;
    EXPECT_EQ(S_OK, instance->Indicate(sink));
    EXPECT_THAT(sink->Indications(), ElementsAre(1));
    EXPECT_EQ(instance->Object(), sink->Objects()[0].Get());
    EXPECT_TRUE(WasLastReference(sink));
    EXPECT_EQ(" { --> CWomClassObject::Indicate", trace.Lines()[0]);
    EXPECT_EQ("     { --> CWomClassObject::DebugOutput", trace.Lines()[1]);
    EXPECT_EQ(" } <-- CWomClassObject::Indicate", trace.Lines().back());
}

TEST_F(ClassObjectTest, AnObjectThatIsNotTakenIsTracedAllTheSame)
{
    auto sink = MakeCom<CFakeSink>();
    const auto instance = Instance();
    sink->FailIndicate(1, wmi::CallCancelled);
    const CTraceCapture trace;
    const auto e = Thrown([&] { instance->Indicate(sink); });
    ASSERT_TRUE(e);
    ExpectRaised(e, 0x80040907, wmi::CallCancelled, 109, L"Tolva_Sample");
    EXPECT_TRUE(trace.Has("{ --> CWomClassObject::DebugOutput"));
    EXPECT_TRUE(WasLastReference(sink));
}

TEST_F(ClassObjectTest, IndicateNeedsAnObject)
{
    auto sink = MakeCom<CFakeSink>();
    ComPtr<IWbemObjectSink> target = sink;
    const auto e = Thrown([&] { Wrapper()->Indicate(target); });
    ASSERT_TRUE(e);
    ExpectRaised(e, 0x80040902, E_FAIL, 103, L"<no object>");
    EXPECT_TRUE(sink->Indications().empty());
    target.Reset();
    EXPECT_TRUE(WasLastReference(sink));
}

TEST_F(ClassObjectTest, IndicateNeedsASink)
{
    const auto instance = Instance();
    const auto e = Thrown([&] { instance->Indicate(nullptr); });
    ASSERT_TRUE(e);
    ExpectRaised(e, 0x80040907, E_POINTER, 109, L"Tolva_Sample");
}

TEST_F(ClassObjectTest, AThrownFailureIsTraced)
{
    const auto wrapper = Wrapper();
    const CTraceCapture trace;
    EXPECT_TRUE(Thrown([&] { wrapper->SetProperty(L"Text", L"x"); }));
    const std::vector<std::string> lines = trace.Lines();
    ASSERT_EQ(3u, lines.size());
    EXPECT_EQ("Exception thrown:", lines[0]);
    EXPECT_EQ("Info: 0x80040902 Common/src/WomClassObject 639 0x80004005", lines[1]);
    EXPECT_EQ("Exception: Common/src/WomClassObject 639", lines[2]);
}

// The request's thread runs as its client while the context is made.
class ImpersonatedTest : public ClassObjectTest
{
  protected:
    void Begin(HRESULT answer)
    {
        m_call->Answer = answer;
        CWomSecurity().Impersonate();
        m_context = MakeContext();
        m_call->Impersonations = 0;
    }

    ComPtr<CFakeCallContext> m_call = MakeCom<CFakeCallContext>();
    CCallContextScope m_scope{*m_call};
};

TEST_F(ImpersonatedTest, EveryCallIntoTheServiceIsFollowedByImpersonation)
{
    Begin(S_OK);
    EXPECT_TRUE(m_context->RunsImpersonated());
    const auto expect = [&](int calls) { EXPECT_EQ(calls, std::exchange(m_call->Impersonations, 0)); };
    const auto definition = Wrapper();
    definition->CreateClass(L"Tolva_Sample");
    expect(1);
    definition->CreateClass(L"Tolva_Sample"); // from the cache
    expect(0);
    const auto target = Wrapper();
    definition->SpawnInstanceFromClass(*target);
    expect(1);
    target->SetProperty(L"Text", L"x");
    expect(1);
    CBstr text;
    target->GetProperty(L"Text", text);
    expect(1);
    const auto output = Wrapper();
    definition->GetMethodOutput(L"Run", *output);
    expect(1);
    m_plan->Fail(Call::Put, 1, kRefused);
    EXPECT_TRUE(Thrown([&] { target->SetProperty(L"Text", L"x"); }));
    expect(2); // the Put, and the Get of the class name
    target->SetThrowing(false);
    target->Indicate(MakeCom<CFakeSink>());
    EXPECT_LT(1, m_call->Impersonations); // the dump at level 2 asks the service too
    m_context.reset();
    m_call->Running = false;
}

TEST_F(ImpersonatedTest, EveryReadOfADumpIsFollowedByImpersonation)
{
    Begin(S_OK);
    const auto instance = Instance();
    const int before = m_plan->Count(Call::GetNames) + m_plan->Count(Call::GetPropertyQualifierSet) +
                       m_plan->Count(Call::GetQualifier) + m_plan->Count(Call::Get);
    m_call->Impersonations = 0;
    instance->DebugOutput();
    const int reads = m_plan->Count(Call::GetNames) + m_plan->Count(Call::GetPropertyQualifierSet) +
                      m_plan->Count(Call::GetQualifier) + m_plan->Count(Call::Get) - before;
    EXPECT_LT(4 * 8, reads) << "names, and of each property its qualifiers, two of them, and its value";
    EXPECT_EQ(reads, m_call->Impersonations);
    m_context.reset();
    m_call->Running = false;
}

TEST_F(ImpersonatedTest, ARequestThatCouldNotImpersonateDoesNotTryAfterEveryCall)
{
    Begin(E_ACCESSDENIED);
    EXPECT_FALSE(m_context->RunsImpersonated());
    const CTraceCapture trace;
    Instance()->SetProperty(L"Text", L"x");
    EXPECT_EQ(0, m_call->Impersonations);
    EXPECT_FALSE(trace.Has("CoImpersonateClient failed"));
}

TEST_F(ImpersonatedTest, AFailureToImpersonateAgainIsTracedAndTheCallSucceeds)
{
    Begin(S_OK);
    m_call->Answer = E_ACCESSDENIED;
    const CTraceCapture trace;
    EXPECT_EQ(S_OK, Instance()->SetProperty(L"Text", L"x"));
    EXPECT_TRUE(trace.Has("CoImpersonateClient failed <80070005>"));
}
} // namespace
