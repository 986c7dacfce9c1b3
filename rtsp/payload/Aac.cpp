// RFC 3640, MPEG-4 audio: several access units in a packet, or one in several packets.

#include "rtsp/BigEndian.h"
#include "rtsp/BitReader.h"
#include "rtsp/Text.h"
#include "rtsp/payload/AudioConfig.h"
#include "rtsp/payload/Encoded.h"
#include "rtsp/payload/Payload.h"

#include <algorithm>

namespace rtsp
{
namespace
{
// The longest that the field of a frame's length in other containers has room for, and then some.
constexpr std::size_t g_nLargestFrame = std::size_t{64} << 10;

// Some devices leave the header of another container before each unit.
Bytes WithoutAdts(Bytes abyUnit)
{
    if (abyUnit.size() < 9 || abyUnit[0] != 0xFF || (abyUnit[1] & 0xF6) != 0xF0)
    {
        return abyUnit;
    }
    const std::size_t nLength =
        std::size_t{abyUnit[3] & 3U} << 11 | std::size_t{abyUnit[4]} << 3 | std::size_t{abyUnit[5]} >> 5;
    return nLength == abyUnit.size() ? abyUnit.subspan((abyUnit[1] & 1) != 0 ? 7 : 9) : abyUnit;
}

class CAac final : public CPacketPayload
{
public:
    explicit CAac(tagMediaDescription const& tDescription) : CPacketPayload(tDescription, eCodecAAC, "aac")
    {
        const bool bLowRate = tDescription.Parameter("mode") == "AAC-lbr";
        const bool bNothing = tDescription.Parameter("mode").empty() && tDescription.Parameter("sizelength").empty() &&
                              tDescription.Parameter("constantsize").empty();
        const bool bHighRate = bNothing || tDescription.Parameter("mode") == "AAC-hbr";
        const auto fnNumber = [&](char const* szName, unsigned nDefault, unsigned nMost)
        { return std::min(Number<unsigned>(tDescription.Parameter(szName)).value_or(nDefault), nMost); };
        m_nSizeBits = fnNumber("sizelength", bLowRate ? 6 : bHighRate ? 13 : 0, 32);
        m_nIndexBits = fnNumber("indexlength", bLowRate ? 2 : bHighRate ? 3 : 0, 32);
        m_nIndexDeltaBits = fnNumber("indexdeltalength", m_nIndexBits, 32);
        m_nCompositionBits = fnNumber("ctsdeltalength", 0, 32);
        m_nDecodingBits = fnNumber("dtsdeltalength", 0, 32);
        m_nRandomBits = fnNumber("randomaccessindication", 0, 1);
        m_nStateBits = fnNumber("streamstateindication", 0, 32);
        m_nAuxiliaryBits = fnNumber("auxiliarydatasizelength", 0, 32);
        m_nConstantSize = fnNumber("constantsize", 0, g_nLargestFrame);

        SetConfig(FromHex(tDescription.Parameter("config")));
        m_dwDuration = 1024;
        if (m_tFormat.pabyConfig)
        {
            CBitReader tReader(*m_tFormat.pabyConfig);
            if (const auto tConfig = ParseAudioConfig(tReader, true))
            {
                tagStreamMediaFrame& tFrame = m_tFormat.tFrame;
                tFrame.dwSampleRate = tConfig->dwRate ? tConfig->dwRate : tFrame.dwSampleRate;
                tFrame.dwChannels = tConfig->nChannels ? tConfig->nChannels : tFrame.dwChannels;
                m_dwDuration = tConfig->nFrameLength;
                if (tConfig->dwCoreRate != 0 && tDescription.dwClockRate != 0)
                {
                    m_dwDuration = static_cast<std::uint32_t>(std::uint64_t{tConfig->nFrameLength} *
                                                              tDescription.dwClockRate / tConfig->dwCoreRate);
                }
            }
        }
        m_dwDuration = fnNumber("constantduration", m_dwDuration, 0xFFFFFFFF);
    }

    void Take(tagRtpPacket const& tPacket, unsigned nLostBefore, IUnitSink& tSink) override
    {
        m_nLostBefore += nLostBefore;
        if (nLostBefore > 0 || tPacket.dwStamp != m_dwPartStamp)
        {
            m_abyPart.clear();
        }
        if (m_nSizeBits + m_nIndexBits + m_nIndexDeltaBits + m_nCompositionBits + m_nDecodingBits + m_nRandomBits +
                m_nStateBits ==
            0)
        {
            TakeBare(tPacket, tSink);
            return;
        }
        if (tPacket.abyPayload.size() < 2)
        {
            return;
        }
        const std::size_t nHeaderBits = Big16(tPacket.abyPayload, 0);
        const std::size_t nHeaders = (nHeaderBits + 7) / 8;
        Bytes abyRest = tPacket.abyPayload.subspan(2);
        if (nHeaders > abyRest.size())
        {
            return;
        }
        CBitReader tReader(abyRest.first(nHeaders));
        abyRest = WithoutAuxiliary(abyRest.subspan(nHeaders));
        TakeUnits(tReader, nHeaderBits, abyRest, tPacket, tSink);
        if (m_abyPart.empty())
        {
            m_abyPart = {};
        }
    }

