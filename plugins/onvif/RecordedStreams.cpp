// Playback.

#include "plugins/common/Text.h"
#include "plugins/onvif/Operations.h"
#include "plugins/onvif/Playback.h"

namespace onvifclient
{
namespace
{
using Adapter_ProtocolSet::ReadRecord;
using Adapter_ProtocolSet::WriteRecord;

constexpr unsigned long g_dwFlags = eHistoryPaused | eHistoryNoAudio | eHistoryKeyFramesOnly;

int Open(void** phStream, CLogin& tLogin, std::vector<tagRecording> const& atParts, uint32_t dwChannel,
         int64_t llStartUs, int64_t llEndUs, unsigned long dwFlag)
{
    if ((dwFlag & ~g_dwFlags) != 0 || (llEndUs != 0 && llEndUs <= llStartUs))
    {
        return eResultBadArgument;
    }
    std::vector<tagStretch> atStretches;
    if (const int nResult = MakeStretches(tLogin, atParts, llStartUs, llEndUs, atStretches))
    {
        return nResult;
    }
    const auto pEngine = Engine();
    if (!pEngine)
    {
        return eResultNotStarted;
    }
    const auto pPlayback = std::make_shared<CPlayback>(tLogin.shared_from_this(), pEngine, dwChannel,
                                                       std::move(atStretches), static_cast<uint32_t>(dwFlag));
    *phStream = Face().tHandles.Add(pPlayback);
    pPlayback->Begin(*phStream);
    return eResultOk;
}

int OpenChannel(void** phStream, CLogin& tLogin, tagQuestion tQuestion, uint32_t dwChannel, unsigned long dwFlag)
{
    if (dwChannel >= 64)
    {
        return eResultNoChannel;
    }
    tQuestion.ullChannels = uint64_t{1} << dwChannel;
    std::vector<tagRecording> atParts;
    const int nResult = tLogin.Part<CRecordings>().Find(tQuestion, atParts);
    return nResult ? nResult
                   : Open(phStream, tLogin, atParts, dwChannel, tQuestion.llStartUs, tQuestion.llEndUs, dwFlag);
}

int OpenFile(void** phStream, CLogin& tLogin, tagHistoryStreamPara const& t, unsigned long dwFlag)
{
    tagRecording tRecording;
    const int nResult = tLogin.Part<CRecordings>().FindFile(plugin::Text(t.szFile), tRecording);
    return nResult ? nResult
                   : Open(phStream, tLogin, {tRecording}, tRecording.dwChannel, t.llStartUs, t.llEndUs, dwFlag);
}

template <class F>
int OnBoth(void* hStream, void* hOther, F fnDo)
{
    const auto pOther = Face().tHandles.Find<CPlayback>(hOther);
    return With<CPlayback>(hStream,
                           [&](CPlayback& t) { return pOther ? fnDo(t, pOther) : static_cast<int>(eResultBadHandle); });
}
} // namespace

int Serve(tagCall<&CClientProtocolBase::HistoryStreamCreate>, void** phStream, void* hLogin,
          tagHistoryStreamPara* ptPara, unsigned long dwFlag)
{
    return With<CLogin>(hLogin,
                        [&](CLogin& tLogin) -> int
                        {
                            tagHistoryStreamPara t{};
                            if (!phStream || ReadRecord(t, ptPara) != eResultOk || (t.dwType & (t.dwType - 1)) != 0)
                            {
                                return eResultBadArgument;
                            }
                            return t.szFile[0] ? OpenFile(phStream, tLogin, t, dwFlag)
                                               : OpenChannel(phStream, tLogin,
                                                             {0, t.dwType, t.dwStreamKind, t.llStartUs, t.llEndUs},
                                                             t.dwChannel, dwFlag);
                        });
}

int Serve(tagCall<&CClientProtocolBase::HistoryStreamMultiTypeCreate>, void** phStream, void* hLogin,
          tagHistoryStreamMultiTypePara* ptPara, unsigned long dwFlag)
{
    return With<CLogin>(hLogin,
                        [&](CLogin& tLogin) -> int
                        {
                            tagHistoryStreamMultiTypePara t{};
                            if (!phStream || ReadRecord(t, ptPara) != eResultOk)
                            {
                                return eResultBadArgument;
                            }
                            return OpenChannel(phStream, tLogin, {0, t.dwTypes, t.dwStreamKind, t.llStartUs, t.llEndUs},
                                               t.dwChannel, dwFlag);
                        });
}

int Serve(tagCall<&CClientProtocolBase::HistoryStreamDestroy>, void* hStream)
{
    return CloseHandle<CPlayback>(hStream);
}

int Serve(tagCall<&CClientProtocolBase::HistoryStreamCB>, void* hStream, StreamMediaCallback pfnFrame,
          unsigned long dwUser)
{
    return With<CPlayback>(hStream, [&](CPlayback& t) { return t.SetCallback(pfnFrame, dwUser); });
}

int Serve(tagCall<&CClientProtocolBase::HistoryStreamPosition>, void* hStream, eOperationType eAction,
          tagTimeInfo* ptTime)
{
    return With<CPlayback>(hStream,
                           [&](CPlayback& tPlayback) -> int
                           {
                               tagTimeInfo t{};
                               if (ReadRecord(t, ptTime) != eResultOk ||
                                   (eAction != eOperationGet && eAction != eOperationSet))
                               {
                                   return eResultBadArgument;
                               }
                               if (eAction == eOperationSet)
                               {
                                   return tPlayback.Seek(t.llTimeUs);
                               }
                               t.llTimeUs = tPlayback.PositionUs();
                               t.nUtcOffsetMinutes = tPlayback.Login().Part<CRecordings>().UtcOffsetMinutes(t.llTimeUs);
                               return WriteRecord(ptTime, t);
                           });
}

int Serve(tagCall<&CClientProtocolBase::HistoryStreamSetSpeed>, void* hStream, unsigned long dwSpeed)
{
    return With<CPlayback>(hStream, [&](CPlayback& t) { return t.SetSpeed(static_cast<uint32_t>(dwSpeed)); });
}

int Serve(tagCall<&CClientProtocolBase::HistoryStreamSync>, void* hStream, void* hOther)
{
    return OnBoth(hStream, hOther, [](CPlayback& t, auto const& pOther) { return t.Sync(pOther); });
}

int Serve(tagCall<&CClientProtocolBase::HistoryStreamUnSync>, void* hStream, void* hOther)
{
    return OnBoth(hStream, hOther, [](CPlayback& t, auto const& pOther) { return t.UnSync(pOther); });
}
} // namespace onvifclient
