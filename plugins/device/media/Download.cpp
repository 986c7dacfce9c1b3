#include "plugins/device/media/Download.h"

#include "plugins/device/Device.h"
#include "plugins/device/Text.h"
#include "plugins/device/media/Muxer.h"

#include "protocol/interface/Queries.h"
#include "protocol/interface/Results.h"

#include <algorithm>
#include <utility>

namespace device
{
namespace
{
constexpr int64_t g_llBlockUs = 5000;                // between two blocks
constexpr int64_t g_llMeasuredUs = 7200 * 1000000LL; // the length of a longer recording isn't known beforehand
} // namespace

int CDownload::Open(std::shared_ptr<CDevice> pDevice, tagFileDownloadPara& tPara, std::shared_ptr<IBlockSink> pSink,
                    std::shared_ptr<CDownload>& pDownload)
{
    const auto pNew = std::make_shared<CDownload>(std::move(pDevice), std::move(pSink));
    if (const int nResult = pNew->Find(tPara))
    {
        return nResult;
    }
    tPara.ullLength = pNew->m_pFile ? pNew->m_pFile->size() : pNew->Measure(tPara.dwFormat);
    if (tPara.ullLength != 0 && tPara.ullOffset > tPara.ullLength)
    {
        return eResultBadArgument;
    }
    const std::string strPath = Text(tPara.szPath);
    if (!strPath.empty())
    {
        pNew->m_pOutput = std::fopen(strPath.c_str(), tPara.ullOffset ? "ab" : "wb");
        if (!pNew->m_pOutput)
        {
            return eResultNoResources;
        }
    }
    pNew->m_ullSkip = tPara.ullOffset;
    pDownload = pNew;
    return eResultOk;
}

CDownload::CDownload(std::shared_ptr<CDevice> pDevice, std::shared_ptr<IBlockSink> pSink)
    : m_pDevice(std::move(pDevice)), m_pSink(std::move(pSink))
{
}

CDownload::~CDownload()
{
    if (m_pOutput)
    {
        std::fclose(m_pOutput);
    }
}

int CDownload::Find(tagFileDownloadPara const& tPara)
{
    const std::string strFile = Text(tPara.szFile);
    const bool bRecording = tPara.dwKind == eFileRecording || tPara.dwKind == eFileAny;
    if (tPara.dwKind > eFileAudio || (strFile.empty() && !bRecording))
    {
        return eResultBadArgument;
    }
    const int nResult = bRecording ? FindRecording(tPara, strFile) : static_cast<int>(eResultNotFound);
    if (nResult != eResultNotFound || strFile.empty() || tPara.dwKind == eFileRecording)
    {
        return nResult;
    }
    m_pFile = m_pDevice->File(tPara.dwKind, strFile);
    return m_pFile ? static_cast<int>(eResultOk) : static_cast<int>(eResultNotFound);
}

int CDownload::FindRecording(tagFileDownloadPara const& tPara, std::string const& strFile)
{
    tagRecordingQuestion tQuestion;
    tQuestion.strFile = strFile;
    tQuestion.llStartUs = tPara.llStartUs;
    tQuestion.llEndUs = tPara.llEndUs;
    if (tPara.dwFormat > eFileFormatMpegTs || tPara.dwStreamKind > 5 ||
        (tPara.llEndUs != 0 && tPara.llEndUs <= tPara.llStartUs))
    {
        return eResultBadArgument;
    }
    if (strFile.empty())
    {
        if (tPara.dwChannel >= m_pDevice->Channels())
        {
            return eResultNoChannel;
        }
        tQuestion.ullChannels = uint64_t{1} << tPara.dwChannel;
        tQuestion.dwTypes = tPara.dwTypes;
        tQuestion.dwStreamKind = tPara.dwStreamKind;
    }
    auto atRecordings = m_pDevice->Recordings(tQuestion);
    std::erase_if(atRecordings,
                  [tFirst = atRecordings.empty() ? tagRecording{} : atRecordings.front()](tagRecording const& t)
                  {
                      return t.tVideo.dwCodec != tFirst.tVideo.dwCodec ||
                             (t.tAudio.bEnabled != 0 && tFirst.tAudio.bEnabled != 0 &&
                              t.tAudio.dwCodec != tFirst.tAudio.dwCodec);
                  });
    m_pFrames = std::make_unique<CRecordedFrames>(atRecordings, tPara.llStartUs, tPara.llEndUs, true, false);
    if (m_pFrames->IsEmpty())
    {
        return eResultNotFound;
    }
    m_dwChannel = atRecordings.front().dwChannel;
    Restart(tPara.dwFormat);
    return eResultOk;
}

// The file begins anew.
void CDownload::Restart(uint32_t dwFormat)
{
    m_pMuxer = CMuxer::Make(dwFormat, *m_pFrames);
    m_pFrames->Resume(m_pFrames->StartUs());
    m_bBegan = m_bEnded = false;
    m_llGapsUs = m_llEndUs = m_pFrames->StartUs();
    m_abyMade.clear();
    m_nGiven = 0;
}

// Makes the file once to see how long it is.
uint64_t CDownload::Measure(uint32_t dwFormat)
{
    if (m_pFrames->EndUs() - m_pFrames->StartUs() > g_llMeasuredUs)
    {
        return 0;
    }
    uint64_t ullLength = 0;
    while (Make())
    {
        ullLength += m_abyMade.size();
        m_abyMade.clear();
    }
    ullLength += m_abyMade.size();
    Restart(dwFormat);
    return ullLength;
}

// Appends what comes next in the file. False: it is whole.
bool CDownload::Make()
{
    if (m_bEnded)
    {
        return false;
    }
    if (!std::exchange(m_bBegan, true))
    {
        m_pMuxer->Begin(m_abyMade);
        return true;
    }
    tagRecordedFrame tFrame;
    if (!m_pFrames->Next(tFrame))
    {
        m_pMuxer->End(m_abyMade);
        m_bEnded = true;
        return false;
    }
    if (tFrame.bAfterGap && tFrame.llTimeUs > m_llEndUs)
    {
        m_llGapsUs += tFrame.llTimeUs - m_llEndUs;
    }
    m_llEndUs = std::max(m_llEndUs, tFrame.llTimeUs + tFrame.llDurationUs);
    m_pMuxer->Add(tFrame, std::max<int64_t>(tFrame.llTimeUs - m_llGapsUs, 0), m_abyMade);
    return true;
}

int CDownload::Control(eFileTransferControl eControl)
{
    if (eControl < eTransferStart || eControl > eTransferStop)
    {
        return eResultBadArgument;
    }
    const std::lock_guard tLock(m_tMutex);
    if (m_eState == eState::Over)
    {
        return eControl == eTransferStop ? static_cast<int>(eResultOk) : static_cast<int>(eResultRefused);
    }
    m_eState = eControl == eTransferStart   ? eState::Running
               : eControl == eTransferPause ? eState::Waiting
                                            : eState::Over;
    if (m_eState == eState::Running)
    {
        CPump::Instance().Wake(shared_from_this(), CPump::NowUs());
    }
    return eResultOk;
}

void CDownload::Close()
{
    (void)Control(eTransferStop);
}

int64_t CDownload::Run(int64_t llNowUs)
{
    {
        const std::lock_guard tLock(m_tMutex);
        if (m_eState != eState::Running)
        {
            return g_llNotAgain;
        }
    }
    tagStreamState tState;
    if (m_pDevice->StreamState(m_dwChannel, 0, tState) != eResultOk || (!tState.bUp && tState.tVideo.bEnabled != 0))
    {
        End(eResultConnectionLost);
        return g_llNotAgain;
    }
    return Give() ? llNowUs + g_llBlockUs : g_llNotAgain;
}

// The next block. False: it was the last one.
bool CDownload::Give()
{
    if (m_pFile && !std::exchange(m_bBegan, true))
    {
        m_abyMade = *m_pFile;
    }
    if (!m_pFile)
    {
        m_abyMade.erase(m_abyMade.begin(), m_abyMade.begin() + static_cast<std::ptrdiff_t>(m_nGiven));
        m_nGiven = 0;
        while (m_abyMade.size() < g_nBlock + m_ullSkip && Make())
        {
            if (m_ullSkip >= m_abyMade.size())
            {
                m_ullSkip -= m_abyMade.size();
                m_abyMade.clear();
            }
        }
    }
    m_nGiven += static_cast<std::size_t>(std::min<uint64_t>(std::exchange(m_ullSkip, 0), m_abyMade.size() - m_nGiven));
    tagBuffer tBlock{m_abyMade.data() + m_nGiven,
                     static_cast<uint32_t>(std::min(g_nBlock, m_abyMade.size() - m_nGiven))};
    if (tBlock.dwLength != 0)
    {
        if (m_pOutput && std::fwrite(tBlock.pData, 1, tBlock.dwLength, m_pOutput) != tBlock.dwLength)
        {
            End(eResultNoResources);
            return false;
        }
        m_nGiven += tBlock.dwLength;
        m_pSink->OnBlock(tBlock);
        return true;
    }
    End(eResultOk);
    return false;
}

void CDownload::End(int nResult)
{
    {
        const std::lock_guard tLock(m_tMutex);
        if (m_eState == eState::Over)
        {
            return;
        }
        m_eState = eState::Over;
    }
    if (m_pOutput && std::fclose(std::exchange(m_pOutput, nullptr)) != 0 && nResult == eResultOk)
    {
        nResult = eResultNoResources;
    }
    m_pSink->OnBlock({nullptr, static_cast<uint32_t>(nResult)});
}

int FileHeader(uint32_t dwFormat, char* pbyHeader, unsigned long& dwLength)
{
    if (dwFormat > eFileFormatMpegTs)
    {
        return eResultBadArgument;
    }
    return plugin::GiveHeader(FileHeader(dwFormat), pbyHeader, dwLength);
}
} // namespace device
