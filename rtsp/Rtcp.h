#pragma once

#include "rtsp/Bytes.h"

#include <cstddef>
#include <cstdint>
#include <string>

namespace rtsp
{
/// NTP time as sender reports carry it (32.32 since 1900) in microseconds since 1970 UTC. Times before 1968 are those
/// of the next era, which begins in 2036.
std::int64_t NtpToUs(std::uint64_t ullNtp);
std::uint64_t UsToNtp(std::int64_t llUs);

/// What a compound RTCP packet says.
class IRtcpSink
{
public:
    virtual void OnSenderReport(std::uint32_t dwSource, std::uint64_t ullNtp, std::uint32_t dwStamp) = 0;
    virtual void OnBye(std::uint32_t dwSource) = 0;

protected:
    ~IRtcpSink() = default;
};

/// Passes over what it doesn't know; stops at what is broken. False: not one whole packet in it.
bool ParseRtcp(Bytes abyPacket, IRtcpSink& tSink);

/// One report block: what we received of a source.
struct tagReceiverReport
{
    std::uint32_t dwOwnSource = 0;
    std::uint32_t dwSource = 0;
    std::uint8_t byFractionLost = 0; ///< of 256, since the report before
    std::int32_t nLost = 0;          ///< since the beginning
    std::uint32_t dwHighest = 0;     ///< sequence number, extended by its cycles
    std::uint32_t dwJitter = 0;      ///< in time stamp units
    std::uint32_t dwLastReport = 0;  ///< the middle 32 bits of the last sender report's NTP time; 0: none yet
    std::uint32_t dwDelay = 0;       ///< since then, in 1/65536 s
};

/// A compound packet: receiver report and CNAME.
std::string MakeReceiverReport(tagReceiverReport const& tReport);

/// What we sent.
struct tagSenderReport
{
    std::uint32_t dwOwnSource = 0;
    std::uint64_t ullNtp = 0;
    std::uint32_t dwStamp = 0; ///< RTP time stamp of ullNtp
    std::uint32_t dwPackets = 0;
    std::uint32_t dwBytes = 0; ///< of payload
};

/// A compound packet: sender report and CNAME.
std::string MakeSenderReport(tagSenderReport const& tReport);
} // namespace rtsp
