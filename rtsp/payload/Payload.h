#pragma once

#include "protocol/PluginInterface.h"
#include "rtsp/Description.h"
#include "rtsp/Rtp.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

namespace rtsp
{
/// Larger than any picture: what doesn't end must not fill the memory.
inline constexpr std::size_t g_nLargestUnit = std::size_t{16} << 20;

/// A frame as its payload hands it out.
struct tagUnit
{
    std::vector<unsigned char> abyData;
    std::uint32_t dwStamp = 0;
    unsigned nLostBefore = 0; ///< packets lost since the unit before
    bool bKey = false;
    bool bDamaged = false;
    std::optional<std::int64_t> llRecordedUs; ///< as in tagTrackFrame
    bool bReplayGap = false;
    bool bReplayEnd = false;
    bool bRecordingEnds = false;

    /// Takes what the replay extension says, if the packet has one.
    void TakeReplay(tagRtpPacket const& tPacket);
};

/// Who gets units.
class IUnitSink
{
public:
    /// tUnit may be moved from.
    virtual void OnUnit(tagUnit& tUnit) = 0;

protected:
    ~IUnitSink() = default;
};

/// What all frames of a track have in common.
struct tagFormat
{
    tagStreamMediaFrame tFrame{}; ///< type, codec, name, size, rate, channels
    std::shared_ptr<std::vector<unsigned char> const> pabyConfig;
};

/// One payload format: makes frames out of packets that come in order.
class CPayload
{
public:
    virtual ~CPayload() = default;
    CPayload(CPayload const&) = delete;
    CPayload& operator=(CPayload const&) = delete;

    /// nLostBefore: packets missing before this one.
    virtual void Take(tagRtpPacket const& tPacket, unsigned nLostBefore, IUnitSink& tSink) = 0;
    /// A unit is complete by all that is known, but its device's markers aren't known yet (see CMarkers).
    virtual bool IsWaiting() const { return false; }
    /// What is being put together goes on no further: hands it out if it is worth it.
    virtual void Flush(IUnitSink&) {}
    /// Forgets what is being put together.
    virtual void Reset() {}

    /// May change with each Take.
    tagFormat const& Format() const { return m_tFormat; }

protected:
    CPayload(tagMediaDescription const& tDescription, eMediaCodec eCodec, std::string_view strName);
    void SetConfig(std::vector<unsigned char> abyConfig);

    tagFormat m_tFormat;
};

/// A payload whose packets are frames of their own, or several.
class CPacketPayload : public CPayload
{
protected:
    using CPayload::CPayload;

    /// Hands out a frame of tPacket, with the losses since the one before.
    void PassOn(Bytes abyFrame, tagRtpPacket const& tPacket, std::uint32_t dwStamp, bool bDamaged, IUnitSink& tSink);

    unsigned m_nLostBefore = 0; ///< packets lost since the last frame
};

/// The payload of a track; never null: what isn't known is passed on as it comes.
std::unique_ptr<CPayload> MakePayload(tagMediaDescription const& tDescription);

std::unique_ptr<CPayload> MakeH264(tagMediaDescription const& tDescription);
std::unique_ptr<CPayload> MakeH265(tagMediaDescription const& tDescription);
std::unique_ptr<CPayload> MakeAac(tagMediaDescription const& tDescription);
std::unique_ptr<CPayload> MakeLatm(tagMediaDescription const& tDescription);
std::unique_ptr<CPayload> MakeJpeg(tagMediaDescription const& tDescription);
std::unique_ptr<CPayload> MakeMpeg4(tagMediaDescription const& tDescription);
std::unique_ptr<CPayload> MakeMpegTs(tagMediaDescription const& tDescription);
/// Each packet is a frame: audio of one packet each.
std::unique_ptr<CPayload> MakeWhole(tagMediaDescription const& tDescription, eMediaCodec eCodec,
                                    std::string_view strName);
/// A frame ends with the marker.
std::unique_ptr<CPayload> MakeMarked(tagMediaDescription const& tDescription, eMediaCodec eCodec,
                                     std::string_view strName);
} // namespace rtsp
