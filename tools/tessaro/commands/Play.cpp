// play: a recording as a stream, faster, slower or backwards; into a file.

#include "tools/tessaro/Command.h"
#include "tools/tessaro/Failure.h"
#include "tools/tessaro/Interrupt.h"
#include "tools/tessaro/Search.h"
#include "tools/tessaro/Stream.h"
#include "tools/tessaro/media/Muxer.h"
#include "tools/tessaro/media/Pictures.h"

#include <RecordTables.h>
#include <cmath>
#include <memory>

namespace tessaro
{
namespace
{
struct tagPlayOptions
{
    std::string strAddress;
    tagSpan tSpan;
    std::string strFile;
    std::string strOut;
    std::string strPicture;
    double dSpeed = 1;
    double dSeconds = 0;
    bool bKeyFrames = false;
    bool bNoAudio = false;
};

// Where frames go; they come on a thread of the plug-in.
struct tagSink
{
    CFrameCount tCount;
    CLastKeyFrame tKey;
    std::unique_ptr<CMuxer> pMuxer;
};

int OnFrame(void*, tagStreamMediaFrame const* ptFrame, unsigned long dwUser)
{
    auto& tSink = *reinterpret_cast<tagSink*>(dwUser);
    tSink.tCount.Count(*ptFrame);
    if ((ptFrame->dwFlags & eFrameEnd) != 0)
    {
        CInterrupt::Instance().Wake();
        return 0;
    }
    tSink.tKey.Take(*ptFrame);
    if (tSink.pMuxer)
    {
        tSink.pMuxer->Take(*ptFrame);
    }
    return 0;
}

// Backwards one begins at the end.
void GoToEnd(CSession const& tSession, tagPlayOptions const& tOptions, int nPlayback)
{
    auto tTime = Sized<tagTimeInfo>();
    for (auto const& t : FindRecordings(tSession, tOptions.tSpan, tOptions.strFile))
    {
        tTime.llTimeUs = std::max(tTime.llTimeUs, t.llEndUs - 1);
    }
    if (const std::int64_t llToUs = tOptions.tSpan.ToUs())
    {
        tTime.llTimeUs = std::min(tTime.llTimeUs, llToUs - 1);
    }
    if (tTime.llTimeUs <= 0)
    {
        throw CFailure(eExitFailed, "where the recording ends isn't known",
                       "is it one of another --channel, or --sub?");
    }
    Check(ClientAdapter_HistoryStreamPosition(nPlayback, eOperationSet, &tTime), "going to the end of the recording");
}

int Run(tagContext& tContext, tagPlayOptions const& tOptions)
{
    COutput& tOut = tContext.tOut;
    tagSink tSink;
    tSink.pMuxer = tOptions.strOut.empty() ? nullptr : std::make_unique<CMuxer>(tOptions.strOut);
    const CSession tSession(tContext, tOptions.strAddress);
    tSession.NeedsDevice("recordings");
    auto tPara = Sized<tagHistoryStreamPara>();
    tPara.dwChannel = tOptions.tSpan.dwChannel;
    tPara.dwType = tOptions.tSpan.Types();
    tPara.dwStreamKind = tOptions.tSpan.Kind();
    tPara.llStartUs = tOptions.tSpan.FromUs();
    tPara.llEndUs = tOptions.tSpan.ToUs();
    tOptions.strFile.copy(tPara.szFile, sizeof tPara.szFile - 1);
    const unsigned long dwFlags =
        eHistoryPaused | (tOptions.bNoAudio ? eHistoryNoAudio : 0) | (tOptions.bKeyFrames ? eHistoryKeyFramesOnly : 0);
    CMedia tMedia(&ClientAdapter_HistoryStreamDestroy);
    Check(ClientAdapter_HistoryStreamCreate(tMedia.Target(), tSession.Login(), &tPara, dwFlags),
          "opening the recording");
    Check(ClientAdapter_HistoryStreamCB(tMedia.Id(), &OnFrame, reinterpret_cast<unsigned long>(&tSink)),
          "asking for frames");
    if (tOptions.dSpeed != 1)
    {
        const auto dwSpeed =
            static_cast<unsigned long>(std::lround(std::abs(tOptions.dSpeed) * static_cast<int>(eSpeedNormal)));
        Check(ClientAdapter_HistoryStreamSetSpeed(tMedia.Id(), dwSpeed + (tOptions.dSpeed < 0 ? eSpeedReverse : 0)),
              fmt::format("playing at {} times the speed", tOptions.dSpeed));
    }
    if (tOptions.dSpeed < 0)
    {
        GoToEnd(tSession, tOptions, tMedia.Id());
    }
    Check(ClientAdapter_StreamMediaControl(tMedia.Id(), eTaskPlay), "playing");
    CRates tRates(tSink.tCount);
    tRates.Now();
    const long long llEnd = NowMs() + static_cast<long long>(tOptions.dSeconds * 1000);
    const auto Ended = [&] { return tSink.tCount.Totals().bEnded; };
    while (!Ended() && !CInterrupt::Instance().Asked() && (tOptions.dSeconds == 0 || NowMs() < llEnd))
    {
        WaitUntil(Ended, tOptions.dSeconds == 0 ? 1000 : std::clamp(llEnd - NowMs(), 1LL, 1000LL));
        json t = tRates.Now();
        tOut.Status(fmt::format("{}  {} {}x{}  {} frames  {:.1f} fps",
                                t["time"].is_null() ? "" : t["time"].get<std::string>(), t["codec"].get<std::string>(),
                                t["width"].get<int>(), t["height"].get<int>(), t["frames"].get<int>(),
                                t["fps"].get<double>()),
                    true);
        t.erase("latency_ms"); // a recording's age says nothing
        tOut.Result(t, true);
    }
    tMedia.Shut();
    const auto tTotals = tSink.tCount.Totals();
    json tResult = {{"total", ToJson(tTotals)}, {"ended", tTotals.bEnded}};
    if (tSink.pMuxer)
    {
        tSink.pMuxer->Close();
        tResult["file"] = tOptions.strOut;
        tOut.Say("written to {}", tOptions.strOut);
    }
    if (!tOptions.strPicture.empty())
    {
        const auto tPicture = tSink.tKey.Decode();
        if (!tPicture)
        {
            throw CFailure(eExitFailed, "no picture came that can be decoded");
        }
        WritePng(*tPicture, tOptions.strPicture);
        tResult["picture"] = tOptions.strPicture;
    }
    tOut.Say("{} frames, {} key frames{}", tTotals.tVideo.ullFrames, tTotals.tVideo.ullKeys,
             tTotals.bEnded ? ", to the end" : "");
    tOut.Result(tResult, true);
    return eExitDone;
}
} // namespace

void DeclarePlay(CLine& tLine)
{
    auto pt = std::make_shared<tagPlayOptions>();
    tLine.Option("address", pt->strAddress, g_szAddressHelp).Needed();
    AddSpanOptions(tLine, pt->tSpan);
    tLine.Option("--file", pt->strFile, "a recording by its name, as tessaro recordings --list shows it").Value("NAME");
    tLine
        .Option("--speed", pt->dSpeed,
                "so many times as fast, 0.125 to 16; --speed=-1 plays backwards from the end, key frames alone")
        .Value("X");
    tLine.Option("--seconds", pt->dSeconds, "for so long; else to the end").Positive().Value("N");
    tLine.Option("--mp4", pt->strOut, "write the frames there as they are").Value("FILE");
    tLine.Option("--picture", pt->strPicture, "write the last key frame there, as PNG").Value("FILE");
    tLine.Flag("--key-frames", pt->bKeyFrames, "key frames alone");
    tLine.Flag("--no-audio", pt->bNoAudio, "video alone");
    tLine.Does([pt](tagContext& tContext) { return Run(tContext, *pt); });
}
} // namespace tessaro
