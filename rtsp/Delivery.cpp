#include "rtsp/Delivery.h"

#include "rtsp/Buffers.h"

#include <algorithm>
#include <exception>
#include <utility>

namespace rtsp
{
namespace
{
using namespace std::chrono_literals;

constexpr auto g_tReplaceTime = 2s;
constexpr std::size_t g_nItemCost = 512; // of a frame beside its bytes

// The stream whose callback this thread runs.
thread_local CDelivery const* g_pOwn = nullptr;

// Which stream's callback waits for which other stream's callback to return. Streams that close each other from their
// callbacks would wait for each other; the one that would close the circle doesn't wait.
class CWait
{
public:
    /// pWaiter: null: the caller is in no callback.
    CWait(CDelivery const* pWaiter, CDelivery const* pTarget) : m_pWaiter(pWaiter), m_pTarget(pTarget)
    {
        if (m_pWaiter)
        {
            const std::lock_guard tLock(g_tMutex);
            m_bClosesCircle = IsCircle();
            m_pNext = std::exchange(g_pFirst, this);
        }
    }
    ~CWait()
    {
        if (m_pWaiter)
        {
            const std::lock_guard tLock(g_tMutex);
            CWait** ppWait = &g_pFirst;
            while (*ppWait != this)
            {
                ppWait = &(*ppWait)->m_pNext;
            }
            *ppWait = m_pNext;
        }
    }
    CWait(CWait const&) = delete;
    CWait& operator=(CWait const&) = delete;

    bool ClosesCircle() const { return m_bClosesCircle; }

private:
    bool IsCircle() const
    {
        CDelivery const* pTarget = m_pTarget;
        while (pTarget != m_pWaiter)
        {
            CWait const* pWait = g_pFirst;
            while (pWait && (pWait->m_pWaiter != pTarget || pWait->m_bClosesCircle))
            {
                pWait = pWait->m_pNext;
            }
            if (!pWait)
            {
                return false;
            }
            pTarget = pWait->m_pTarget;
        }
        return true;
    }

    // Nothing to destroy: streams may outlive statics.
    static inline constinit std::mutex g_tMutex;
    static inline constinit CWait* g_pFirst = nullptr;

