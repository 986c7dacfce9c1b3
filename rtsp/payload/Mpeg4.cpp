// MPEG-4 Part 2, RFC 6416: pieces of the elementary stream.

#include "rtsp/payload/Encoded.h"
#include "rtsp/payload/Marked.h"
#include "rtsp/payload/PictureSize.h"

namespace rtsp
{
namespace
{
constexpr unsigned g_uFirstLayer = 0x20;
constexpr unsigned g_uLastLayer = 0x2F;
constexpr unsigned g_uPicture = 0xB6;

// Calls fnCode with each start code's number and what comes behind it, up to the first picture: its data is not
// searched.
template <class F>
void ForEachHeader(Bytes abyData, F fnCode)
{
    for (std::size_t n = 0; n + 3 < abyData.size(); ++n)
    {
        if (abyData[n] == 0 && abyData[n + 1] == 0 && abyData[n + 2] == 1)
        {
            fnCode(unsigned{abyData[n + 3]}, abyData.subspan(n + 4));
            if (abyData[n + 3] == g_uPicture)
            {
                return;
            }
        }
    }
}

bool HasStartCode(Bytes abyData)
{
    return abyData.size() > 3 && abyData[0] == 0 && abyData[1] == 0 && abyData[2] == 1;
}

class CMpeg4 final : public CMarked
{
public:
    explicit CMpeg4(tagMediaDescription const& tDescription) : CMarked(tDescription, eCodecMPEG4, "mpeg4")
    {
        SetConfig(FromHex(tDescription.Parameter("config")));
        if (m_tFormat.pabyConfig)
        {
            ForEachHeader(*m_tFormat.pabyConfig, [this](unsigned uCode, Bytes abyRest) { Look(uCode, abyRest); });
        }
        m_bFrame = false;
        m_tUnit = {};
    }

private:
    ePlace Place(Bytes abyPayload) const override
    {
        if (abyPayload.empty())
        {
            return ePlace::Unknown;
        }
        if (!HasStartCode(abyPayload))
        {
            return ePlace::GoOn;
        }
        ePlace eAt = ePlace::Unknown;
        ForEachHeader(abyPayload, [&](unsigned uCode, Bytes) { eAt = uCode == g_uPicture ? ePlace::Begin : eAt; });
        return eAt;
    }

    void Add(tagRtpPacket const& tPacket, bool) override
    {
        const bool bBegins = HasStartCode(tPacket.abyPayload);
        if (!bBegins && m_tUnit.abyData.empty() && !tPacket.abyPayload.empty())
        {
            m_tUnit.bDamaged = true; // of no use without the picture's beginning
            return;
        }
        if (Put(tPacket.abyPayload) && bBegins && !m_bFrame)
        {
            ForEachHeader(tPacket.abyPayload, [this](unsigned uCode, Bytes abyRest) { Look(uCode, abyRest); });
        }
    }

    void Look(unsigned uCode, Bytes abyRest)
    {
        if (uCode == g_uPicture)
        {
            m_bFrame = true;
            m_tUnit.bKey = !abyRest.empty() && abyRest[0] >> 6 == 0; // coded without others
        }
        else if (uCode >= g_uFirstLayer && uCode <= g_uLastLayer)
        {
            if (const auto tSize = SizeOfMpeg4(abyRest))
            {
                m_tFormat.tFrame.dwWidth = tSize->dwWidth;
                m_tFormat.tFrame.dwHeight = tSize->dwHeight;
            }
        }
    }
};
} // namespace

std::unique_ptr<CPayload> MakeMpeg4(tagMediaDescription const& tDescription)
{
    return std::make_unique<CMpeg4>(tDescription);
}
} // namespace rtsp
