#pragma once

#include "rtsp/payload/Markers.h"
#include "rtsp/payload/Payload.h"

namespace rtsp
{
/// A payload whose frames are made of several packets: all with one time stamp, the last one with the marker.
class CMarked : public CPayload
{
public:
    void Take(tagRtpPacket const& tPacket, unsigned nLostBefore, IUnitSink& tSink) final;
    bool IsWaiting() const final { return m_bFrame && m_bMarked && !IsInside() && !m_tMarkers.AreKnown(); }
    void Flush(IUnitSink& tSink) final;
    void Reset() final;

protected:
    using CPayload::CPayload;

    /// What a packet's bytes tell of their place in a frame.
    enum class ePlace
    {
        Begin, ///< of a picture
        GoOn,  ///< with a picture that another packet began
        Unknown,
    };
    virtual ePlace Place(Bytes) const { return ePlace::Unknown; }
    /// Adds a packet to m_tUnit, and sets m_bFrame when it is then worth handing out. bGap: packets are missing before
    /// it; m_tUnit is already said to be damaged.
    virtual void Add(tagRtpPacket const& tPacket, bool bGap) = 0;
    /// m_tUnit ends with a packet that another must follow.
    virtual bool IsInside() const { return false; }
    /// What m_tUnit lacks before it goes out, and what belongs to it alone is forgotten.
    virtual void Finish() {}
    virtual void Forget() {}

    /// False: the unit would be too large. It is then dropped, with what comes up to the next frame.
    bool Put(Bytes abyMore);

    tagUnit m_tUnit;       ///< being put together
    bool m_bFrame = false; ///< it has a picture, not only what comes before one
    CMarkers m_tMarkers;

private:
    void HandOut(IUnitSink& tSink);
    void Judge(bool bSameStamp, ePlace eAt, bool bGap);

    bool m_bAny = false;      ///< m_tUnit.dwStamp is that of a packet
    bool m_bMarked = false;   ///< the last packet had the marker, and a picture in its frame
    bool m_bTooLarge = false; ///< the rest of this frame is passed over
    std::size_t m_nUsual = 0; ///< bytes of the smaller one of the last two frames
    std::size_t m_nLast = 0;  ///< bytes of the last frame
};
} // namespace rtsp
