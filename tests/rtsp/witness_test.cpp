// The RTSP plug-in in front of servers that nobody here wrote, GStreamer's and VLC's, with FFmpeg's receiver as a
// witness: what it takes from the same server must be what the plug-in delivers, byte for byte.

#include "tests/rtsp/Stream.h"

#include <netinet/in.h>

namespace
{
using Witness = CPluginTest;
using Units = std::vector<std::string>;

// --- the witness -----------------------------------------------------------------------------------------------------

// How frames are compared.
enum class eBy
{
    Packets,  ///< each by its length and checksum
    Bytes,    ///< all in a row
    NalUnits, ///< without those that a receiver may add or leave out: parameter sets and delimiters
    Scans,    ///< of JPEGs, whose headers each receiver makes
    Demuxed,  ///< the NAL units of what FFmpeg finds in a transport stream
};

// What FFmpeg takes of a track of a stream ("-": of strFile): its frames in a row, or a line for each.
std::string Received(std::string const& strInput, char const* szTrack, bool bLines, std::string const& strFile = "")
{
    Units astrArguments{TESSARO_FFMPEG, "-v", "error", "-i", strInput};
    astrArguments.insert(astrArguments.end(), {"-map", szTrack, "-c", "copy", "-t", "4", "-f"});
    astrArguments.insert(astrArguments.end(), {bLines ? "framecrc" : "data", "-"});
    if (strInput != "-")
    {
        astrArguments.insert(astrArguments.begin() + 1, {"-rtsp_transport", "tcp"});
    }
    CChild tChild(astrArguments);
    std::thread tWriter(
        [&]
        {
            tChild.Say(strFile);
            tChild.EndInput();
        });
    std::string strAll;
    std::string strLine;
    while (tChild.Line(strLine))
    {
        strAll += strLine + '\n';
    }
    tWriter.join();
    return strAll + strLine;
}

Units Split(std::string const& strStream, std::string const& strStart)
{
    Units astrUnits;
    for (std::size_t nFrom = strStream.find(strStart); nFrom != std::string::npos;)
    {
        const std::size_t nNext = strStream.find(strStart, nFrom + strStart.size());
        astrUnits.push_back(strStream.substr(nFrom, nNext - nFrom));
        nFrom = nNext;
    }
    return astrUnits;
}

// A NAL unit with its start code: S of a picture, P a parameter set, D a delimiter, O another.
char Kind(std::string const& strUnit, bool bH265)
{
    const int nType = bH265 ? strUnit.at(3) >> 1 & 63 : strUnit.at(3) & 31;
    return nType == (bH265 ? 35 : 9) ? 'D'
           : bH265                   ? (nType < 32   ? 'S'
                                        : nType < 35 ? 'P'
                                                     : 'O')
                                     : (nType < 6                  ? 'S'
                                        : nType == 7 || nType == 8 ? 'P'
                                                                   : 'O');
}

Units NalUnits(std::string const& strStream)
{
    Units astrUnits = Split(strStream, std::string("\0\0\1", 3));
    for (std::string& strUnit : astrUnits)
    {
        strUnit.erase(strUnit.find_last_not_of('\0') + 1); // the next start code's
    }
    return astrUnits;
}

Units Pictures(std::string const& strStream, bool bH265)
{
    Units astrUnits = NalUnits(strStream);
    std::erase_if(astrUnits,
                  [=](std::string const& strUnit) { return std::strchr("PD", Kind(strUnit, bH265)) != nullptr; });
    return astrUnits;
}

Units Scans(std::string const& strStream)
{
    Units astrScans = Split(strStream, "\xFF\xDA");
    for (std::string& strScan : astrScans)
    {
        strScan.erase(std::min(strScan.find("\xFF\xD9"), strScan.size()));
    }
    return astrScans;
}

// As FFmpeg's lines end: length and checksum.
std::string Line(std::string const& strFrame)
{
    std::uint32_t dwA = 0;
    std::uint32_t dwB = 0;
    for (const unsigned char by : strFrame)
    {
        dwA = (dwA + by) % 65521;
        dwB = (dwB + dwA) % 65521;
    }
    char szLine[40];
    std::snprintf(szLine, sizeof szLine, "%8zu, 0x%08x", strFrame.size(), dwB << 16 | dwA);
    return szLine;
}

Units Lines(std::string const& strLines)
{
    Units astrLines = Split(strLines, "\n0,");
    for (std::string& strLine : astrLines) // stream, two times, duration, length, checksum, more
    {
        std::size_t nFrom = 3;
        for (int i = 0; i < 3; ++i)
        {
            nFrom = strLine.find(',', nFrom) + 1;
        }
        strLine = strLine.substr(nFrom + 1, 20);
    }
    return astrLines;
}

// From where ours begins, or one of its first few.
void ExpectSame(Units const& astrOurs, Units const& astrTheirs, std::size_t nLeast)
{
    for (std::size_t i = 0; i < std::min<std::size_t>(3, astrOurs.size()); ++i)
    {
        const auto itFrom = std::find(astrTheirs.begin(), astrTheirs.end(), astrOurs[i]);
        const auto nSame = std::min(static_cast<std::size_t>(astrTheirs.end() - itFrom), astrOurs.size() - i);
        if (nSame >= nLeast)
        {
            for (std::size_t k = 0; k < nSame; ++k)
            {
                ASSERT_TRUE(astrOurs[i + k] == itFrom[static_cast<std::ptrdiff_t>(k)]) << k << " of " << nSame;
            }
            return;
        }
    }
    FAIL() << "nothing in common: " << astrOurs.size() << " here, " << astrTheirs.size() << " there";
}

struct tagRow
{
    char const* szMount;
    eMediaType eType;
    eMediaCodec eCodec;
    char const* szName;
    eBy eHow;
    std::uint32_t dwRate = 0, dwWidth = 0;
    eRtspTransport eTransport = eRtspTcp;
};
constexpr tagRow g_atRows[] = {
    {"/h264", eMediaVideo, eCodecH264, "h264", eBy::NalUnits, 0, 320},
    {"/h264", eMediaVideo, eCodecH264, "h264", eBy::NalUnits, 0, 320, eRtspUdp},
    {"/h264", eMediaVideo, eCodecH264, "h264", eBy::NalUnits, 0, 320, eRtspMulticast},
    {"/h265", eMediaVideo, eCodecH265, "hevc", eBy::NalUnits, 0, 320},
    {"/mpeg4", eMediaVideo, eCodecMPEG4, "mpeg4", eBy::Packets, 0, 320},
    {"/mjpeg", eMediaVideo, eCodecMJPEG, "mjpeg", eBy::Scans, 0, 160},
    {"/ts", eMediaVideo, eCodecMPEGTS, "mpegts", eBy::Demuxed},
    {"/av", eMediaAudio, eCodecAAC, "aac", eBy::Packets, 48000},
    {"/latm", eMediaAudio, eCodecAAC, "aac", eBy::Packets, 48000},
    {"/alaw", eMediaAudio, eCodecG711A, "pcm_alaw", eBy::Bytes, 8000},
    {"/mulaw", eMediaAudio, eCodecG711U, "pcm_mulaw", eBy::Bytes, 8000},
    {"/g726", eMediaAudio, eCodecG726, "g726-32", eBy::Bytes, 8000},
    {"/opus", eMediaAudio, eCodecOpus, "opus", eBy::Packets, 48000},
};

void Compare(tagRow const& tRow, std::vector<tagGot> const& atFrames, std::string const& strTheirs)
{
    Units astrLines;
    std::string strOurs;
    for (tagGot const& tGot : atFrames)
    {
        astrLines.push_back(Line(tGot.strData));
        strOurs += tGot.strData;
    }
    const bool bH265 = tRow.eCodec == eCodecH265;
    switch (tRow.eHow)
    {
    case eBy::Packets:
        return ExpectSame(astrLines, Lines(strTheirs), 30);
    case eBy::NalUnits:
        return ExpectSame(Pictures(strOurs, bH265), Pictures(strTheirs, bH265), 50);
    case eBy::Scans:
        return ExpectSame(Scans(strOurs), Scans(strTheirs), 20);
    case eBy::Demuxed:
        return ExpectSame(Pictures(Received("-", "0:v", false, strOurs), false), Pictures(strTheirs, false), 30);
    case eBy::Bytes:
        const std::size_t nFrom = strTheirs.find(atFrames.at(0).strData);
        ASSERT_NE(nFrom, std::string::npos);
        const std::size_t nBytes = std::min(strOurs.size(), strTheirs.size() - nFrom);
        EXPECT_GT(nBytes, 4000U);
        EXPECT_TRUE(strOurs.substr(0, nBytes) == strTheirs.substr(nFrom, nBytes));
    }
}

// What a frame says, and that decoding can start at a key frame: parameter sets, then the picture's first slice.
void CheckFrame(tagRow const& tRow, tagGot const& tGot)
{
    ASSERT_EQ(tGot.tFrame.dwCodec, static_cast<std::uint32_t>(tRow.eCodec));
    ASSERT_STREQ(tGot.tFrame.szCodecName, tRow.szName);
    ASSERT_EQ(tGot.tFrame.dwSampleRate, tRow.dwRate);
    ASSERT_EQ(tGot.tFrame.dwWidth, tRow.dwWidth);
    ASSERT_TRUE(tRow.eCodec != eCodecAAC || tGot.tFrame.dwConfigLength >= 2) << "AudioSpecificConfig";
    if (tRow.eHow == eBy::NalUnits)
    {
        const bool bH265 = tRow.eCodec == eCodecH265;
        std::string strKinds;
        for (std::string const& strUnit : NalUnits(tGot.strData))
        {
            strKinds += Kind(strUnit, bH265);
        }
        const std::size_t nSlice = strKinds.find('S');
        ASSERT_LT(nSlice, strKinds.size());
        const auto nSets = std::count(strKinds.begin(), strKinds.begin() + static_cast<std::ptrdiff_t>(nSlice), 'P');
        ASSERT_EQ(tGot.Is(eFrameKey), nSets >= (bH265 ? 3 : 2)) << strKinds;
    }
}

TEST_F(Witness, FramesAreThoseThatAnotherReceiverTakes)
{
    CServer tServer;
    std::vector<std::future<std::string>> atTheirs;
    std::vector<std::unique_ptr<CStream>> apStreams;
    for (tagRow const& tRow : g_atRows)
    {
        atTheirs.push_back(std::async(std::launch::async, &Received, tServer.Url(tRow.szMount),
                                      tRow.eType == eMediaVideo ? "0:v" : "0:a", tRow.eHow == eBy::Packets, ""));
        apStreams.push_back(std::make_unique<CStream>(
            tServer.Url(tRow.szMount), tagOpen{.dwTransport = static_cast<std::uint32_t>(tRow.eTransport)}));
    }
    for (std::size_t i = 0; i < apStreams.size(); ++i)
    {
        tagRow const& tRow = g_atRows[i];
        SCOPED_TRACE(tRow.szMount + std::string(" by transport ") + std::to_string(tRow.eTransport));
        const std::string strTheirs = atTheirs[i].get();
        apStreams[i]->Await([](auto const& atFrames, auto const&)
                            { return !atFrames.empty() && atFrames.back().tFrame.llPresentationTimeUs > 3'000'000; });
        std::vector<tagGot> atFrames = apStreams[i]->Frames(0);
        std::erase_if(atFrames, [&](tagGot const& t) { return static_cast<int>(t.tFrame.dwMediaType) != tRow.eType; });
        for (tagGot const& tGot : atFrames)
        {
            CheckFrame(tRow, tGot);
        }
        if (tRow.eHow == eBy::NalUnits)
        {
            EXPECT_GE(std::count_if(atFrames.begin(), atFrames.end(), [](auto const& t) { return t.Is(eFrameKey); }),
                      2);
            ExpectInOrder(atFrames);
        }
        Compare(tRow, atFrames, strTheirs);
        EXPECT_EQ(apStreams[i]->Info().ullLost + apStreams[i]->Info().dwReconnects, 0U);
    }
}
} // namespace
