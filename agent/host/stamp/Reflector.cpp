#include "agent/host/stamp/Reflector.h"

#include "agent/host/stamp/StampPackets.h"

void CReflector::Take(std::span<BYTE> bytes, const CArrival& arrival, IStampLine& line) noexcept
{
    const StampMode mode = m_mac ? StampMode::Authenticated : StampMode::Open;
    const std::optional<CSenderPacket> packet = ReadSenderPacket(bytes, mode);
    // What comes from the port of a responder may be an answer: two responders would answer each other for
    // ever.
    const USHORT port = arrival.From.Ipv4.sin_port;
    const bool answer = port == m_ownPort || port == htons(kStampPort);
    if (!packet || answer || (m_mac && !m_mac->IsSigned(bytes)))
        return;
    ++m_counts.Received;
    CReflectorSession* const session = m_sessions.Find(arrival.From, packet->Session, line.Steady());
    if (!session)
        return;
    session->Track.Add(packet->Number, m_counts.Numbers);

    CReflectorPacket reply;
    reply.Number = session->NextNumber;
    reply.ErrorEstimate = kOurErrorEstimate;
    reply.Session = packet->Session;
    reply.Received = ToStampTime(arrival.Time);
    reply.SenderNumber = packet->Number;
    reply.SenderSent = packet->Sent;
    reply.SenderErrorEstimate = packet->ErrorEstimate;
    reply.HopLimit = arrival.HopLimit;
    reply.Sent = ToStampTime(line.Now());
    WriteReflectorPacket(reply, mode, bytes);
    if ((m_mac && !m_mac->Sign(bytes)) || line.Send(bytes, &arrival) != Sending::Done)
        return;
    ++session->NextNumber;
    ++m_counts.Answered;
}
