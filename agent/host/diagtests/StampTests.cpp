// Tests 9 and 10: how do test packets fare between this adapter and another machine?
#include "agent/AgentCodes.h"
#include "agent/host/HostTest.h"
#include "agent/host/PeerAddress.h"
#include "agent/host/stamp/LinkWatch.h"
#include "agent/host/stamp/ResponderRun.h"
#include "agent/host/stamp/SenderRun.h"
#include "agent/host/stamp/SocketLine.h"
#include "agent/host/stamp/StampKey.h"
#include "agent/host/stamp/StampSettings.h"

namespace
{
constexpr DWORD kBetweenLinkLooks = 1000; // milliseconds
constexpr size_t kMostAddresses = 16;

bool HasLink(const CAdapterFacts& adapter) noexcept
{
    return adapter.AdminStatus == NET_IF_ADMIN_STATUS_UP && adapter.Media != MediaConnectStateDisconnected &&
           adapter.OperStatus != IfOperStatusDown && adapter.OperStatus != IfOperStatusLowerLayerDown &&
           adapter.OperStatus != IfOperStatusNotPresent;
}

// Whether the link is there as far as the system tells: a list that cannot be had says nothing about it.
bool StillHasLink(const CHostRun& run)
{
    CAdapterFacts adapter;
    const HRESULT hr = run.Read(adapter);
    return hr == vorl::NoSuchAdapter ? false : FAILED(hr) || HasLink(adapter);
}

HRESULT MakeMac(const CStampSettings& settings, std::unique_ptr<CStampMac>& mac)
{
    if (settings.Mode == StampMode::Open)
        return S_OK;
    std::vector<BYTE> key;
    const HRESULT hr = ReadStampKey(settings.KeyFile, key);
    if (SUCCEEDED(hr))
        mac = CStampMac::Make(key);
    SecureZeroMemory(key.data(), key.size());
    if (FAILED(hr))
        return hr;
    return mac ? S_OK : vorl::setting::NoCryptography;
}

// What both tests begin with.
struct CPrepared
{
    CStampSettings Settings;
    CAdapterFacts Adapter;
    std::unique_ptr<CStampMac> Mac;
};

HRESULT Prepare(const CHostRun& run, HRESULT notUp, CPrepared& prepared)
{
    HRESULT hr = ReadStampSettings(prepared.Settings);
    if (SUCCEEDED(hr))
        hr = run.Read(prepared.Adapter);
    if (SUCCEEDED(hr) && !HasLink(prepared.Adapter))
        hr = notUp;
    return FAILED(hr) ? hr : MakeMac(prepared.Settings, prepared.Mac);
}

HRESULT Send(const CHostRun& run, const CPrepared& prepared)
{
    const CStampSettings& settings = prepared.Settings;
    if (settings.Peer.empty())
        return vorl::sender::NoPeer;
    CPath path;
    const std::vector<SOCKADDR_INET> addresses = ResolvePeer(settings.Peer, run.StopEvent());
    if (run.IsStopped())
        return S_OK;
    const HRESULT hr = ChoosePath(prepared.Adapter, addresses, static_cast<USHORT>(settings.PeerPort), path);
    if (FAILED(hr))
        return hr;
    const CLinkWatch link([&] { return StillHasLink(run); }, kBetweenLinkLooks);
    const auto open = [&](std::unique_ptr<IStampLine>& line)
    {
        auto socket = std::make_unique<CSocketLine>(CLineSignals{run.StopEvent(), link.Gone()});
        const HRESULT opened = socket->Connect(path.Source, path.Peer, settings.Dscp);
        line = std::move(socket);
        return opened;
    };
    CSenderRun sender({{prepared.Mac.get(), settings.PacketSize}, settings.PacketsPerSecond, settings.Loss},
                      open, run.Measurement());
    return run.Measurement().Ended(sender.Execute());
}

// An address that is taken away just now, or not confirmed yet, is passed over; a port that is taken is not.
HRESULT Listen(const CAdapterFacts& adapter, USHORT port, CSocketLine& line)
{
    size_t listening = 0;
    int error = 0;
    for (const COwnAddress& own : adapter.Addresses)
    {
        SOCKADDR_INET address = own.Address;
        address.Ipv4.sin_port = port; // which stands in the same place in both families
        if (listening == kMostAddresses || own.Duplicates == IpDadStateDuplicate)
            continue;
        const int failed = line.Listen(address);
        if (failed == WSAEADDRINUSE || failed == WSAEACCES)
            return vorl::responder::PortTaken;
        listening += failed == 0;
        error = failed != 0 ? failed : error;
    }
    if (listening > 0)
        return S_OK;
    return error != 0 ? vorl::responder::NotBound : vorl::responder::NoAddress;
}

HRESULT Respond(const CHostRun& run, const CPrepared& prepared)
{
    const CStampSettings& settings = prepared.Settings;
    const USHORT port = htons(static_cast<USHORT>(settings.ResponderPort));
    const CLinkWatch link([&] { return StillHasLink(run); }, kBetweenLinkLooks);
    CSocketLine line({run.StopEvent(), link.Gone()});
    const HRESULT hr = Listen(prepared.Adapter, port, line);
    if (FAILED(hr))
        return hr;
    return run.Measurement().Ended(
        RunResponder(line, {prepared.Mac.get(), port, settings.WaitForSender, {}}, run.Measurement()));
}
} // namespace

HRESULT RunSenderTest(const CHostRun& run)
{
    CPrepared prepared;
    const HRESULT hr = Prepare(run, vorl::sender::NotUp, prepared);
    return FAILED(hr) ? hr : Send(run, prepared);
}

HRESULT RunResponderTest(const CHostRun& run)
{
    CPrepared prepared;
    const HRESULT hr = Prepare(run, vorl::responder::NotUp, prepared);
    return FAILED(hr) ? hr : Respond(run, prepared);
}