    CDelivery const* const m_pWaiter;
    CDelivery const* const m_pTarget;
    CWait* m_pNext = nullptr;
    bool m_bClosesCircle = false;
};

bool IsVideo(tagStreamMediaFrame const& tFrame)
{
    return tFrame.dwMediaType == eMediaVideo;
}

// Of other codecs it isn't known which frames decoding can start with.
bool CanStartWith(tagStreamMediaFrame const& tFrame)
{
    switch (static_cast<eMediaCodec>(tFrame.dwCodec))
    {
    case eCodecH264:
    case eCodecH265:
    case eCodecMPEG4:
    case eCodecMJPEG:
        return (tFrame.dwFlags & (eFrameKey | eFrameDamaged)) == eFrameKey;
    default:
        return true;
    }
}
} // namespace

CDelivery::CDelivery(void* hStream, CLoop& tLoop, IDeliverer& tDeliverer)
    : m_hStream(hStream), m_tLoop(tLoop), m_tDeliverer(tDeliverer)
{
    m_tInfo.dwState = eConnectionConnecting;
    m_adwTold[0] = eEventConnecting;
}

// --- what comes in ---------------------------------------------------------------------------------------------------

std::uint32_t CDelivery::Bit(unsigned iTrack)
{
    return 1U << std::min(iTrack, 31U);
}

void CDelivery::Restart(bool bHasVideo)
{
    const std::lock_guard tLock(m_tMutex);
    m_bHasVideo = bHasVideo;
    m_bFirst = true;
}

// Groups of pictures are dropped whole, and when a key frame comes there must be room for its group.
bool CDelivery::IsHeldBack(tagItem const& tItem, std::size_t nCost)
{
    const bool bFits = m_nBytes == 0 || m_nBytes + nCost <= nMostBytes;
    const bool bStarts = !m_bHasVideo || (IsVideo(tItem.tFrame.tFrame) && CanStartWith(tItem.tFrame.tFrame));
    m_bDropping = m_bDropping ? !(bStarts && m_nBytes <= nMostBytes / 2) : !bFits;
    return m_bDropping;
}

void CDelivery::PutFrame(tagTrackFrame& tFrame, unsigned iTrack)
{
    const std::lock_guard tLock(m_tMutex);
    ++m_tInfo.ullPackets;
    if (m_bMuted)
    {
        return;
    }
    if (m_tInfo.dwState == eConnectionRefused ||
        m_tInfo.dwState == eConnectionLost) // still comes, but the end was told
    {
        m_dwDroppedLost += tFrame.tFrame.dwLostBefore;
        GiveBuffer(std::move(tFrame.abyData));
        return;
    }
    tagItem tItem{{}, std::move(tFrame), iTrack, m_bFirst, m_bHasVideo};
    tagStreamMediaFrame& tOut = tItem.tFrame.tFrame;
    const std::size_t nCost = tOut.dwLength + g_nItemCost;
    if (IsHeldBack(tItem, nCost))
    {
        ++m_tInfo.dwDropped;
        m_dwDroppedLost += tOut.dwLostBefore;
        m_dwDroppedBreaks |= Bit(iTrack);
        GiveBuffer(std::move(tItem.tFrame.abyData));
        return;
    }
    tOut.dwLostBefore += m_dwDroppedLost;
    tOut.dwFlags |= m_dwDroppedBreaks & Bit(iTrack) ? unsigned{eFrameDiscontinuity} : 0U;
    Put(std::move(tItem));
    m_dwDroppedLost = 0;
    m_dwDroppedBreaks &= ~Bit(iTrack);
    m_bFirst = false;
    m_nBytes += nCost;
}

// Under the mutex.
void CDelivery::Put(tagItem&& tItem)
{
    if (m_bMuted)
    {
        return;
    }
    if (m_atSpare.empty())
    {
        m_atSpare.emplace_back();
    }
    m_atSpare.front() = std::move(tItem);
    m_atItems.splice(m_atItems.end(), m_atSpare, m_atSpare.begin());
}

void CDelivery::SetState(Words const& adwWords)
{
    const std::lock_guard tLock(m_tMutex);
    m_tInfo.dwState = static_cast<std::uint32_t>(adwWords[0]);
    Put({.adwWords = adwWords, .tFrame = {}});
}

void CDelivery::PutEvent(Words const& adwWords)
{
    const std::lock_guard tLock(m_tMutex);
    Put({.adwWords = adwWords, .tFrame = {}});
}

tagRTSPPackageInfo CDelivery::Info() const
{
    const std::lock_guard tLock(m_tMutex);
    return m_tInfo;
}

// --- what goes out ---------------------------------------------------------------------------------------------------

void CDelivery::Run()
{
    std::unique_lock tLock(m_tMutex);
    if (m_bRunning)
    {
        return;
    }
    m_bRunning = true;
    struct tagScope // a callback may end its thread
    {
        ~tagScope()
        {
            tThis.m_bRunning = false;
            if (!tThis.m_atItems.empty() && !tThis.m_bMuted)
            {
                tThis.m_tDeliverer.WantDelivery();
            }
        }
        CDelivery& tThis;
    } tScope{*this};
    while (CallNext(tLock))
    {
    }
}

// False: there is nothing to call.
bool CDelivery::CallNext(std::unique_lock<std::mutex>& tLock)
{
    if (m_bMuted)
    {
        m_atItems.clear();
        return false;
    }
    const bool bStateNext =
        !m_atItems.empty() && m_atItems.front().adwWords[0] != 0 && m_atItems.front().adwWords[0] <= eEventPaused;
    for (std::size_t i = 0; !bStateNext && i < m_atListeners.size(); ++i)
    {
        if (std::exchange(m_abNewListener[i], false))
        {
            Call(tLock, m_atListeners[i], m_adwTold[0], m_adwTold[1], m_adwTold[2], m_adwTold[3]);
            return true;
        }
    }
    if (m_atItems.empty())
    {
        return false;
    }
    std::list<tagItem> atNow;
    atNow.splice(atNow.begin(), m_atItems, m_atItems.begin());
    tagItem& tItem = atNow.front();
    if (tItem.adwWords[0] == 0)
    {
        CallWithFrame(tLock, tItem);
        m_atSpare.swap(atNow);
        return true;
    }
    if (bStateNext)
    {
        m_adwTold = tItem.adwWords;
        m_abNewListener = {}; // they hear of it now
    }
    for (auto const& tListener : m_atListeners)
    {
        Call(tLock, tListener, tItem.adwWords[0], tItem.adwWords[1], tItem.adwWords[2], tItem.adwWords[3]);
    }
    return true;
}

void CDelivery::CallWithFrame(std::unique_lock<std::mutex>& tLock, tagItem& tItem)
{
    tagStreamMediaFrame& tFrame = tItem.tFrame.tFrame;
    m_nBytes -= tFrame.dwLength + g_nItemCost;
    if (Admit(tItem))
    {
        ++m_tInfo.ullFrames;
        m_tInfo.ullBytes += tFrame.dwLength;
        if (Call(tLock, m_tFrameCallback, &tFrame) == eResultNoEntryPoint) // nobody took it
        {
            --m_tInfo.ullFrames;
            m_tInfo.ullBytes -= tFrame.dwLength;
            m_bGateOpen = false;
            m_dwHeldLost += tFrame.dwLostBefore;
            m_dwHeldBreaks |= tFrame.dwFlags & eFrameDiscontinuity ? Bit(tItem.iTrack) : 0;
        }
    }
    tLock.unlock();
    GiveBuffer(std::move(tItem.tFrame.abyData));
    tLock.lock();
}

// Whether it goes out. The gate is closed until a video frame comes that decoding can start with. What was held back is
// told with the next frame that goes out.
bool CDelivery::Admit(tagItem& tItem)
{
    tagStreamMediaFrame& tFrame = tItem.tFrame.tFrame;
    if (tItem.bFirst)
    {
        m_bGateOpen = false;
        m_bVideoOut = tItem.bHasVideo;
    }
    m_dwHeldLost += tFrame.dwLostBefore;
    m_dwHeldBreaks |= tFrame.dwFlags & eFrameDiscontinuity ? Bit(tItem.iTrack) : 0;
    m_bGateOpen |= !m_bVideoOut || (IsVideo(tFrame) && CanStartWith(tFrame));
    if (!m_tFrameCallback.pfn || !m_bGateOpen)
    {
        return false;
    }
    tFrame.dwLostBefore = std::exchange(m_dwHeldLost, 0);
    tFrame.dwFlags |= m_dwHeldBreaks & Bit(tItem.iTrack) ? unsigned{eFrameDiscontinuity} : 0U;
    m_dwHeldBreaks &= ~Bit(tItem.iTrack);
    return true;
}

// While it lives, a callback runs.
struct CDelivery::tagCall
{
    tagCall(CDelivery& t, std::unique_lock<std::mutex>& tL) : tThis(t), tLock(tL), tScope(t.m_tLoop)
    {
        g_pOwn = &tThis;
        tLock.unlock();
    }
    ~tagCall()
    {
        tLock.lock();
        g_pOwn = nullptr;
        tThis.m_pCalled = nullptr;
        ++tThis.m_ullCalls;
        tThis.m_tChanged.notify_all();
    }
    tagCall(tagCall const&) = delete;
    tagCall& operator=(tagCall const&) = delete;

