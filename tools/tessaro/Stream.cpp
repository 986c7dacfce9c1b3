#include "tools/tessaro/Stream.h"

#include "tools/tessaro/Interrupt.h"

#include <RecordTables.h>
#include <cerrno>
#include <cstring>

namespace tessaro
{
namespace
{
struct tagReason
{
    unsigned long dwCode;
    char const* szReason;
    eExit eCode;
};
constexpr tagReason g_atStatuses[] = {
    {401, "wrong user name or password, or none was given", eExitLogin},
    {403, "this user may not see the stream", eExitLogin},
    {404, "there is no such stream; is the path right?", eExitFailed},
    {453, "it has no bandwidth left for another stream", eExitFailed},
    {461, "it doesn't offer this transport; try another --transport", eExitFailed},
    {503, "it is overloaded, or serves as many streams as it can", eExitFailed},
};
constexpr tagReason g_atErrors[] = {
    {0, "the device ended the stream", eExitUnreachable},
    {ECONNREFUSED, "the host is there, but nothing listens on this port", eExitUnreachable},
    {ENXIO, "there is no host of this name", eExitUnreachable},
    {ETIMEDOUT, "the device didn't answer in time", eExitUnreachable},
    {EACCES, "the device's certificate isn't trusted, or doesn't name this host", eExitUnreachable},
    {EPROTO, "the answers make no sense; does it speak RTSP there?", eExitUnreachable},
};

template <std::size_t n>
tagReason Reason(tagReason const (&at)[n], unsigned long dwCode, tagReason tElse)
{
    for (tagReason const& t : at)
    {
        if (t.dwCode == dwCode)
        {
            return t;
        }
    }
    return tElse;
}

double PerSecond(std::uint64_t ullMore, double dSeconds)
{
    return dSeconds > 0 ? static_cast<double>(ullMore) / dSeconds : 0;
}
} // namespace

void CFrameCount::Count(tagStreamMediaFrame const& tFrame)
{
    const std::lock_guard tLock(m_tMutex);
    if ((tFrame.dwFlags & eFrameEnd) != 0)
    {
        m_t.bEnded = true;
    }
    if (tFrame.dwMediaType == eMediaOther || tFrame.dwLength == 0)
    {
        return;
    }
    const bool bVideo = tFrame.dwMediaType == eMediaVideo;
    tagTrack& tTrack = bVideo ? m_t.tVideo : m_t.tAudio;
    if (tTrack.ullFrames++ == 0)
    {
        tTrack.strCodec = Text(tFrame.szCodecName);
        tTrack.llFirstUs = tFrame.llPresentationTimeUs;
    }
    tTrack.ullBytes += tFrame.dwLength;
    tTrack.ullLost += tFrame.dwLostBefore;
    tTrack.ullKeys += (tFrame.dwFlags & eFrameKey) != 0;
    tTrack.llLastUs = tFrame.llPresentationTimeUs;
    tTrack.dwWidth = tFrame.dwWidth;
    tTrack.dwHeight = tFrame.dwHeight;
    tTrack.dwSampleRate = tFrame.dwSampleRate;
    tTrack.dwChannels = tFrame.dwChannels;
    if (bVideo)
    {
        m_t.dwSequence = tFrame.dwSequence;
        m_t.llWallClockUs = tFrame.llWallClockUs;
        m_t.llLatencyUs = tFrame.llWallClockUs == 0 ? 0 : NowUs() - tFrame.llWallClockUs;
    }
}

CFrameCount::tagTotals CFrameCount::Totals() const
{
    const std::lock_guard tLock(m_tMutex);
    return m_t;
}

json ToJson(CFrameCount::tagTotals const& tTotals)
{
    json tResult;
    CFrameCount::tagTrack const& tVideo = tTotals.tVideo;
    CFrameCount::tagTrack const& tAudio = tTotals.tAudio;
    if (tVideo.ullFrames > 0)
    {
        tResult["video"] = {{"codec", tVideo.strCodec},
                            {"width", tVideo.dwWidth},
                            {"height", tVideo.dwHeight},
                            {"frames", tVideo.ullFrames},
                            {"key_frames", tVideo.ullKeys},
                            {"bytes", tVideo.ullBytes},
                            {"lost_packets", tVideo.ullLost},
                            {"seconds", static_cast<double>(tVideo.llLastUs - tVideo.llFirstUs) / 1e6}};
    }
    if (tAudio.ullFrames > 0)
    {
        tResult["audio"] = {{"codec", tAudio.strCodec},      {"sample_rate", tAudio.dwSampleRate},
                            {"channels", tAudio.dwChannels}, {"frames", tAudio.ullFrames},
                            {"bytes", tAudio.ullBytes},      {"lost_packets", tAudio.ullLost}};
    }
    return tResult;
}

json CRates::Now()
{
    const auto tNow = m_tCount.Totals();
    const long long llNowMs = NowMs();
    m_llBeginMs = m_llBeginMs == 0 ? llNowMs : m_llBeginMs;
    const double dSeconds = m_llBeforeMs == 0 ? 0 : static_cast<double>(llNowMs - m_llBeforeMs) / 1e3;
    const auto Bytes = [](CFrameCount::tagTotals const& t) { return t.tVideo.ullBytes + t.tAudio.ullBytes; };
    json tRates = {{"seconds", (llNowMs - m_llBeginMs) / 1000},
                   {"codec", tNow.tVideo.strCodec},
                   {"width", tNow.tVideo.dwWidth},
                   {"height", tNow.tVideo.dwHeight},
                   {"frames", tNow.tVideo.ullFrames},
                   {"fps", PerSecond(tNow.tVideo.ullFrames - m_tBefore.tVideo.ullFrames, dSeconds)},
                   {"kbit_s", PerSecond(Bytes(tNow) - Bytes(m_tBefore), dSeconds) * 8 / 1000},
                   {"lost_packets", tNow.tVideo.ullLost + tNow.tAudio.ullLost},
                   {"latency_ms", tNow.llWallClockUs == 0 ? json(nullptr) : json(tNow.llLatencyUs / 1000)},
                   {"time", tNow.llWallClockUs == 0 ? json(nullptr) : json(TimeText(tNow.llWallClockUs))}};
    m_tBefore = tNow;
    m_llBeforeMs = llNowMs;
    return tRates;
}

std::string CRates::Text(json const& t)
{
    const auto nSeconds = t["seconds"].get<int>();
    return fmt::format("{:02}:{:02}  {} {}x{}  {} frames  {:.1f} fps  {:.0f} kbit/s  lost {}  latency {}",
                       nSeconds / 60, nSeconds % 60, t["codec"].get<std::string>(), t["width"].get<int>(),
                       t["height"].get<int>(), t["frames"].get<std::uint64_t>(), t["fps"].get<double>(),
                       t["kbit_s"].get<double>(), t["lost_packets"].get<std::uint64_t>(),
                       t["latency_ms"].is_null() ? "?" : t["latency_ms"].dump() + " ms");
}

CLiveStream::CLiveStream(CSession const& tSession, tagLiveOptions const& tOptions, FrameHandler fnFrame)
    : m_tSession(tSession), m_fnFrame(std::move(fnFrame)), m_tMedia(&ClientAdapter_RealStreamDisconnect)
{
    tagRealStreamPara tPara{};
    tPara.dwChannel = tOptions.dwChannel;
    tPara.dwStreamKind = tOptions.bSub ? eStreamSub : eStreamMain;
    tPara.dwStreamPara[0] =
        static_cast<std::uint32_t>(NamesOf<eRtspTransport>().Find(tOptions.strTransport).value_or(0));
    Check(ClientAdapter_RealStreamConnect(m_tMedia.Target(), tSession.Login(), &tPara),
          fmt::format("opening the live stream of channel {}", tOptions.dwChannel));
    if (tSession.IsRtsp())
    {
        m_tEvents.emplace(tSession.Login(), 0,
                          [this](unsigned long dwEvent, unsigned long dwDetail, unsigned long, unsigned long)
                          { OnEvent(dwEvent, dwDetail); });
    }
    Check(ClientAdapter_StreamMediaCB(
              m_tMedia.Id(),
              [](void*, tagStreamMediaFrame const* ptFrame, unsigned long dwUser)
              {
                  auto& tThis = *reinterpret_cast<CLiveStream*>(dwUser);
                  const bool bFirst = tThis.m_tCount.Totals().tVideo.ullFrames == 0;
                  tThis.m_tCount.Count(*ptFrame);
                  if (tThis.m_fnFrame)
                  {
                      tThis.m_fnFrame(*ptFrame);
                  }
                  if (bFirst)
                  {
                      CInterrupt::Instance().Wake();
                  }
                  return 0;
              },
              reinterpret_cast<unsigned long>(this)),
          "asking for frames");
}

CLiveStream::~CLiveStream()
{
    m_tMedia.Shut();
}

void CLiveStream::OnEvent(unsigned long dwEvent, unsigned long dwDetail)
{
    if (dwEvent == eEventClockJump || dwEvent == eEventTransport)
    {
        return;
    }
    {
        const std::lock_guard tLock(m_tMutex);
        m_dwEvent = dwEvent;
        m_dwDetail = dwDetail;
    }
    CInterrupt::Instance().Wake();
}

CFailure CLiveStream::Silence() const
{
    const std::lock_guard tLock(m_tMutex);
    if (m_dwEvent == eEventRefused)
    {
        const tagReason t = Reason(g_atStatuses, m_dwDetail, {0, "it doesn't accept the request", eExitFailed});
        return {t.eCode, fmt::format("the device refused: {} (RTSP status {})", t.szReason, m_dwDetail)};
    }
    if (m_dwEvent == eEventLost)
    {
        const tagReason t =
            Reason(g_atErrors, m_dwDetail, {0, strerror(static_cast<int>(m_dwDetail)), eExitUnreachable});
        return {t.eCode, fmt::format("no frame came: {}", t.szReason)};
    }
    return {eExitUnreachable, "no frame came in time", "the device accepted the stream; check the network between"};
}

std::string CLiveStream::Trouble() const
{
    {
        const std::lock_guard tLock(m_tMutex);
        if (m_dwEvent != eEventRefused && m_dwEvent != eEventLost)
        {
            return "";
        }
    }
    return Silence().what();
}

bool CLiveStream::AwaitFirst(int nSeconds)
{
    const auto Came = [this] { return m_tCount.Totals().tVideo.ullFrames + m_tCount.Totals().tAudio.ullFrames > 0; };
    WaitUntil([&] { return Came() || !Trouble().empty(); }, nSeconds * 1000LL);
    if (!Came() && !CInterrupt::Instance().Asked())
    {
        throw Silence();
    }
    return Came();
}

void AddLiveOptions(CLine& tLine, tagLiveOptions& tOptions)
{
    tLine.Option("--channel", tOptions.dwChannel, "the device's channel, from 0").Value("N");
    tLine.Flag("--sub", tOptions.bSub, "the sub stream, which is smaller");
    tLine.Option("--transport", tOptions.strTransport, "how an rtsp:// stream travels: tcp, udp, multicast, automatic")
        .OneOf({"tcp", "udp", "multicast", "automatic"})
        .Value("KIND");
}
} // namespace tessaro
