#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace rtsp
{
/// Two ports, or two channels.
struct tagPair
{
    std::uint16_t wRtp = 0;
    std::uint16_t wRtcp = 0; ///< wRtp + 1 where the server doesn't say
    bool operator==(tagPair const&) const = default;
};

/// The Transport header of an answer to SETUP.
struct tagTransport
{
    bool bTcp = false; ///< in the RTSP connection: the header says so, or names channels
    bool bMulticast = false;
    std::optional<tagPair> tChannels;      ///< interleaved; both at most 255
    std::optional<tagPair> tServerPorts;   ///< server_port
    std::optional<tagPair> tClientPorts;   ///< client_port
    std::optional<tagPair> tGroupPorts;    ///< port, of a multicast group
    std::string strSource;                 ///< where the media comes from; empty: not given
    std::string strDestination;            ///< where it goes; empty: not given
    unsigned nTimeToLive = 0;              ///< of a multicast group; 0: not given
    std::optional<std::uint32_t> dwSource; ///< ssrc
};

/// The first transport of the header. Nothing: there is none of RTP.
std::optional<tagTransport> ParseTransport(std::string_view strValue);

/// The Session header.
struct tagSession
{
    std::string strId;      ///< empty: none
    unsigned nTimeOut = 60; ///< seconds without a sign of life after which the server may close the session
};
tagSession ParseSession(std::string_view strValue);

/// One track of an RTP-Info header: where the media after PLAY begins.
struct tagRtpInfo
{
    std::string strUrl;
    std::optional<std::uint16_t> wSequence;
    std::optional<std::uint32_t> dwStamp;
};
/// URLs may hold commas and semicolons.
std::vector<tagRtpInfo> ParseRtpInfo(std::string_view strValue);

/// A Range header, or the range of an SDP.
struct tagRange
{
    bool bClock = false; ///< microseconds since 1970 UTC; else normal play time: microseconds since the beginning
    bool bNow = false;   ///< begins now: llBeginUs isn't there
    std::optional<std::int64_t> llBeginUs;
    std::optional<std::int64_t> llEndUs; ///< nothing: open
    bool operator==(tagRange const&) const = default;
};
/// Nothing: not a range in npt or clock.
std::optional<tagRange> ParseRange(std::string_view strValue);
std::string RangeText(tagRange const& tRange); ///< in milliseconds: "clock=20240229T120000.500Z-"

/// Whether a list of words with commas between them (the Public header) has this one, in whatever case.
bool HasWord(std::string_view strList, std::string_view strWord);
} // namespace rtsp