    void Reset() override { m_abyPart = {}; }

private:
    void TakeBare(tagRtpPacket const& tPacket, IUnitSink& tSink)
    {
        Bytes abyRest = tPacket.abyPayload;
        for (std::uint32_t dwStamp = tPacket.dwStamp; !abyRest.empty(); dwStamp += m_dwDuration)
        {
            const std::size_t nLength = m_nConstantSize ? std::min(m_nConstantSize, abyRest.size()) : abyRest.size();
            PassOn(WithoutAdts(abyRest.first(nLength)), tPacket, dwStamp, false, tSink);
            abyRest = abyRest.subspan(nLength);
        }
    }

    Bytes WithoutAuxiliary(Bytes abyRest) const
    {
        if (m_nAuxiliaryBits == 0)
        {
            return abyRest;
        }
        CBitReader tReader(abyRest);
        const std::size_t nBytes = (std::size_t{tReader.Bits(m_nAuxiliaryBits)} + m_nAuxiliaryBits + 7) / 8;
        return nBytes <= abyRest.size() ? abyRest.subspan(nBytes) : Bytes();
    }

    void TakeUnits(CBitReader& tReader, std::size_t nHeaderBits, Bytes abyRest, tagRtpPacket const& tPacket,
                   IUnitSink& tSink)
    {
        std::uint32_t dwStamp = tPacket.dwStamp;
        for (bool bFirst = true; !abyRest.empty(); bFirst = false)
        {
            const std::size_t nSize = m_nSizeBits       ? tReader.Bits(m_nSizeBits)
                                      : m_nConstantSize ? m_nConstantSize
                                                        : abyRest.size();
            const std::uint32_t dwIndex = tReader.Bits(bFirst ? m_nIndexBits : m_nIndexDeltaBits);
            SkipTimes(tReader);
            if (tReader.Failed() || tReader.Position() > nHeaderBits || nSize > g_nLargestFrame)
            {
                return;
            }
            dwStamp += bFirst ? 0 : (dwIndex + 1) * m_dwDuration;
            if (nSize > abyRest.size())
            {
                TakePart(abyRest, nSize, tPacket, tSink);
                return;
            }
            m_abyPart.clear();
            if (nSize > 0)
            {
                PassOn(WithoutAdts(abyRest.first(nSize)), tPacket, dwStamp, false, tSink);
            }
            abyRest = abyRest.subspan(nSize);
        }
    }

    // Each packet with a part of a unit tells the size of the whole.
    void TakePart(Bytes abyPart, std::size_t nSize, tagRtpPacket const& tPacket, IUnitSink& tSink)
    {
        if (nSize != m_nPartSize)
        {
            m_abyPart.clear();
        }
        m_nPartSize = nSize;
        m_dwPartStamp = tPacket.dwStamp;
        m_abyPart.insert(m_abyPart.end(), abyPart.begin(), abyPart.end());
        if (m_abyPart.size() >= nSize)
        {
            PassOn(WithoutAdts(Bytes(m_abyPart).first(nSize)), tPacket, tPacket.dwStamp, false, tSink);
            m_abyPart.clear();
        }
    }

    void SkipTimes(CBitReader& tReader) const
    {
        if (m_nCompositionBits > 0 && tReader.Flag())
        {
            tReader.Skip(m_nCompositionBits);
        }
        if (m_nDecodingBits > 0 && tReader.Flag())
        {
            tReader.Skip(m_nDecodingBits);
        }
        tReader.Skip(m_nRandomBits + m_nStateBits);
    }

    unsigned m_nSizeBits = 0;
    unsigned m_nIndexBits = 0;
    unsigned m_nIndexDeltaBits = 0;
    unsigned m_nCompositionBits = 0;
    unsigned m_nDecodingBits = 0;
    unsigned m_nRandomBits = 0;
    unsigned m_nStateBits = 0;
    unsigned m_nAuxiliaryBits = 0;
    std::size_t m_nConstantSize = 0;
    std::uint32_t m_dwDuration = 0;       ///< of a unit, in time stamps
    std::vector<unsigned char> m_abyPart; ///< the beginning of a unit that comes in several packets
    std::size_t m_nPartSize = 0;          ///< of that unit
    std::uint32_t m_dwPartStamp = 0;
};
} // namespace

std::unique_ptr<CPayload> MakeAac(tagMediaDescription const& tDescription)
{
    return std::make_unique<CAac>(tDescription);
}
} // namespace rtsp
