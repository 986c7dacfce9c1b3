#include "plugins/device/media/LiveStream.h"

#include "plugins/device/Device.h"
#include "plugins/device/media/FrameRecord.h"
#include "plugins/device/media/Grid.h"

#include <algorithm>
#include <cstdlib>
#include <utility>

namespace device
{
namespace
{
constexpr int64_t g_llLateUs = 500000; // frames that are later than so are left out
constexpr int64_t g_llJumpUs = 500000; // a clock that changes by more has been set
constexpr uint32_t g_dwThousand = 1000;

// Whether it is this frame's turn, when dwShare of a thousand frames have one.
bool IsTurn(uint32_t& dwSum, uint32_t dwShare)
{
    dwSum += dwShare;
    const bool bTurn = dwSum >= g_dwThousand;
    dwSum -= bTurn ? g_dwThousand : 0;
    return bTurn;
}
} // namespace

int CLiveStream::Open(std::shared_ptr<CDevice> pDevice, uint32_t dwChannel, uint32_t dwStreamKind,
                      std::shared_ptr<IFrameSink> pSink, std::shared_ptr<CLiveStream>& pStream)
{
    tagStreamState tState;
    if (const int nResult = pDevice->StreamState(dwChannel, dwStreamKind, tState))
    {
        return nResult;
    }
    if (tState.tVideo.bEnabled == 0)
    {
        return eResultRefused;
    }
    CClips::Instance(); // throws here rather than later
    pStream = std::make_shared<CLiveStream>(std::move(pDevice), dwChannel, dwStreamKind, std::move(pSink));
    return eResultOk;
}

CLiveStream::CLiveStream(std::shared_ptr<CDevice> pDevice, uint32_t dwChannel, uint32_t dwStreamKind,
                         std::shared_ptr<IFrameSink> pSink)
    : m_pDevice(std::move(pDevice)), m_dwChannel(dwChannel), m_dwStreamKind(dwStreamKind), m_pSink(std::move(pSink))
{
    m_tInfo.dwState = eConnectionLive;
}

// --- from any thread -------------------------------------------------------------------------------------------------

void CLiveStream::Start()
{
    m_bForceKey = true;
    m_bStarted = true;
    CPump::Instance().Wake(shared_from_this(), CPump::NowUs());
}

void CLiveStream::Stop()
{
    m_bStarted = false;
}

int CLiveStream::Control(eTaskControl eControl)
{
    if (eControl != eTaskPlay && eControl != eTaskPause)
    {
        return eResultNotSupported;
    }
    m_bPaused = eControl == eTaskPause;
    CPump::Instance().Wake(shared_from_this(), CPump::NowUs());
    return eResultOk;
}

void CLiveStream::ForceKeyFrame()
{
    m_bForceKey = true;
}

tagRTSPPackageInfo CLiveStream::Info() const
{
    const std::lock_guard tLock(m_tInfoMutex);
    return m_tInfo;
}

void CLiveStream::Close()
{
    m_bClosed = true;
}

// --- in its time -----------------------------------------------------------------------------------------------------

void CLiveStream::SetState(uint32_t dwState)
{
    if (dwState == m_dwState)
    {
        return;
    }
    m_dwState = dwState;
    const std::lock_guard tLock(m_tInfoMutex);
    m_tInfo.dwReconnects += m_tInfo.dwState == eConnectionLost && dwState != eConnectionLost ? 1 : 0;
    m_tInfo.dwState = dwState;
    m_tInfo.dwLastStatus =
        dwState == eConnectionLost ? static_cast<uint32_t>(eResultConnectionLost) : m_tInfo.dwLastStatus;
}

// Looks what the device says of the stream. False: no frame is to come now.
bool CLiveStream::Refresh()
{
    const uint32_t dwVersion = m_pDevice->StreamVersion();
    if (!m_bKnown || dwVersion != m_dwVersion)
    {
        tagStreamState tNew;
        if (m_pDevice->StreamState(m_dwChannel, m_dwStreamKind, tNew) != eResultOk)
        {
            return false;
        }
        m_pClip = CClips::Instance().Find(tNew.tVideo.dwCodec, tNew.tVideo.dwWidth, tNew.tVideo.dwHeight);
        if (m_bKnown && (tNew.dwRun != m_tState.dwRun || tNew.tVideo.dwFrameRate != m_tState.tVideo.dwFrameRate))
        {
            m_bAnchored = false;
        }
        if (m_bKnown && tNew.dwRun != m_tState.dwRun)
        {
            m_bBegan = false;
        }
        m_bForceKey = m_bForceKey || m_tState.tVideo.dwCodec != tNew.tVideo.dwCodec ||
                      m_tState.tVideo.dwWidth != tNew.tVideo.dwWidth;
        m_tState = tNew;
        m_bKnown = true;
        m_dwVersion = dwVersion;
    }
    SetState(m_bPaused           ? eConnectionPaused
             : !m_tState.bUp     ? eConnectionLost
             : m_tState.bStalled ? eConnectionStalled
                                 : eConnectionLive);
    return m_tState.bUp && !m_tState.bStalled && m_pClip;
}

// Goes on at the device's present time. bNewTime: not where it was before.
void CLiveStream::Anchor(int64_t llDeviceUs, bool bNewTime)
{
    m_tVideo.llNext = PictureAt(llDeviceUs, m_tState.tVideo.dwFrameRate) + 1;
    m_tAudio.llNext = llDeviceUs / g_llPacketUs + 1;
    const int64_t llFirstUs = PictureTimeUs(m_tVideo.llNext, m_tState.tVideo.dwFrameRate);
    if (!m_bBegan || bNewTime)
    {
        const bool bFirst = m_tVideo.dwSequence == 0 && m_tAudio.dwSequence == 0;
        m_tVideo.bDiscontinuity = m_tAudio.bDiscontinuity = !bFirst;
        m_llBaseUs = llFirstUs - (m_bBegan ? m_llLastUs : 0);
        m_bBegan = true;
    }
    m_bForceKey = true;
    m_bGateOpen = false;
    m_bAnchored = true;
}

// Looks whether the device's clock was set, or the stream is too late.
void CLiveStream::CheckClock(int64_t llNowUs, int64_t llDeviceUs)
{
    const int64_t llOffsetUs = llDeviceUs - llNowUs;
    const bool bJump = m_bAnchored && std::abs(llOffsetUs - m_llOffsetUs) > g_llJumpUs;
    m_llOffsetUs = llOffsetUs;
    if (!m_bAnchored || bJump)
    {
        Anchor(llDeviceUs, bJump);
        return;
    }
    const int64_t llLateUs = llDeviceUs - PictureTimeUs(m_tVideo.llNext, m_tState.tVideo.dwFrameRate);
    if (llLateUs > g_llLateUs)
    {
        const int64_t llVideo = m_tVideo.llNext;
        const int64_t llAudio = m_tAudio.llNext;
        Anchor(llDeviceUs, false);
        --m_tVideo.llNext; // the present ones, not the next: where all is late for long, each stream still gets some
        --m_tAudio.llNext;
        m_tVideo.dwSequence += static_cast<uint32_t>(m_tVideo.llNext - llVideo);
        m_tAudio.dwSequence += static_cast<uint32_t>(m_tAudio.llNext - llAudio);
    }
}

int64_t CLiveStream::Run(int64_t llNowUs)
{
    if (m_bClosed)
    {
        return g_llNotAgain;
    }
    const bool bFlows = Refresh();
    if (!m_bStarted || m_bPaused || !bFlows)
    {
        m_bAnchored = false;
        return m_bStarted && !m_bPaused ? llNowUs + CPump::g_llPollUs : g_llNotAgain;
    }
    const int64_t llDeviceUs = m_pDevice->NowUs();
    CheckClock(llNowUs, llDeviceUs);
    int64_t llVideoUs = PictureTimeUs(m_tVideo.llNext, m_tState.tVideo.dwFrameRate);
    if (llVideoUs <= llDeviceUs)
    {
        SendVideo();
        llVideoUs = PictureTimeUs(m_tVideo.llNext, m_tState.tVideo.dwFrameRate);
    }
    if (m_tState.tAudio.bEnabled == 0)
    {
        return llNowUs + llVideoUs - llDeviceUs;
    }
    if (m_tAudio.llNext * g_llPacketUs <= llDeviceUs)
    {
        SendAudio();
    }
    return llNowUs + std::min(llVideoUs, m_tAudio.llNext * g_llPacketUs) - llDeviceUs;
}

void CLiveStream::SendVideo()
{
    const int64_t llPicture = m_tVideo.llNext++;
    if (m_tState.bVideoLoss)
    {
        m_bForceKey = true;
        m_bGateOpen = true; // sound comes all the same
        return;
    }
    const bool bKey = m_bForceKey.exchange(false) || llPicture % m_tState.tVideo.dwKeyFrameInterval == 0;
    m_dwSinceKey = bKey ? 0 : m_dwSinceKey + 1;
    m_bGateOpen = true;
    const uint32_t dwRate = m_tState.tVideo.dwFrameRate;
    const int64_t llTimeUs = PictureTimeUs(llPicture, dwRate);
    m_llLastUs = PictureTimeUs(llPicture + 1, dwRate) - m_llBaseUs;
    if (!bKey && IsTurn(m_tVideo.dwLose, m_tState.dwLose))
    {
        ++m_dwLostBefore;
        return;
    }
    tagStreamMediaFrame tFrame = VideoRecord(*m_pClip, bKey);
    tFrame.llWallClockUs = llTimeUs;
    Send(m_tVideo, tFrame, m_pClip->Frame(static_cast<uint64_t>(llPicture), m_dwSinceKey, CPump::Room()));
}

void CLiveStream::SendAudio()
{
    const int64_t llPacket = m_tAudio.llNext++;
    if (!m_bGateOpen)
    {
        return;
    }
    if (IsTurn(m_tAudio.dwLose, m_tState.dwLose))
    {
        ++m_dwLostBefore;
        return;
    }
    tagStreamMediaFrame tFrame = AudioRecord(m_tState.tAudio.dwCodec);
    tFrame.llWallClockUs = llPacket * g_llPacketUs;
    Send(m_tAudio, tFrame, CClips::Instance().Sound(m_tState.tAudio.dwCodec, static_cast<uint64_t>(llPacket)));
}

void CLiveStream::Send(tagTrack& tTrack, tagStreamMediaFrame& tFrame, Bytes tData)
{
    if (IsTurn(tTrack.dwDamage, m_tState.dwDamage))
    {
        std::vector<unsigned char>& abyRoom = CPump::Room();
        if (tData.data() != abyRoom.data())
        {
            abyRoom.assign(tData.begin(), tData.end());
        }
        // The second half is wrong; what says how the frame is coded stays.
        for (std::size_t i = abyRoom.size() / 2; i < abyRoom.size(); i += 7)
        {
            abyRoom[i] ^= 0x5A;
        }
        tData = abyRoom;
        tFrame.dwFlags |= eFrameDamaged;
    }
    tFrame.dwFlags |= tTrack.bDiscontinuity ? eFrameDiscontinuity : 0;
    tTrack.bDiscontinuity = false;
    tFrame.dwSequence = tTrack.dwSequence++;
    tFrame.dwLostBefore = std::exchange(m_dwLostBefore, 0);
    tFrame.llPresentationTimeUs = std::max<int64_t>(tFrame.llWallClockUs - m_llBaseUs, 0);
    tFrame.pData = tData.data();
    tFrame.dwLength = static_cast<uint32_t>(tData.size());
    {
        const std::lock_guard tLock(m_tInfoMutex);
        ++m_tInfo.ullPackets;
        ++m_tInfo.ullFrames;
        m_tInfo.ullBytes += tFrame.dwLength;
        m_tInfo.ullLost += tFrame.dwLostBefore;
    }
    if (m_bStarted && !m_bClosed)
    {
        m_pSink->OnFrame(tFrame);
    }
}
} // namespace device
