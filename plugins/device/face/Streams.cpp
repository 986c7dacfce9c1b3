// Live streams, playback, voice, snapshots.

#include "plugins/device/face/Operations.h"
#include "plugins/device/media/Capture.h"

#include <algorithm>
#include <cstring>

namespace device
{
namespace
{
using Adapter_ProtocolSet::ReadRecord;
using Adapter_ProtocolSet::WriteRecord;

// The links that streams may share: one for live ones, one for playback.
constexpr uint32_t g_dwLinks = 2;

// Gives what was opened its handle.
void Hand(void** phStream, std::shared_ptr<CMedia> const& pMedia)
{
    *phStream = Face().tHandles.Add(pMedia);
    pMedia->Sink().m_hStream = *phStream;
}

int OpenPlayback(void** phStream, CLogin const& tLogin, tagRecordingQuestion const& tQuestion, unsigned long dwFlags)
{
    const auto pSink = std::make_shared<CFrameSink>();
    std::shared_ptr<CPlayback> pPlayback;
    const int nResult =
        CPlayback::Open(tLogin.DevicePointer(), tQuestion, static_cast<uint32_t>(dwFlags), pSink, pPlayback);
    if (nResult == eResultOk)
    {
        Hand(phStream, std::make_shared<CRecorded>(tLogin, pSink, pPlayback));
    }
    return nResult;
}
} // namespace

void MediaStop()
{
    CPump::Instance().Stop();
}

// --- live ------------------------------------------------------------------------------------------------------------

void CFrameSink::OnFrame(tagStreamMediaFrame const& tFrame)
{
    m_tRaw.Call(m_hStream.load(), &tFrame);
    if (m_bAwaitKey && tFrame.dwMediaType == eMediaVideo && (tFrame.dwFlags & eFrameKey) != 0)
    {
        m_bAwaitKey = false;
    }
    if (!m_bAwaitKey)
    {
        m_tFrames.Call(m_hStream.load(), &tFrame);
    }
}

bool CLive::Close()
{
    m_pStream->Close();
    const bool bEnded = Sink().m_tFrames.Close();
    return Sink().m_tRaw.Close() && bEnded;
}

int Serve(tagCall<&CClientProtocolBase::RealStreamConnect>, void** phStream, void* hLogin, tagRealStreamPara* ptPara)
{
    return AskWith<CLogin>(hLogin, eUserViewer,
                           [&](CLogin const& tLogin) -> int
                           {
                               if (!phStream || !ptPara || ptPara->dwStreamKind < eStreamMain)
                               {
                                   return eResultBadArgument;
                               }
                               const auto pSink = std::make_shared<CFrameSink>();
                               std::shared_ptr<CLiveStream> pStream;
                               const int nResult = CLiveStream::Open(tLogin.DevicePointer(), ptPara->dwChannel,
                                                                     ptPara->dwStreamKind, pSink, pStream);
                               if (nResult == eResultOk)
                               {
                                   Hand(phStream, std::make_shared<CLive>(tLogin, pSink, pStream));
                               }
                               return nResult;
                           });
}

namespace
{
// One of a live stream's two callbacks. Frames come as long as there is one.
int SetCallback(CLive const& tLive, CCallback<StreamMediaCallback>& tCallback, StreamMediaCallback pfnFrame,
                unsigned long dwUser)
{
    const bool bEnded = tCallback.Set(pfnFrame, dwUser);
    if (tLive.Sink().IsWanted())
    {
        tLive.Stream().Start();
    }
    else
    {
        tLive.Stream().Stop();
    }
    return Ended(bEnded);
}
} // namespace

int Serve(tagCall<&CClientProtocolBase::StreamMediaCB>, void* hStream, StreamMediaCallback pfnFrame,
          unsigned long dwUser)
{
    return With<CLive>(hStream,
                       [&](CLive const& tLive)
                       {
                           tLive.Sink().AwaitKeyFrame();
                           tLive.Stream().ForceKeyFrame();
                           return SetCallback(tLive, tLive.Sink().m_tFrames, pfnFrame, dwUser);
                       });
}

int Serve(tagCall<&CClientProtocolBase::StreamMediaRawCB>, void* hStream, StreamMediaCallback pfnFrame,
          unsigned long dwUser)
{
    return With<CLive>(hStream,
                       [&](CLive const& tLive) { return SetCallback(tLive, tLive.Sink().m_tRaw, pfnFrame, dwUser); });
}

int Serve(tagCall<&CClientProtocolBase::StreamMediaControl>, void* hStream, eTaskControl eControl)
{
    return AskWith<CMedia>(hStream, eUserViewer, [&](CMedia& tMedia) { return tMedia.Control(eControl); });
}

int Serve(tagCall<&CClientProtocolBase::ForceIFrame>, void* hLogin, unsigned long dwStream)
{
    return AskWith<CLogin>(hLogin, eUserViewer,
                           [&](CLogin const&)
                           {
                               return With<CLive>(reinterpret_cast<void*>(dwStream),
                                                  [](CLive const& tLive)
                                                  {
                                                      tLive.Stream().ForceKeyFrame();
                                                      return eResultOk;
                                                  });
                           });
}

int Serve(tagCall<&CClientProtocolBase::GetPackInfo>, void* hStream, void* pInfo, int nLength)
{
    return With<CLive>(hStream,
                       [&](CLive const& tLive) -> int
                       {
                           if (!pInfo || nLength <= 0)
                           {
                               return eResultBadArgument;
                           }
                           const tagRTSPPackageInfo tInfo = tLive.Stream().Info();
                           std::memcpy(pInfo, &tInfo, std::min(static_cast<std::size_t>(nLength), sizeof tInfo));
                           return eResultOk;
                       });
}

int Serve(tagCall<&CClientProtocolBase::QueryStreamMediaLinkID>, void* hLogin, eMediaFunctionType eFunction,
          tagMediaLinkIDQueryResult* ptResult)
{
    return AskWith<CLogin>(
        hLogin, eUserViewer,
        [&](CLogin const& tLogin) -> int
        {
            tagMediaLinkIDQueryResult t{};
            if (ReadRecord(t, ptResult) != eResultOk || eFunction < eMediaFunctionLive ||
                eFunction > eMediaFunctionDownload)
            {
                return eResultBadArgument;
            }
            const uint32_t dwLink =
                static_cast<uint32_t>(eFunction) < g_dwLinks ? static_cast<uint32_t>(eFunction) + 1 : 0;
            const auto fnShares = [&](CMedia const& tMedia)
            { return dwLink != 0 && tMedia.m_dwLink == dwLink && &tMedia.Device() == &tLogin.Device(); };
            t = {sizeof t, dwLink, 0, Face().tHandles.Count<CMedia>(fnShares)};
            return WriteRecord(ptResult, t);
        });
}

int Serve(tagCall<&CClientProtocolBase::SetStreamMediaLinkID>, void* hStream, unsigned long dwLink)
{
    return With<CMedia>(hStream,
                        [&](CMedia& tMedia)
                        {
                            const bool bLive = dynamic_cast<CLive const*>(&tMedia) != nullptr;
                            if (dwLink != 0 && dwLink != (bLive ? 1UL : 2UL))
                            {
                                return eResultBadArgument;
                            }
                            tMedia.m_dwLink = static_cast<uint32_t>(dwLink);
                            return ePluginResult{};
                        });
}

// --- playback --------------------------------------------------------------------------------------------------------

bool CRecorded::Close()
{
    m_pPlayback->Close();
    return Sink().m_tFrames.Close();
}

int Serve(tagCall<&CClientProtocolBase::HistoryStreamCreate>, void** phStream, void* hLogin,
          tagHistoryStreamPara* ptPara, unsigned long dwFlag)
{
    return AskWith<CLogin>(hLogin, eUserViewer,
                           [&](CLogin const& tLogin) -> int
                           {
                               tagHistoryStreamPara t{};
                               if (!phStream || ReadRecord(t, ptPara) != eResultOk || t.dwChannel >= 64 ||
                                   (t.dwType & (t.dwType - 1)) != 0)
                               {
                                   return eResultBadArgument;
                               }
                               tagRecordingQuestion tQuestion{
                                   uint64_t{1} << t.dwChannel,
                                   t.dwType,
                                   t.dwStreamKind,
                                   t.llStartUs,
                                   t.llEndUs,
                                   false,
                                   std::string(t.szFile, strnlen(t.szFile, sizeof t.szFile))};
                               if (!tQuestion.strFile.empty())
                               {
                                   tQuestion.ullChannels = 0;
                                   tQuestion.dwTypes = 0;
                                   const auto atFound = tLogin.Device().Recordings(tQuestion);
                                   if (atFound.empty())
                                   {
                                       return eResultNotFound;
                                   }
                                   tQuestion.ullChannels = uint64_t{1} << atFound[0].dwChannel;
                               }
                               return OpenPlayback(phStream, tLogin, tQuestion, dwFlag);
                           });
}

int Serve(tagCall<&CClientProtocolBase::HistoryStreamMultiTypeCreate>, void** phStream, void* hLogin,
          tagHistoryStreamMultiTypePara* ptPara, unsigned long dwFlag)
{
    return AskWith<CLogin>(
        hLogin, eUserViewer,
        [&](CLogin const& tLogin) -> int
        {
            tagHistoryStreamMultiTypePara t{};
            if (!phStream || ReadRecord(t, ptPara) != eResultOk || t.dwChannel >= 64)
            {
                return eResultBadArgument;
            }
            return OpenPlayback(
                phStream, tLogin,
                {uint64_t{1} << t.dwChannel, t.dwTypes, t.dwStreamKind, t.llStartUs, t.llEndUs, false, {}}, dwFlag);
        });
}

int Serve(tagCall<&CClientProtocolBase::HistoryStreamCB>, void* hStream, StreamMediaCallback pfnFrame,
          unsigned long dwUser)
{
    return With<CRecorded>(hStream,
                           [&](CRecorded const& tRecorded)
                           {
                               const bool bEnded = tRecorded.Sink().m_tFrames.Set(pfnFrame, dwUser);
                               if (pfnFrame)
                               {
                                   tRecorded.Playback()->Start();
                               }
                               else
                               {
                                   tRecorded.Playback()->Stop();
                               }
                               return Ended(bEnded);
                           });
}

int Serve(tagCall<&CClientProtocolBase::HistoryStreamPosition>, void* hStream, eOperationType eAction,
          tagTimeInfo* ptTime)
{
    return AskWith<CRecorded>(hStream, eUserViewer,
                              [&](CRecorded const& tRecorded)
                              {
                                  tagTimeInfo tTime{};
                                  int nResult = ReadRecord(tTime, ptTime);
                                  nResult = nResult ? nResult : tRecorded.Playback()->Position(eAction, tTime);
                                  if (nResult == eResultOk && eAction == eOperationGet)
                                  {
                                      tTime.nUtcOffsetMinutes = tRecorded.Device().UtcOffsetMinutes(tTime.llTimeUs);
                                      nResult = WriteRecord(ptTime, tTime);
                                  }
                                  return nResult;
                              });
}

int Serve(tagCall<&CClientProtocolBase::HistoryStreamSetSpeed>, void* hStream, unsigned long dwSpeed)
{
    return AskWith<CRecorded>(hStream, eUserViewer,
                              [&](CRecorded const& tRecorded)
                              { return tRecorded.Playback()->SetSpeed(static_cast<uint32_t>(dwSpeed)); });
}

namespace
{
// fnDo with two playbacks.
template <class F>
int OnBoth(void* hStream, void* hOther, F fnDo)
{
    const auto pOther = Face().tHandles.Find<CRecorded>(hOther);
    return AskWith<CRecorded>(hStream, eUserViewer,
                              [&](CRecorded const& tRecorded) {
                                  return pOther ? fnDo(*tRecorded.Playback(), pOther->Playback())
                                                : static_cast<int>(eResultBadHandle);
                              });
}
} // namespace

int Serve(tagCall<&CClientProtocolBase::HistoryStreamSync>, void* hStream, void* hOther)
{
    return OnBoth(hStream, hOther, [](CPlayback& tThis, auto const& pOther) { return tThis.Sync(pOther); });
}

int Serve(tagCall<&CClientProtocolBase::HistoryStreamUnSync>, void* hStream, void* hOther)
{
    return OnBoth(hStream, hOther, [](CPlayback& tThis, auto const& pOther) { return tThis.UnSync(pOther); });
}

// --- voice -----------------------------------------------------------------------------------------------------------

bool CVoice::Close()
{
    m_pLink->Close();
    return m_pSink->m_tCallback.Close();
}

// Whoever only listens need not be an operator.
int Serve(tagCall<&CClientProtocolBase::VoiceStreamConnect>, void** phVoice, void* hParent, tagVoiceStreamPara* ptPara)
{
    tagVoiceStreamPara tPara{};
    const bool bRead = ReadRecord(tPara, ptPara) == eResultOk;
    return AskWith<CMedia>(hParent, tPara.dwFlags & eVoiceListenOnly ? eUserViewer : eUserOperator,
                           [&](CMedia const& tParent) -> int
                           {
                               if (!bRead || !phVoice)
                               {
                                   return eResultBadArgument;
                               }
                               const auto pSink = std::make_shared<CVoiceSink>();
                               std::shared_ptr<CVoiceLink> pLink;
                               const int nResult = CVoiceLink::Open(tParent.DevicePointer(), tPara, pSink, pLink);
                               if (nResult == eResultOk)
                               {
                                   WriteRecord(ptPara, tPara);
                                   *phVoice = Face().tHandles.Add(std::make_shared<CVoice>(tParent, pSink, pLink));
                                   pSink->m_hVoice = *phVoice;
                               }
                               return nResult;
                           });
}

int Serve(tagCall<&CClientProtocolBase::VoiceStreamSend>, void* hVoice, tagBuffer* ptBuffer)
{
    return AskWith<CVoice>(hVoice, eUserViewer,
                           [&](CVoice const& tVoice)
                           { return ptBuffer ? tVoice.Link().Send(*ptBuffer) : static_cast<int>(eResultBadArgument); });
}

int Serve(tagCall<&CClientProtocolBase::VoiceStreamCB>, void* hVoice, StreamVoiceCallback pfnVoice,
          unsigned long dwUser)
{
    return With<CVoice>(hVoice,
                        [&](CVoice const& tVoice) { return Ended(tVoice.Sink().m_tCallback.Set(pfnVoice, dwUser)); });
}

// --- snapshots -------------------------------------------------------------------------------------------------------

int Serve(tagCall<&CClientProtocolBase::ImageCapture>, void* hLogin, unsigned long dwChannel, eImageFormat eFormat,
          tagImageFileInfo* ptInfo)
{
    return AskWith<CLogin>(
        hLogin, eUserViewer,
        [&](CLogin const& tLogin)
        {
            tagImageFileInfo tInfo{};
            int nResult = ReadRecord(tInfo, ptInfo);
            nResult = nResult ? nResult : Capture(tLogin.Device(), static_cast<uint32_t>(dwChannel), eFormat, tInfo);
            if (nResult == eResultOk || nResult == eResultNoResources)
            {
                WriteRecord(ptInfo, tInfo); // how much room is needed, too
            }
            return nResult;
        });
}
} // namespace device
