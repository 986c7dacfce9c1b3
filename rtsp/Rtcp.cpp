#include "rtsp/Rtcp.h"

#include "rtsp/BigEndian.h"

#include <algorithm>
#include <cstdio>

namespace rtsp
{
namespace
{
constexpr unsigned g_nSenderReport = 200;
constexpr unsigned g_nReceiverReport = 201;
constexpr unsigned g_nDescription = 202;
constexpr unsigned g_nBye = 203;

constexpr std::uint64_t g_ullSecondsTo1970 = 2208988800;
constexpr std::uint64_t g_ullEra = std::uint64_t{1} << 32; // seconds
constexpr std::int64_t g_llSecond = 1000000;               // microseconds

void Put8(std::string& strPacket, unsigned uValue)
{
    strPacket += static_cast<char>(uValue);
}
void Put32(std::string& strPacket, std::uint32_t dwValue)
{
    for (int nShift = 24; nShift >= 0; nShift -= 8)
    {
        Put8(strPacket, dwValue >> nShift & 255);
    }
}
// dwWords: 32-bit words behind this header.
void PutHeader(std::string& strPacket, unsigned nCount, unsigned nType, std::uint32_t dwWords)
{
    Put32(strPacket, (0x80 | nCount) << 24 | nType << 16 | dwWords);
}
// A name that tells nothing of the host: all our reports of one source have the same.
void PutDescription(std::string& strPacket, std::uint32_t dwSource)
{
    char szName[9];
    std::snprintf(szName, sizeof szName, "%08x", static_cast<unsigned>(dwSource));
    PutHeader(strPacket, 1, g_nDescription, 4);
    Put32(strPacket, dwSource);
    strPacket.append({1, 8}).append(szName, 8).append(2, '\0'); // CNAME; two zeros end the list and fill the word
}
} // namespace

std::int64_t NtpToUs(std::uint64_t ullNtp)
{
    std::uint64_t ullSeconds = ullNtp >> 32;
    ullSeconds += ullSeconds >> 31 ? 0 : g_ullEra;
    const std::uint64_t ullFraction = (ullNtp & 0xffffffff) * g_llSecond >> 32;
    return (static_cast<std::int64_t>(ullSeconds) - static_cast<std::int64_t>(g_ullSecondsTo1970)) * g_llSecond +
           static_cast<std::int64_t>(ullFraction);
}

std::uint64_t UsToNtp(std::int64_t llUs)
{
    const std::uint64_t ullUs = static_cast<std::uint64_t>(llUs) + g_ullSecondsTo1970 * g_llSecond;
    // Rounded up, so that NtpToUs, which cuts off, gives the same number back.
    const std::uint64_t ullFraction = ((ullUs % g_llSecond << 32) + g_llSecond - 1) / g_llSecond;
    return (ullUs / g_llSecond << 32) + ullFraction;
}

bool ParseRtcp(Bytes abyPacket, IRtcpSink& tSink)
{
    bool bAny = false;
    while (abyPacket.size() >= 4 && abyPacket[0] >> 6 == 2)
    {
        const std::size_t nLength = 4 * (std::size_t{Big16(abyPacket, 2)} + 1);
        if (nLength > abyPacket.size())
        {
            break;
        }
        bAny = true;
        const std::size_t nCount = abyPacket[0] & 31;
        if (abyPacket[1] == g_nSenderReport && nLength >= 28)
        {
            tSink.OnSenderReport(Big32(abyPacket, 4), std::uint64_t{Big32(abyPacket, 8)} << 32 | Big32(abyPacket, 12),
                                 Big32(abyPacket, 16));
        }
        else if (abyPacket[1] == g_nBye)
        {
            for (std::size_t i = 1; i <= nCount && 4 * i + 4 <= nLength; ++i)
            {
                tSink.OnBye(Big32(abyPacket, 4 * i));
            }
        }
        abyPacket = abyPacket.subspan(nLength);
    }
    return bAny;
}

std::string MakeReceiverReport(tagReceiverReport const& tReport)
{
    const std::int32_t nLost = std::clamp(tReport.nLost, -0x800000, 0x7fffff);
    std::string strPacket;
    PutHeader(strPacket, 1, g_nReceiverReport, 7);
    Put32(strPacket, tReport.dwOwnSource);
    Put32(strPacket, tReport.dwSource);
    Put32(strPacket, std::uint32_t{tReport.byFractionLost} << 24 | (static_cast<std::uint32_t>(nLost) & 0xffffff));
    Put32(strPacket, tReport.dwHighest);
    Put32(strPacket, tReport.dwJitter);
    Put32(strPacket, tReport.dwLastReport);
    Put32(strPacket, tReport.dwDelay);
    PutDescription(strPacket, tReport.dwOwnSource);
    return strPacket;
}

std::string MakeSenderReport(tagSenderReport const& tReport)
{
    std::string strPacket;
    PutHeader(strPacket, 0, g_nSenderReport, 6);
    Put32(strPacket, tReport.dwOwnSource);
    Put32(strPacket, static_cast<std::uint32_t>(tReport.ullNtp >> 32));
    Put32(strPacket, static_cast<std::uint32_t>(tReport.ullNtp));
    Put32(strPacket, tReport.dwStamp);
    Put32(strPacket, tReport.dwPackets);
    Put32(strPacket, tReport.dwBytes);
    PutDescription(strPacket, tReport.dwOwnSource);
    return strPacket;
}
} // namespace rtsp
