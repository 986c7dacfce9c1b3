#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace rtsp
{
/// Which way a track's media goes, as its server sees it.
enum class eDirection
{
    SendReceive,
    SendOnly,
    ReceiveOnly,
    Inactive,
};

/// One track of an SDP: what its RTP payload is and where it is set up.
struct tagMediaDescription
{
    std::string strMedia; ///< "video", "audio", "application"
    std::uint16_t wPort = 0;
    int nPayloadType = 0;          ///< the first one of the media line that we know the encoding of; -1: no RTP
    std::string strEncoding;       ///< upper case: "H264"; static payload types have their name too; empty: not known
    std::uint32_t dwClockRate = 0; ///< RTP time stamps a second
    unsigned nChannels = 0;        ///< audio; 0: the SDP doesn't say
    std::vector<std::pair<std::string, std::string>> atParameters; ///< of a=fmtp; names in lower case
    std::string strControl;                                        ///< as it stands; empty: none
    std::string strAddress;                                        ///< of the connection line (multicast); empty: none
    unsigned nTimeToLive = 0;
    std::string strSource; ///< of a=source-filter: incl
    eDirection eWay = eDirection::SendReceive;
    unsigned nWidth = 0; ///< of a=framesize or a=x-dimensions; 0: not given
    unsigned nHeight = 0;
    double dFrameRate = 0; ///< of a=framerate; 0: not given

    std::string_view Parameter(std::string_view strName) const; ///< lower case; empty: not there
};

/// An SDP.
struct tagDescription
{
    std::string strControl; ///< of the session
    std::string strRange;   ///< of the session: "npt=0-60"
    std::vector<tagMediaDescription> atMedia;
};

/// Takes what devices send: any line ends, missing lines, attributes in any order. What the session says of addresses
/// and directions holds for each track that says nothing else. No more than 32 tracks. Nothing: no media line at all.
std::optional<tagDescription> ParseDescription(std::string_view strSdp);
} // namespace rtsp
