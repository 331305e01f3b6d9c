// Two machines and the way between them, in a time of the test's own: nothing waits, and every packet fares
// as the test says. The peer is the real responder's reflector unless the test says otherwise.
#pragma once

#include "agent/host/stamp/Reflector.h"

#include <functional>
#include <map>
#include <memory>
#include <vector>

class CFakePath
{
  public:
    // When each copy of a packet arrives, in 100 nanoseconds after the usual time; none is loss. The index is
    // the packet's place among all that went this way.
    using Fate = std::function<std::vector<uint64_t>(uint64_t index)>;
    // What a peer makes of a packet; empty is silence.
    using Peer = std::function<std::vector<BYTE>(std::vector<BYTE> packet)>;

    explicit CFakePath(CStampMac* mac = nullptr);

    static constexpr uint64_t kThere = kStampMillisecond;
    static constexpr uint64_t kAtPeer = 5 * kStampMillisecond;
    static constexpr uint64_t kBack = 2 * kStampMillisecond;
    static constexpr uint64_t kBegin = 1000 * kStampSecond;

    Fate There;
    Fate Back;
    Peer OtherPeer;                 // in place of the reflector
    uint64_t StopAt = ~uint64_t{0}; // after the begin
    uint64_t LinkGoneAt = ~uint64_t{0};
    uint64_t RefusedFrom = ~uint64_t{0};
    uint64_t UnreachableFrom = ~uint64_t{0};
    bool SystemSends = true;

    // The sender's end: each line has a port of its own.
    HRESULT Open(std::unique_ptr<IStampLine>& line);

    uint64_t Elapsed() const { return m_now - kBegin; }
    uint64_t SentThere() const { return m_there; }
    CReflector& PeersReflector() { return *m_reflector; }

  private:
    class CSenderLine;
    class CPeerLine;
    struct CFlying
    {
        bool Back;
        USHORT Port;
        std::vector<BYTE> Bytes;
    };

    void Fly(const Fate& fate, uint64_t index, uint64_t usual, const CFlying& flying);
    void Arrive(const CFlying& flying);
    Woken Advance(CSenderLine& line, uint64_t until, bool heedStop);

    uint64_t m_now = kBegin;
    uint64_t m_there = 0;
    uint64_t m_back = 0;
    USHORT m_ports = 0;
    std::multimap<uint64_t, CFlying> m_flying;
    std::map<USHORT, CSenderLine*> m_lines;
    std::unique_ptr<CReflector> m_reflector;
};

// Every n-th packet, beginning with the first, is lost.
CFakePath::Fate LoseEvery(uint64_t n);
CFakePath::Fate RepeatEvery(uint64_t n);
// Every n-th packet arrives after the one that follows it.
CFakePath::Fate DelayEvery(uint64_t n, uint64_t by);
