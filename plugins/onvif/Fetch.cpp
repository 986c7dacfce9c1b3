#include "plugins/onvif/Fetch.h"

#include "plugins/onvif/Face.h"

#include <algorithm>
#include <utility>

namespace onvifclient
{
namespace
{
constexpr std::size_t g_nBlock = 64 << 10;
constexpr std::size_t g_nHigh = std::size_t{4} << 20; // so much waits for the application: the session is closed
constexpr std::size_t g_nLow = std::size_t{1} << 20;  // and so much: it goes on
constexpr int64_t g_llFirstUs = 2000000;              // of the recording, until it is known whether there is sound
constexpr int64_t g_llGapUs = 1000000;                // more between two pictures is a gap

bool IsSound(tagStreamMediaFrame const& t)
{
    return t.dwMediaType == eMediaAudio &&
           (t.dwCodec == eCodecG711A || t.dwCodec == eCodecG711U || (t.dwCodec == eCodecAAC && t.pConfig));
}
} // namespace

CFetch::CFetch(std::shared_ptr<CLogin> pLogin, std::shared_ptr<rtsp::CEngine> pEngine,
               std::vector<tagStretch> atStretches, tagFileDownloadPara const& tPara)
    : CDownload(std::move(pLogin)), m_pEngine(std::move(pEngine)), m_pDelivery(std::make_shared<CDelivery>(m_pEngine)),
      m_atStretches(std::move(atStretches)), m_dwFormat(tPara.dwFormat), m_ullSkip(tPara.ullOffset)
{
}

CFetch::~CFetch()
{
    if (m_pOutput)
    {
        std::fclose(m_pOutput);
    }
}

bool CFetch::OpenFile(std::string const& strPath)
{
    m_pOutput = strPath.empty() ? nullptr : std::fopen(strPath.c_str(), m_ullSkip ? "abe" : "wbe");
    return strPath.empty() || m_pOutput;
}

bool CFetch::Close()
{
    (void)Control(eTransferStop);
    m_pDelivery->Close();
    return m_tCallback.Close();
}

int CFetch::SetCallback(FileDownloadCallback pfnData, unsigned long dwUser)
{
    return Ended(m_tCallback.Set(pfnData, dwUser));
}

int CFetch::Control(eFileTransferControl eControl)
{
    if (eControl < eTransferStart || eControl > eTransferStop)
    {
        return eResultBadArgument;
    }
    std::unique_ptr<rtsp::CStream> pStream;
    const std::lock_guard tLock(m_tMutex);
    if (m_eState == eState::Over)
    {
        return eControl == eTransferStop ? int{eResultOk} : int{eResultRefused};
    }
    switch (eControl)
    {
    case eTransferStart:
        m_eState = eState::Running;
        if (!m_pStream && !m_nEnd && !m_bFull)
        {
            OpenStretch();
        }
        WantGiving();
        break;
    case eTransferPause:
        m_eState = eState::Waiting; // what the device still sends fills the room there is
        break;
    case eTransferStop:
        m_eState = eState::Over;
        ++m_dwRun;
        pStream = std::move(m_pStream);
        break;
    }
    return eResultOk;
}

// --- from the device -------------------------------------------------------------------------------------------------

void CFetch::OpenStretch()
{
    tagStretch const& t = m_atStretches[m_iStretch];
    rtsp::tagStreamOptions tOptions = t.tOptions;
    tOptions.tPlayback.emplace();
    tOptions.tPlayback->bAsFastAsPossible = true;
    tOptions.tPlayback->tRange.emplace();
    tOptions.tPlayback->tRange->bClock = true;
    tOptions.tPlayback->tRange->llBeginUs = std::max(t.llStartUs, m_allHaveUs[0]);
    tOptions.tPlayback->tRange->llEndUs = t.llEndUs;
    m_bFull = false;
    ++m_dwRun;
    m_pStream = m_pEngine->Open(m_hDownload.load(), std::move(tOptions));
    m_pStream->SetListener(rtsp::eListener::EventCB, &CFetch::OnEvent, m_dwRun);
    m_pStream->SetFrameCallback(&CFetch::OnFrame, m_dwRun);
}

void CFetch::NextStretch()
{
    ++m_dwRun;
    m_pStream.reset();
    if (++m_iStretch < m_atStretches.size())
    {
        OpenStretch();
    }
    else
    {
        Finish(eResultOk);
    }
}

int CFetch::OnFrame(void* hStream, tagStreamMediaFrame const* ptFrame, unsigned long dwUser)
{
    if (const auto pSelf = Face().tHandles.Find<CFetch>(hStream))
    {
        pSelf->Take(*ptFrame, dwUser);
    }
    return 0;
}

int CFetch::OnEvent(void* hStream, unsigned long dwEvent, unsigned long dwWord2, unsigned long dwWord3, unsigned long,
                    unsigned long dwUser)
{
    const auto pSelf = Face().tHandles.Find<CFetch>(hStream);
    const auto tEnd = ReplayEnd(dwEvent, dwWord2, dwWord3);
    if (pSelf && (tEnd || dwEvent == eEventStalled))
    {
        pSelf->TakeEnd(tEnd.value_or(tagReplayEnd{false, eResultOk}), dwUser);
    }
    return 0;
}

void CFetch::Take(tagStreamMediaFrame const& tFrame, unsigned long dwRun)
{
    const std::lock_guard tLock(m_tMutex);
    if (dwRun != m_dwRun || m_eState == eState::Over)
    {
        return;
    }
    if (tFrame.llWallClockUs != 0 && tFrame.llWallClockUs >= m_atStretches[m_iStretch].llEndUs)
    {
        if (tFrame.dwMediaType == eMediaVideo)
        {
            NextStretch();
        }
        return;
    }
    // A session that begins again does so with the key frame before.
    int64_t& llHaveUs = m_allHaveUs[tFrame.dwMediaType == eMediaVideo ? 0 : 1];
    if (tFrame.llWallClockUs <= llHaveUs)
    {
        return;
    }
    llHaveUs = tFrame.llWallClockUs;
    Pack(tFrame);
    if (Waiting() > g_nHigh && m_pStream)
    {
        m_bFull = true;
        ++m_dwRun;
        m_pStream.reset();
    }
    WantGiving();
}

void CFetch::TakeEnd(tagReplayEnd const& tEnd, unsigned long dwRun)
{
    const std::lock_guard tLock(m_tMutex);
    if (dwRun != m_dwRun || m_eState == eState::Over || m_nEnd)
    {
        return;
    }
    const bool bNear = m_llLastUs >= m_atStretches[m_iStretch].llEndUs - g_llNearUs;
    // A device that starts again closes the connection like one that has nothing more.
    if (bNear)
    {
        NextStretch();
    }
    else if (tEnd.nResult != eResultOk)
    {
        Finish(tEnd.nResult);
    }
}

// --- into the file ---------------------------------------------------------------------------------------------------

// Until a picture has come, and it is known whether sound does, nothing can be written.
bool CFetch::StartFile()
{
    const auto itKey =
        std::ranges::find_if(m_atFirst, [](tagPending const& t) { return (t.tFrame.dwFlags & eFrameKey) != 0; });
    if (itKey == m_atFirst.end())
    {
        return false;
    }
    tagStreamMediaFrame const& tKey = itKey->tFrame;
    m_tVideo = {tKey.dwCodec, tKey.dwWidth, tKey.dwHeight, plugin::ParameterSetsOf(tKey.dwCodec, itKey->abyData)};
    const auto itSound = std::ranges::find_if(m_atFirst, [](tagPending const& t) { return IsSound(t.tFrame); });
    if (itSound != m_atFirst.end())
    {
        m_tAudio.dwCodec = itSound->tFrame.dwCodec;
        m_tAudio.dwSampleRate = itSound->tFrame.dwSampleRate;
        m_tAudio.dwChannels = std::max(itSound->tFrame.dwChannels, 1U);
    }
    m_pWriter = m_dwFormat == eFileFormatMp4 ? plugin::MakeFragmentedMp4({m_tVideo}, m_tAudio)
                                             : plugin::MakeTransportStream(m_tVideo.dwCodec, {});
    m_pWriter->Begin(m_abyMade);
    m_llLastUs = tKey.llWallClockUs;
    m_atGaps.push_back({m_llLastUs, m_llLastUs});
    const auto atFirst = std::exchange(m_atFirst, {});
    for (tagPending const& t : atFirst)
    {
        Pack(t.tFrame);
    }
    return true;
}

void CFetch::Pack(tagStreamMediaFrame const& tFrame)
{
    const bool bVideo = tFrame.dwMediaType == eMediaVideo;
    if (tFrame.llWallClockUs == 0 || (!bVideo && !IsSound(tFrame)))
    {
        return;
    }
    if (bVideo && tFrame.dwCodec != eCodecH264 && tFrame.dwCodec != eCodecH265)
    {
        Finish(eResultNotSupported); // no file of ours takes it
        return;
    }
    tagPending t;
    t.tFrame = tFrame;
    t.abyData.assign(tFrame.pData, tFrame.pData + tFrame.dwLength);
    t.tFrame.pData = t.abyData.data();
    if (!m_pWriter)
    {
        if (tFrame.pConfig)
        {
            m_tAudio.abyConfig.assign(tFrame.pConfig, tFrame.pConfig + tFrame.dwConfigLength);
        }
        m_atFirst.push_back(std::move(t));
        if (m_atFirst.back().tFrame.llWallClockUs - m_atFirst.front().tFrame.llWallClockUs > g_llFirstUs)
        {
            StartFile();
        }
        return;
    }
    if (bVideo ? tFrame.dwCodec != m_tVideo.dwCodec : tFrame.dwCodec != m_tAudio.dwCodec)
    {
        return;
    }
    if (!bVideo)
    {
        m_atSound.push_back(std::move(t));
        return;
    }
    if (m_tPicture)
    {
        Add(*m_tPicture, tFrame.llWallClockUs);
        AddSound(m_llLastUs);
    }
    m_tPicture = std::move(t);
}

// What a time of the recording is in the file, where gaps are left out.
int64_t CFetch::FileTime(int64_t llTimeUs) const
{
    const auto it = std::ranges::upper_bound(m_atGaps, llTimeUs, {}, &tagGap::llEndUs);
    return std::max<int64_t>(llTimeUs - (it == m_atGaps.begin() ? it : it - 1)->llSumUs, 0);
}

void CFetch::Add(tagPending const& tPending, int64_t llNextUs)
{
    const int64_t llTimeUs = tPending.tFrame.llWallClockUs;
    plugin::tagSample t;
    t.bVideo = tPending.tFrame.dwMediaType == eMediaVideo;
    t.bKey = (tPending.tFrame.dwFlags & eFrameKey) != 0;
    if (t.bVideo && llTimeUs > m_llLastUs + g_llGapUs)
    {
        m_atGaps.push_back({llTimeUs, m_atGaps.back().llSumUs + llTimeUs - m_llLastUs - g_llPictureUs});
    }
    m_llLastUs = t.bVideo ? std::max(m_llLastUs, llTimeUs) : m_llLastUs;
    t.llTimeUs = FileTime(llTimeUs);
    const int64_t llForUs = llNextUs - llTimeUs;
    t.llDurationUs = llForUs <= 0 || llForUs > g_llGapUs ? g_llPictureUs : llForUs;
    t.tData = tPending.abyData;
    m_pWriter->Add(t, m_abyMade);
}

// A device that isn't held to the recording's pace may send its sound long before its pictures.
void CFetch::AddSound(int64_t llUntilUs)
{
    while (m_atSound.size() > 1 && m_atSound.front().tFrame.llWallClockUs <= llUntilUs)
    {
        Add(m_atSound[0], m_atSound[1].tFrame.llWallClockUs);
        m_atSound.pop_front();
    }
}

void CFetch::Finish(int nResult)
{
    ++m_dwRun;
    m_pStream.reset();
    if (m_pWriter || StartFile())
    {
        if (m_tPicture)
        {
            Add(*m_tPicture, 0);
        }
        AddSound(m_llLastUs);
        m_tPicture.reset();
        m_atSound.clear();
        m_pWriter->End(m_abyMade);
    }
    else if (nResult == eResultOk)
    {
        nResult = eResultNotFound; // no picture has come
    }
    m_nEnd = nResult;
    WantGiving();
}

// --- to the application ----------------------------------------------------------------------------------------------

void CFetch::WantGiving()
{
    if (!m_bGiving && m_eState == eState::Running && (Waiting() >= g_nBlock || m_nEnd))
    {
        m_bGiving = true;
        m_pDelivery->Add([pSelf = shared_from_this()] { pSelf->Give(); });
    }
}

// Block after block, as long as there are whole ones; at the end the rest, and the call that says so.
void CFetch::Give()
{
    std::unique_lock tLock(m_tMutex);
    while (m_eState == eState::Running && (Waiting() >= g_nBlock || m_nEnd))
    {
        if (const auto nSkip = static_cast<std::size_t>(std::min<uint64_t>(m_ullSkip, Waiting())))
        {
            m_ullSkip -= nSkip;
            m_nGiven += nSkip;
            continue;
        }
        const std::size_t nNow = std::min(g_nBlock, Waiting());
        const auto itBegin = m_abyMade.begin() + static_cast<std::ptrdiff_t>(m_nGiven);
        plugin::Output abyBlock(itBegin, itBegin + static_cast<std::ptrdiff_t>(nNow));
        m_nGiven += nNow;
        if (m_nGiven > g_nLow)
        {
            m_abyMade.erase(m_abyMade.begin(), m_abyMade.begin() + static_cast<std::ptrdiff_t>(m_nGiven));
            m_nGiven = 0;
        }
        if (nNow != 0 && m_pOutput && std::fwrite(abyBlock.data(), 1, nNow, m_pOutput) != nNow)
        {
            m_nEnd = eResultNoResources;
            m_nGiven = m_abyMade.size();
            abyBlock.clear();
        }
        tagBuffer tBlock{abyBlock.data(), static_cast<uint32_t>(abyBlock.size())};
        if (abyBlock.empty())
        {
            m_eState = eState::Over;
            if (m_pOutput && std::fclose(std::exchange(m_pOutput, nullptr)) != 0 && *m_nEnd == eResultOk)
            {
                m_nEnd = eResultNoResources;
            }
            tBlock = {nullptr, static_cast<uint32_t>(*m_nEnd)};
        }
        if (m_bFull && !m_nEnd && Waiting() < g_nLow)
        {
            OpenStretch();
        }
        tLock.unlock();
        m_tCallback.Call(m_hDownload.load(), tBlock);
        tLock.lock();
    }
    m_bGiving = false;
}
} // namespace onvifclient