    CDelivery& tThis;
    std::unique_lock<std::mutex>& tLock;
    const CLoop::CCallbackScope tScope;
};

// What a callback throws ends here; only the end of its thread passes through.
template <class Function, class... A>
int CDelivery::Call(std::unique_lock<std::mutex>& tLock, tagCallback<Function> const& tCallback, A... tArguments)
{
    if (m_bMuted || !tCallback.pfn)
    {
        return eResultOk;
    }
    m_pCalled = &tCallback;
    const tagCallback<Function> tNow = tCallback;
    const tagCall tCall(*this, tLock);
    try
    {
        return tNow.pfn(m_hStream, tArguments..., tNow.dwUser);
    }
    catch (...)
    {
        if (!std::current_exception()) // no exception: the thread is ending
        {
            throw;
        }
        return eResultOk;
    }
}

// --- for any thread --------------------------------------------------------------------------------------------------

int CDelivery::SetFrameCallback(StreamMediaCallback pfnFrame, unsigned long dwUser)
{
    {
        const std::lock_guard tLock(m_tMutex);
        m_bGateOpen = m_bGateOpen && m_tFrameCallback.pfn;
        m_tFrameCallback = {pfnFrame, dwUser};
    }
    return AwaitCallback(&m_tFrameCallback, Clock::now() + g_tReplaceTime);
}

int CDelivery::SetListener(eListener eWhich, DeviceEventCallback pfnEvent, unsigned long dwUser)
{
    const auto iWhich = static_cast<std::size_t>(eWhich);
    {
        const std::lock_guard tLock(m_tMutex);
        m_atListeners[iWhich] = {pfnEvent, dwUser};
        m_abNewListener[iWhich] = pfnEvent != nullptr;
    }
    m_tDeliverer.WantDelivery();
    return AwaitCallback(&m_atListeners[iWhich], Clock::now() + g_tReplaceTime);
}

void CDelivery::Mute()
{
    const std::lock_guard tLock(m_tMutex);
    m_bMuted = true;
}

int CDelivery::AwaitSilence(Clock::time_point tUntil)
{
    return AwaitCallback(nullptr, tUntil);
}

// The end of the run that is going on, of this registration's function or (null) of any.
int CDelivery::AwaitCallback(void const* pCallback, Clock::time_point tUntil)
{
    std::unique_lock tLock(m_tMutex);
    const std::uint64_t ullCalls = m_ullCalls;
    const auto fnOver = [&] { return !m_pCalled || (pCallback && m_pCalled != pCallback) || m_ullCalls != ullCalls; };
    if (fnOver())
    {
        return eResultOk;
    }
    const CWait tWait(g_pOwn, this);
    const bool bOver = tWait.ClosesCircle() || m_tChanged.wait_until(tLock, tUntil, fnOver);
    return bOver ? 0 : eResultStillRunning;
}
} // namespace rtsp
