// live: a stream's frames, rates and losses as a line that follows it; into a file; a contact sheet of all channels.

#include "tools/tessaro/Command.h"
#include "tools/tessaro/Failure.h"
#include "tools/tessaro/Interrupt.h"
#include "tools/tessaro/Stream.h"
#include "tools/tessaro/media/Muxer.h"
#include "tools/tessaro/media/Pictures.h"

#include <memory>

namespace tessaro
{
namespace
{
constexpr int g_nCellWidth = 320;
constexpr int g_nCellHeight = 180;

struct tagWatchOptions
{
    std::string strAddress;
    tagLiveOptions tLive;
    double dSeconds = 0;
    double dEvery = 1;
    std::string strFile;
    std::string strWall;
};

// Calls fnStep every so often, until the time is over or Ctrl-C.
template <class F>
void Repeat(double dSeconds, double dEvery, F fnStep)
{
    const long long llEnd = NowMs() + static_cast<long long>(dSeconds * 1000);
    for (;;)
    {
        const long long llLeft = dSeconds > 0 ? llEnd - NowMs() : INT64_MAX;
        const long long llStep = std::min(llLeft, static_cast<long long>(dEvery * 1000));
        if (llStep <= 0)
        {
            return;
        }
        WaitUntil([] { return false; }, llStep);
        if (CInterrupt::Instance().Asked())
        {
            return;
        }
        fnStep();
    }
}

int Watch(tagContext& tContext, tagWatchOptions const& tOptions)
{
    COutput& tOut = tContext.tOut;
    const std::unique_ptr<CMuxer> pMuxer =
        tOptions.strFile.empty() ? nullptr : std::make_unique<CMuxer>(tOptions.strFile);
    const CSession tSession(tContext, tOptions.strAddress);
    CFrameCount::tagTotals tTotals;
    {
        CLiveStream tStream(tSession, tOptions.tLive,
                            [&](tagStreamMediaFrame const& tFrame)
                            {
                                if (pMuxer)
                                {
                                    pMuxer->Take(tFrame);
                                }
                            });
        tOut.Status("waiting for the first frame");
        tStream.AwaitFirst();
        CRates tRates(tStream.Count());
        tRates.Now();
        Repeat(tOptions.dSeconds, tOptions.dEvery,
               [&]
               {
                   const json t = tRates.Now();
                   const std::string strTrouble = tStream.Trouble();
                   tOut.Status(strTrouble.empty() ? CRates::Text(t) : strTrouble, true);
                   tOut.Result(t, true);
               });
        tTotals = tStream.Count().Totals();
    }
    tOut.EndStatus();
    json tResult = {{"total", ToJson(tTotals)}};
    if (pMuxer)
    {
        pMuxer->Close();
        tResult["file"] = tOptions.strFile;
        tOut.Say("written to {}{}", tOptions.strFile,
                 pMuxer->LeftOut().empty() ? "" : ", without " + pMuxer->LeftOut() + ", which it can't hold; .mkv can");
    }
    tOut.Say("{} frames, {} key frames, {}, {} packets lost", tTotals.tVideo.ullFrames, tTotals.tVideo.ullKeys,
             SizeText(static_cast<double>(tTotals.tVideo.ullBytes + tTotals.tAudio.ullBytes)), tTotals.tVideo.ullLost);
    tOut.Result(tResult, true);
    return eExitDone;
}

// One channel of the contact sheet.
struct tagCell
{
    CLastKeyFrame tKey;
    std::unique_ptr<CLiveStream> pStream;
    std::string strProblem;
};

int Wall(tagContext& tContext, tagWatchOptions const& tOptions)
{
    COutput& tOut = tContext.tOut;
    const CSession tSession(tContext, tOptions.strAddress);
    std::vector<std::unique_ptr<tagCell>> apCells;
    std::unique_ptr<CFailure> pFirst;
    for (unsigned int i = 0; i < tSession.Channels(); ++i)
    {
        auto& tCell = *apCells.emplace_back(std::make_unique<tagCell>());
        tagLiveOptions tLive = tOptions.tLive;
        tLive.dwChannel = i;
        tLive.bSub = !tSession.IsRtsp(); // small enough for a cell
        try
        {
            tCell.pStream = std::make_unique<CLiveStream>(
                tSession, tLive, [&tCell](tagStreamMediaFrame const& tFrame) { tCell.tKey.Take(tFrame); });
        }
        catch (CFailure const& tFailure)
        {
            tCell.strProblem = tFailure.what();
            pFirst = pFirst ? std::move(pFirst) : std::make_unique<CFailure>(tFailure);
        }
    }
    const auto Waiting = [](std::unique_ptr<tagCell> const& p)
    { return p->pStream && p->tKey.Taken() == 0 && p->pStream->Trouble().empty(); };
    WaitUntil([&] { return std::ranges::none_of(apCells, Waiting); }, 15000);
    json tLast;
    const auto Draw = [&]
    {
        std::vector<std::optional<tagPicture>> atPictures;
        json tCells = json::array();
        for (auto const& pCell : apCells)
        {
            atPictures.push_back(pCell->tKey.Decode());
            tCells.push_back(
                {{"channel", tCells.size()}, {"shown", atPictures.back().has_value()}, {"problem", pCell->strProblem}});
        }
        const tagPicture tSheet = ContactSheet(atPictures, g_nCellWidth, g_nCellHeight);
        WritePng(tSheet, tOptions.strWall);
        const auto nShown = std::ranges::count_if(atPictures, [](auto const& t) { return t.has_value(); });
        tLast = {{"file", tOptions.strWall},
                 {"width", tSheet.nWidth},
                 {"height", tSheet.nHeight},
                 {"time", TimeText(NowUs())},
                 {"channels", tCells}};
        tOut.Status(
            fmt::format("{}  {} of {} channels in {}", TimeText(NowUs()), nShown, apCells.size(), tOptions.strWall),
            true);
        tOut.Result(tLast, true);
        if (nShown == 0)
        {
            throw pFirst ? *pFirst : CFailure(eExitUnreachable, "no channel sends a picture");
        }
    };
    Draw();
    Repeat(tOptions.dSeconds, tOptions.dEvery, Draw);
    return eExitDone;
}
} // namespace

void DeclareLive(CLine& tLine)
{
    auto pt = std::make_shared<tagWatchOptions>();
    tLine.Option("address", pt->strAddress, g_szAddressHelp).Needed();
    AddLiveOptions(tLine, pt->tLive);
    tLine.Option("--seconds", pt->dSeconds, "for so long; else until Ctrl-C").Positive().Value("N");
    tLine.Option("--every", pt->dEvery, "report, or draw, every so many seconds").Positive().Value("N");
    COption tFile = tLine.Option("--mp4", pt->strFile,
                                 "write the frames there as they are; the name's end may also be .mkv, .mov, .ts");
    tFile.Value("FILE");
    tLine.Option("--wall", pt->strWall, "a contact sheet of all channels as PNG, drawn again and again")
        .Value("FILE")
        .NotWith(tFile);
    tLine.Does([pt](tagContext& tContext) { return pt->strWall.empty() ? Watch(tContext, *pt) : Wall(tContext, *pt); });
}
} // namespace tessaro
