// snapshot: one picture, taken by the device, or from its stream where the device takes none.

#include "tools/tessaro/Command.h"
#include "tools/tessaro/Failure.h"
#include "tools/tessaro/Interrupt.h"
#include "tools/tessaro/Stream.h"
#include "tools/tessaro/media/Pictures.h"

#include <RecordTables.h>
#include <memory>

namespace tessaro
{
namespace
{
struct tagSnapshotOptions
{
    std::string strAddress;
    tagLiveOptions tLive;
    std::string strOut;
    std::string strTarget = "channel";
    unsigned int dwWidth = 0;
    unsigned int dwHeight = 0;
    bool bStream = false;
};

// False: the device takes none.
bool ByDevice(CSession const& tSession, tagSnapshotOptions const& tOptions, json& tResult)
{
    auto tInfo = Sized<tagImageFileInfo>();
    tInfo.dwWidth = tOptions.dwWidth;
    tInfo.dwHeight = tOptions.dwHeight;
    tOptions.strOut.copy(tInfo.szPath, sizeof tInfo.szPath - 1);
    const bool bJpeg = tOptions.strOut.ends_with(".jpg") || tOptions.strOut.ends_with(".jpeg");
    const auto dwTarget = static_cast<unsigned long>(*NamesOf<eCaptureTarget>().Find(tOptions.strTarget));
    const int nResult = ClientAdapter_ImageCapture(tSession.Login(), dwTarget + tOptions.tLive.dwChannel,
                                                   bJpeg ? eImageJpeg : eImagePng, &tInfo);
    if (nResult == eResultNotSupported || nResult == eResultNoEntryPoint)
    {
        return false;
    }
    Check(nResult, "taking a picture");
    tResult = {{"file", tOptions.strOut}, {"width", tInfo.dwWidth},           {"height", tInfo.dwHeight},
               {"bytes", tInfo.dwLength}, {"time", TimeText(tInfo.llTimeUs)}, {"source", "device"}};
    return true;
}

void FromStream(CSession const& tSession, tagSnapshotOptions const& tOptions, json& tResult)
{
    if (!tOptions.strOut.ends_with(".png"))
    {
        throw CFailure(eExitUsage, "a picture from a stream is written as PNG: end its name in .png");
    }
    CLastKeyFrame tKey;
    CLiveStream tStream(tSession, tOptions.tLive,
                        [&](tagStreamMediaFrame const& tFrame)
                        {
                            tKey.Take(tFrame);
                            CInterrupt::Instance().Wake();
                        });
    tStream.AwaitFirst();
    WaitUntil([&] { return tKey.Taken() > 0; }, 15000);
    auto tPicture = tKey.Decode();
    if (!tPicture)
    {
        throw CFailure(eExitFailed, "the stream holds no picture that can be decoded");
    }
    const auto Most = [](unsigned int dwWanted, int nIs) { return dwWanted == 0 ? nIs : static_cast<int>(dwWanted); };
    if (tOptions.dwWidth != 0 || tOptions.dwHeight != 0)
    {
        tPicture =
            Fitted(*tPicture, Most(tOptions.dwWidth, tPicture->nWidth), Most(tOptions.dwHeight, tPicture->nHeight));
    }
    WritePng(*tPicture, tOptions.strOut);
    tResult = {
        {"file", tOptions.strOut}, {"width", tPicture->nWidth}, {"height", tPicture->nHeight}, {"source", "stream"}};
}

int Run(tagContext& tContext, tagSnapshotOptions const& tOptions)
{
    const CSession tSession(tContext, tOptions.strAddress);
    json tResult;
    if (tSession.IsRtsp() || tOptions.bStream || !ByDevice(tSession, tOptions, tResult))
    {
        FromStream(tSession, tOptions, tResult);
    }
    tContext.tOut.Say("{}: {}x{}, from the {}", tOptions.strOut, tResult["width"].dump(), tResult["height"].dump(),
                      tResult["source"].get<std::string>());
    tContext.tOut.Result(tResult);
    return eExitDone;
}
} // namespace

void DeclareSnapshot(CLine& tLine)
{
    auto pt = std::make_shared<tagSnapshotOptions>();
    tLine.Option("address", pt->strAddress, g_szAddressHelp).Needed();
    tLine.Option("out", pt->strOut, "the file to write: .png, or .jpg where the device takes the picture").Needed();
    AddLiveOptions(tLine, pt->tLive);
    tLine.Option("--target", pt->strTarget, "what --channel numbers: channel, or of a decoder window, screen, wall")
        .OneOf({"channel", "window", "screen", "wall"})
        .Value("KIND");
    tLine.Option("--width", pt->dwWidth, "at most so many pixels wide").Value("N");
    tLine.Option("--height", pt->dwHeight, "at most so many pixels high").Value("N");
    tLine.Flag("--from-stream", pt->bStream, "decode it from the live stream, also where the device takes pictures");
    tLine.Does([pt](tagContext& tContext) { return Run(tContext, *pt); });
}
} // namespace tessaro
