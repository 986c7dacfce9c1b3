#pragma once

#include "rtsp/Rtp.h"

#include <chrono>
#include <cstdint>
#include <optional>
#include <vector>

namespace rtsp
{
/// Who gets packets in order.
class IPacketSink
{
public:
    /// nLostBefore: packets known to be lost since the one before. bRestarted: the numbers begin anew here; how many
    /// were lost isn't known.
    virtual void OnPacket(tagRtpPacket const& tPacket, unsigned nLostBefore, bool bRestarted) = 0;

protected:
    ~IPacketSink() = default;
};

/// Puts packets in order by their sequence numbers. What comes in order passes through without a copy; packets behind a
/// gap are kept until it is filled, or until one of them has waited for tWait, or until they are too many. What is then
/// still missing is lost, and counted; when it comes later it is dropped like a duplicate.
///
/// Sequence numbers that leap ahead by more than nLargestGap or back by more than nLongestBack are those of a server
/// that began anew; so are those of a source that counts on from a smaller number (nProof in a row). What was lost
/// there can't be told, and isn't counted.
class CReorderer
{
public:
    static constexpr int nLargestGap = 3000;
    static constexpr int nLongestBack = 1000;
    static constexpr unsigned nProof = 16;
    static constexpr std::size_t nMostHeld = 512;

    explicit CReorderer(std::chrono::milliseconds tWait) : m_tWait(tWait) {}

    /// abyWhole: the bytes that tPacket was made from.
    void Take(tagRtpPacket const& tPacket, Bytes abyWhole, std::chrono::steady_clock::time_point tNow,
              IPacketSink& tSink);
    std::optional<std::chrono::steady_clock::time_point> Deadline() const;
    void OnDeadline(std::chrono::steady_clock::time_point tNow, IPacketSink& tSink);
    /// Hands out what is held; the next packet is a first one.
    void Restart(IPacketSink& tSink);
    /// The same, but forgets what is held.
    void Forget();

    std::uint64_t Lost() const { return m_ullLost; }

private:
    struct tagHeld
    {
        std::vector<unsigned char> abyWhole;
        std::uint16_t wSequence = 0;
        std::chrono::steady_clock::time_point tArrived;
    };

    void Hold(tagRtpPacket const& tPacket, Bytes abyWhole, std::chrono::steady_clock::time_point tNow);
    void PassHeld(IPacketSink& tSink);
    void SkipGap(IPacketSink& tSink);
    void Pass(tagRtpPacket const& tPacket, unsigned nLost, IPacketSink& tSink);
    bool ProvesRestart(std::uint16_t wSequence);

    std::chrono::milliseconds m_tWait;
    bool m_bAny = false;       ///< a packet came, so m_wNext says something
    bool m_bRestarted = false; ///< the next packet passed is the first after a restart
    std::uint16_t m_wNext = 0;
    std::uint16_t m_wLastCame = 0;
    unsigned m_nLateRun = 0; ///< late packets in a row, each the successor of the one before
    std::uint64_t m_ullLost = 0;
    std::vector<tagHeld> m_atHeld; ///< in order, none twice; the first one is never m_wNext
};
} // namespace rtsp
