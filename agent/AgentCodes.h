// The codes of our agents, and the strings that name tests. Each code has a text in the resource libraries
// (_8023, see AgentErrors.inc) that gives cause and next step; the string's number is (code & 0x7FFF) |
// 0x8000. The real agent's codes are 0x80040300 + 0x10 * test number + n, with test number 0 for what is no
// test's own; the scripted agent's own begin at 0x80040400. A test that passes with something to say returns
// a success code, 0x0004nnnn, whose text is its finding.
#pragma once

#include <windows.h>

namespace vorl
{
constexpr HRESULT AgentCode(unsigned number) noexcept
{
    return static_cast<HRESULT>(0x80040000u | number);
}
constexpr HRESULT AgentFinding(unsigned number) noexcept
{
    return static_cast<HRESULT>(0x00040000u | number);
}

// The string that names a test: one of sixteen, by the low four bits of its number.
constexpr ULONG NameString(ULONG testId) noexcept
{
    return 3500 + (testId & 15);
}

constexpr HRESULT NoSuchAdapter = AgentCode(0x0301); // never listed, or gone since
constexpr HRESULT NoSuchTest = AgentCode(0x0302);
constexpr HRESULT AlreadyRunning = AgentCode(0x0303);
constexpr HRESULT NotRunning = AgentCode(0x0304);
constexpr HRESULT NoStatistics = AgentCode(0x0306);
constexpr HRESULT NotInitialized = AgentCode(0x0307);
constexpr HRESULT FactsUnavailable = AgentCode(0x0308);

// What a run of an ordinary test returns that StopTest has ended. It is the provider's own status, by which
// alone the provider tells a stopped run from a failed one.
constexpr HRESULT Stopped = AgentCode(0x2002);

namespace link
{
constexpr HRESULT Down = AgentCode(0x0311);
constexpr HRESULT Disabled = AgentCode(0x0312);
constexpr HRESULT Unknown = AgentCode(0x0313);
constexpr HRESULT NotAuthenticated = AgentCode(0x0314);
constexpr HRESULT NotReady = AgentCode(0x0315);
} // namespace link

namespace speed
{
constexpr HRESULT NoLink = AgentCode(0x0321);
constexpr HRESULT NotReported = AgentFinding(0x0322);
constexpr HRESULT TooSlow = AgentCode(0x0323);
constexpr HRESULT HalfDuplex = AgentCode(0x0324);
constexpr HRESULT Unequal = AgentCode(0x0325);
constexpr HRESULT DuplexNotReported = AgentFinding(0x0326);
constexpr HRESULT NothingReported = AgentFinding(0x0327); // neither speed nor duplex
} // namespace speed

namespace errors
{
constexpr HRESULT Receive = AgentCode(0x0331);
constexpr HRESULT Transmit = AgentCode(0x0332);
constexpr HRESULT Both = AgentCode(0x0333);
constexpr HRESULT CountersReset = AgentCode(0x0334);
constexpr HRESULT NotUp = AgentCode(0x0335);
constexpr HRESULT Few = AgentFinding(0x0336);
} // namespace errors

namespace discards
{
constexpr HRESULT Receive = AgentCode(0x0341);
constexpr HRESULT Transmit = AgentCode(0x0342);
constexpr HRESULT Both = AgentCode(0x0343);
constexpr HRESULT CountersReset = AgentCode(0x0344);
constexpr HRESULT NotUp = AgentCode(0x0345);
constexpr HRESULT Few = AgentFinding(0x0346);
} // namespace discards

namespace address
{
constexpr HRESULT None = AgentCode(0x0351);
constexpr HRESULT SelfAssigned = AgentCode(0x0352);
constexpr HRESULT Duplicate = AgentCode(0x0353);
constexpr HRESULT BadPrefix = AgentCode(0x0354);
constexpr HRESULT NoGateway = AgentCode(0x0355);
constexpr HRESULT GatewayOutside = AgentCode(0x0356);
constexpr HRESULT Unconfirmed = AgentCode(0x0357);
} // namespace address

namespace gateway
{
constexpr HRESULT None = AgentCode(0x0361);
constexpr HRESULT Silent = AgentCode(0x0362);
constexpr HRESULT Unsupported = AgentCode(0x0363);
constexpr HRESULT NotSent = AgentCode(0x0364);
} // namespace gateway

namespace names
{
constexpr HRESULT NoServers = AgentCode(0x0371);
constexpr HRESULT NoneAnswers = AgentCode(0x0372);
constexpr HRESULT SomeSilent = AgentCode(0x0373);
constexpr HRESULT Refused = AgentCode(0x0374);
constexpr HRESULT NoAddress = AgentCode(0x0375);
constexpr HRESULT NotSent = AgentCode(0x0376);
} // namespace names

// An interface above the adapter carries the addresses that tests 5 to 7 look at. It is the whole finding of
// a test that passes; the code of one that fails has one of these offsets added.
namespace carrier
{
constexpr HRESULT VirtualSwitch = AgentFinding(0x0500);
constexpr HRESULT TeamOrBridge = AgentFinding(0x0600);
constexpr HRESULT Above = AgentFinding(0x0700);
constexpr HRESULT VirtualSwitchOffset = 0x0200;
constexpr HRESULT TeamOrBridgeOffset = 0x0300;
constexpr HRESULT AboveOffset = 0x0400;
} // namespace carrier

namespace state
{
constexpr HRESULT Disabled = AgentCode(0x0381);
constexpr HRESULT NotPresent = AgentCode(0x0382);
constexpr HRESULT BadMtu = AgentCode(0x0383);
constexpr HRESULT NoMacAddress = AgentCode(0x0384);
constexpr HRESULT BadMacAddress = AgentCode(0x0385);
constexpr HRESULT Suspended = AgentCode(0x0386);
constexpr HRESULT DownWithLink = AgentCode(0x0387);
} // namespace state

namespace sender
{
constexpr HRESULT NoPeer = AgentCode(0x0390);
constexpr HRESULT PeerUnknown = AgentCode(0x0391); // its name has no address
constexpr HRESULT BadPeer = AgentCode(0x0392);     // not the address of another machine
constexpr HRESULT NoSource = AgentCode(0x0393);    // the adapter has no address of the peer's kind
constexpr HRESULT NotBound = AgentCode(0x0394);    // the address is not, or no longer, on the adapter
constexpr HRESULT NotSent = AgentCode(0x0395);
constexpr HRESULT Refused = AgentCode(0x0396);
constexpr HRESULT Silent = AgentCode(0x0397);
constexpr HRESULT StrangeAnswers = AgentCode(0x0398);
constexpr HRESULT WentSilent = AgentCode(0x0399);
constexpr HRESULT PeerEnded = AgentCode(0x039A); // before enough packets had been exchanged
constexpr HRESULT LinkGone = AgentCode(0x039B);
constexpr HRESULT NotUp = AgentCode(0x039C);
constexpr HRESULT NoDscp = AgentCode(0x039D);
constexpr HRESULT Unreachable = AgentCode(0x039E);
} // namespace sender

namespace responder
{
constexpr HRESULT NoAddress = AgentCode(0x03A0);
constexpr HRESULT PortTaken = AgentCode(0x03A1);
constexpr HRESULT NotBound = AgentCode(0x03A2);
constexpr HRESULT NoSender = AgentCode(0x03A3);
constexpr HRESULT LinkGone = AgentCode(0x03A4);
constexpr HRESULT NotUp = AgentCode(0x03A5);
} // namespace responder

// What a sender has lost, by direction. Heavy: one in ten or more.
namespace loss
{
constexpr HRESULT There = AgentCode(0x03B0);
constexpr HRESULT Back = AgentCode(0x03B1);
constexpr HRESULT BothWays = AgentCode(0x03B2);
constexpr HRESULT SomeWay = AgentCode(0x03B3); // the peer does not count
constexpr HRESULT HeavyThere = AgentCode(0x03B4);
constexpr HRESULT HeavyBack = AgentCode(0x03B5);
constexpr HRESULT HeavyBothWays = AgentCode(0x03B6);
constexpr HRESULT HeavySomeWay = AgentCode(0x03B7);
} // namespace loss

// Registry values of sender and responder that cannot be used.
namespace setting
{
constexpr HRESULT BadPort = AgentCode(0x03C0);
constexpr HRESULT BadRate = AgentCode(0x03C1);
constexpr HRESULT BadSize = AgentCode(0x03C2);
constexpr HRESULT BadDscp = AgentCode(0x03C3);
constexpr HRESULT BadLossLimit = AgentCode(0x03C4);
constexpr HRESULT BadWait = AgentCode(0x03C5);
constexpr HRESULT NoKeyFile = AgentCode(0x03C6);
constexpr HRESULT KeyUnreadable = AgentCode(0x03C7);
constexpr HRESULT BadKey = AgentCode(0x03C8);
constexpr HRESULT NoCryptography = AgentCode(0x03C9);
} // namespace setting

namespace script
{
constexpr HRESULT Unreadable = AgentCode(0x0401);
constexpr HRESULT NotJson = AgentCode(0x0402);
constexpr HRESULT BadContent = AgentCode(0x0403);
} // namespace script
} // namespace vorl
