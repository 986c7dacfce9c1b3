// MPEG-4 audio in LATM, RFC 6416: what describes it is in the description, or in the stream. One program with one
// layer.

#include "rtsp/BitReader.h"
#include "rtsp/payload/AudioConfig.h"
#include "rtsp/payload/Encoded.h"
#include "rtsp/payload/Payload.h"

#include <utility>

namespace rtsp
{
namespace
{
constexpr std::size_t g_nLargestPacket = std::size_t{256} << 10; // put together of several

std::uint32_t ReadValue(CBitReader& tReader)
{
    return tReader.Bits(8 * (tReader.Bits(2) + 1));
}

class CLatm final : public CPacketPayload
{
public:
    explicit CLatm(tagMediaDescription const& tDescription)
        : CPacketPayload(tDescription, eCodecAAC, "aac"), m_bInStream(tDescription.Parameter("cpresent") != "0"),
          m_dwClockRate(tDescription.dwClockRate)
    {
        const std::vector<unsigned char> abyConfig = FromHex(tDescription.Parameter("config"));
        CBitReader tReader(abyConfig);
        m_bConfigured = !abyConfig.empty() && ReadConfig(tReader, abyConfig);
    }

    void Take(tagRtpPacket const& tPacket, unsigned nLostBefore, IUnitSink& tSink) override
    {
        m_nLostBefore += nLostBefore;
        if (tPacket.dwStamp != m_dwStamp)
        {
            m_abyPart.clear();
            m_bBroken = false;
        }
        else if (nLostBefore > 0)
        {
            m_bBroken = true;
        }
        m_dwStamp = tPacket.dwStamp;
        const Bytes abyPayload = tPacket.abyPayload;
        if (m_bBroken || m_abyPart.size() + abyPayload.size() > g_nLargestPacket)
        {
            m_bBroken = !tPacket.bMarker;
            m_abyPart = {};
        }
        else if (!tPacket.bMarker)
        {
            m_abyPart.insert(m_abyPart.end(), abyPayload.begin(), abyPayload.end());
        }
        else if (m_abyPart.empty())
        {
            TakeElements(abyPayload, tPacket, tSink);
        }
        else
        {
            m_abyPart.insert(m_abyPart.end(), abyPayload.begin(), abyPayload.end());
            TakeElements(std::exchange(m_abyPart, {}), tPacket, tSink);
        }
    }

    void Reset() override
    {
        m_abyPart = {};
        m_bBroken = false;
    }

private:
    void TakeElements(Bytes abyElements, tagRtpPacket const& tPacket, IUnitSink& tSink)
    {
        CBitReader tReader(abyElements);
        std::uint32_t dwStamp = tPacket.dwStamp;
        while (tReader.Position() / 8 + 1 < abyElements.size())
        {
            if (m_bInStream && !tReader.Flag())
            {
                m_bConfigured = ReadConfig(tReader, abyElements);
            }
            for (unsigned i = 0; i <= m_nMoreFrames; ++i)
            {
                if (!m_bConfigured || !TakeFrame(tReader, abyElements, tPacket, dwStamp, tSink))
                {
                    return;
                }
                dwStamp += m_dwDuration;
            }
            tReader.Skip(m_nOtherBits + (m_bChecked ? 8 : 0));
            tReader.Skip(static_cast<unsigned>(-tReader.Position() % 8));
        }
    }

    bool TakeFrame(CBitReader& tReader, Bytes abyElements, tagRtpPacket const& tPacket, std::uint32_t dwStamp,
                   IUnitSink& tSink)
    {
        std::size_t nLength = 0;
        for (unsigned u = 255; u == 255 && !tReader.Failed();)
        {
            u = tReader.Bits(8);
            nLength += u;
        }
        const std::size_t nFrom = tReader.Position();
        if (tReader.Failed() || nLength > abyElements.size() - (nFrom + 7) / 8)
        {
            return false;
        }
        const std::vector<unsigned char> abyFrame = Copy(tReader, 8 * nLength);
        if (nLength > 0)
        {
            PassOn(abyFrame, tPacket, dwStamp, false, tSink);
        }
        return true;
    }

