// Payloads that are passed on as they come: audio of one packet each, and what ends with a marker.

#include "rtsp/payload/Marked.h"

namespace rtsp
{
namespace
{
class CWhole final : public CPacketPayload
{
public:
    CWhole(tagMediaDescription const& tDescription, eMediaCodec eCodec, std::string_view strName)
        : CPacketPayload(tDescription, eCodec, strName)
    {
    }

    void Take(tagRtpPacket const& tPacket, unsigned nLostBefore, IUnitSink& tSink) override
    {
        m_nLostBefore += nLostBefore;
        if (!tPacket.abyPayload.empty())
        {
            PassOn(tPacket.abyPayload, tPacket, tPacket.dwStamp, false, tSink);
        }
    }
};

// Nothing in these tells whether a marker is right, so it is believed.
class CPlainMarked final : public CMarked
{
public:
    CPlainMarked(tagMediaDescription const& tDescription, eMediaCodec eCodec, std::string_view strName)
        : CMarked(tDescription, eCodec, strName), m_bAllKey(eCodec == eCodecMetadata)
    {
        m_tMarkers.Believe();
    }

private:
    void Add(tagRtpPacket const& tPacket, bool) override
    {
        m_bFrame |= Put(tPacket.abyPayload) && !tPacket.abyPayload.empty();
        m_tUnit.bKey = m_bAllKey;
    }

    bool m_bAllKey;
};
} // namespace

std::unique_ptr<CPayload> MakeWhole(tagMediaDescription const& tDescription, eMediaCodec eCodec,
                                    std::string_view strName)
{
    return std::make_unique<CWhole>(tDescription, eCodec, strName);
}

std::unique_ptr<CPayload> MakeMarked(tagMediaDescription const& tDescription, eMediaCodec eCodec,
                                     std::string_view strName)
{
    return std::make_unique<CPlainMarked>(tDescription, eCodec, strName);
}
} // namespace rtsp
