// In which order a request takes its steps, as its trace shows them.
#include "CDM/src/ZebDebug.h"
#include "tests/support/FakeCallContext.h"
#include "tests/unit/provider/ProviderTest.h"

#include <algorithm>

namespace
{
using Lines = std::vector<std::string>;

struct Order
{
    const CRequest& request;
    Lines before; // from the entry to the handler
    Lines after;  // from the handler to the status
};

class RequestOrderTest : public ProviderTest, public testing::WithParamInterface<Order>
{
  protected:
    RequestOrderTest() { m_host.Initialize(); }

    // The steps among the lines: marks of the framework's functions, without their indentation, and what the
    // test itself writes.
    static Lines Steps(const CTraceCapture& trace)
    {
        Lines steps;
        for (const std::string& line : trace.Lines())
        {
            const std::string text = line.substr(std::min(line.find_first_not_of(' '), line.size()));
            constexpr const char* kKnown[] = {
                "{ --> CProviderImp::",      "} <-- CProviderImp::",
                "GetObjectAsync: <",         "CreateInstanceEnumAsync: <",
                "PutInstanceAsync <",        "ExecMethodAsync: <",
                "Tolva_DiagTest.Name=",      "{ --> CWomSecurity::",
                "{ --> CWomContext::",       "{ --> CWomClassObject::DebugOutput",
                "{ --> CWomClassObject::In", "} <-- CWomClassObject::In",
            };
            if (text.starts_with("* ") ||
                std::any_of(std::begin(kKnown), std::end(kKnown),
                            [&](const char* known) { return text.starts_with(known); }))
                steps.push_back(text);
        }
        return steps;
    }
};

TEST_P(RequestOrderTest, TakesItsStepsInTheirOrder)
{
    const auto client = MakeCom<CFakeCallContext>();
    client->OnImpersonate = [&]
    {
        if (client->Impersonations == 1)
            ZebDebug().Write("* impersonated");
    };
    client->OnRevert = [] { ZebDebug().Write("* reverted"); };
    const CCallContextScope scope(*client.Get());
    m_sink->OnStatus = [] { ZebDebug().Write("* status"); };
    ProbeDoes(
        []
        {
            ZebDebug().Write("* handler");
            return S_OK;
        });
    const CTraceCapture trace;
    EXPECT_EQ(Make(GetParam().request), S_OK);

    Lines expected = {std::string("{ --> CProviderImp::") + GetParam().request.name};
    expected.insert(expected.end(), GetParam().before.begin(), GetParam().before.end());
    expected.push_back("* handler");
    expected.insert(expected.end(), GetParam().after.begin(), GetParam().after.end());
    for (const char* last : {"* status", "{ --> CWomSecurity::RevertToSelf",
                             "{ --> CWomSecurity::OutputSecurityDebug", "* reverted"})
        expected.emplace_back(last);
    expected.push_back(std::string("} <-- CProviderImp::") + GetParam().request.name);
    EXPECT_EQ(expected, Steps(trace));
}

constexpr char kPath[] = "Tolva_DiagTest.Name=\"1@A\"";
constexpr char kSecurity[] = "{ --> CWomSecurity::OutputSecurityDebug";
constexpr char kContext[] = "{ --> CWomContext::CWomContext";
constexpr char kContextDump[] = "{ --> CWomContext::DebugOutput";
constexpr char kObjectDump[] = "{ --> CWomClassObject::DebugOutput";

INSTANTIATE_TEST_SUITE_P(Requests, RequestOrderTest,
                         testing::Values(Order{kRequests[0],
                                               {"GetObjectAsync: <0>", kPath, "* impersonated", kSecurity,
                                                kContext, kContextDump},
                                               {}},
                                         Order{kRequests[1],
                                               {"CreateInstanceEnumAsync: <Tolva_DiagTest> <0>",
                                                "* impersonated", kSecurity, kContext, kContextDump},
                                               {}},
                                         Order{kRequests[2],
                                               {"PutInstanceAsync <0>", "* impersonated", kSecurity, kContext,
                                                kContextDump, kObjectDump},
                                               {}},
                                         Order{kRequests[3],
                                               {"ExecMethodAsync: <RunTest> <0>", kPath, "* impersonated",
                                                kSecurity, kContext, kContextDump, kObjectDump},
                                               {"{ --> CWomClassObject::Indicate", kObjectDump,
                                                "} <-- CWomClassObject::Indicate", kObjectDump}}),
                         [](const auto& info) { return info.param.request.name; });
} // namespace