    static std::vector<unsigned char> Copy(CBitReader& tReader, std::size_t nBits)
    {
        std::vector<unsigned char> abyCopy;
        abyCopy.reserve((nBits + 7) / 8);
        for (; nBits >= 8; nBits -= 8)
        {
            abyCopy.push_back(static_cast<unsigned char>(tReader.Bits(8)));
        }
        if (nBits > 0)
        {
            abyCopy.push_back(static_cast<unsigned char>(tReader.Bits(static_cast<unsigned>(nBits)) << (8 - nBits)));
        }
        return abyCopy;
    }

    // A StreamMuxConfig. abyAll: what tReader reads from. False: one that we can't follow.
    bool ReadConfig(CBitReader& tReader, Bytes abyAll)
    {
        const bool bNewer = tReader.Flag();
        if (bNewer && tReader.Flag())
        {
            return false;
        }
        if (bNewer)
        {
            ReadValue(tReader);
        }
        const bool bSameTime = tReader.Flag();
        m_nMoreFrames = tReader.Bits(6);
        const unsigned uPrograms = tReader.Bits(4);
        const unsigned uLayers = tReader.Bits(3);
        if (!bSameTime || uPrograms > 0 || uLayers > 0)
        {
            return false;
        }
        const std::size_t nLength = bNewer ? ReadValue(tReader) : 0;
        const std::size_t nFrom = tReader.Position();
        if (bNewer && nLength > 8 * abyAll.size() - nFrom)
        {
            return false;
        }
        CBitReader tCopy = tReader;
        const auto tConfig = ParseAudioConfig(tCopy, false);
        if (!tConfig && !bNewer)
        {
            return false;
        }
        SetConfig(Copy(tReader, bNewer ? nLength : tCopy.Position() - nFrom));
        if (tConfig)
        {
            tagStreamMediaFrame& tFrame = m_tFormat.tFrame;
            tFrame.dwSampleRate = tConfig->dwRate ? tConfig->dwRate : tFrame.dwSampleRate;
            tFrame.dwChannels = tConfig->nChannels ? tConfig->nChannels : tFrame.dwChannels;
            m_dwDuration = tConfig->nFrameLength;
            if (tConfig->dwCoreRate != 0)
            {
                m_dwDuration = static_cast<std::uint32_t>(std::uint64_t{tConfig->nFrameLength} * m_dwClockRate /
                                                          tConfig->dwCoreRate);
            }
        }
        if (tReader.Bits(3) != 0) // frames of a fixed length, or of other codecs
        {
            return false;
        }
        tReader.Skip(8);
        ReadRest(tReader, bNewer);
        return !m_bInStream || !tReader.Failed(); // a description may leave out the end, where all is zero
    }

    void ReadRest(CBitReader& tReader, bool bNewer)
    {
        m_nOtherBits = 0;
        if (tReader.Flag())
        {
            m_nOtherBits = bNewer ? ReadValue(tReader) : 0;
            for (bool bMore = !bNewer; bMore && !tReader.Failed();)
            {
                bMore = tReader.Flag();
                m_nOtherBits = m_nOtherBits << 8 | tReader.Bits(8);
            }
        }
        m_bChecked = tReader.Flag();
        tReader.Skip(m_bChecked ? 8 : 0);
    }

    bool m_bInStream;
    std::uint32_t m_dwClockRate;
    bool m_bConfigured = false;
    unsigned m_nMoreFrames = 0; ///< in an element, beside the first
    std::uint32_t m_nOtherBits = 0;
    bool m_bChecked = false;
    std::uint32_t m_dwDuration = 1024;
    std::vector<unsigned char> m_abyPart; ///< an element whose end is still to come
    std::uint32_t m_dwStamp = 0;
    bool m_bBroken = false; ///< a part of this element is missing
};
} // namespace

std::unique_ptr<CPayload> MakeLatm(tagMediaDescription const& tDescription)
{
    return std::make_unique<CLatm>(tDescription);
}
} // namespace rtsp
