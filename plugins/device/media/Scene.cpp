#include "plugins/device/media/Scene.h"

#include "plugins/device/Device.h"
#include "plugins/device/Text.h"
#include "plugins/device/media/Font.h"
#include "plugins/device/media/Grid.h"

#include "protocol/interface/Live.h"
#include "protocol/interface/Results.h"

#include <algorithm>
#include <cstring>
#include <ctime>

namespace device
{
namespace
{
constexpr double g_fUsualHeight = 400;

void DrawTexts(CDevice& tDevice, tagConfigOverlay const& tOverlay, int64_t llTimeUs, tagImage& tImage)
{
    const double fWidth = tImage.dwWidth;
    const double fHeight = tImage.dwHeight;
    for (uint32_t i = 0; i < std::min<std::size_t>(tOverlay.dwCount, std::size(tOverlay.atTexts)); ++i)
    {
        tagOverlayText const& t = tOverlay.atTexts[i];
        if (t.bEnabled != 0)
        {
            const std::string strText = t.dwKind == eOverlayTime
                                            ? TimeText(llTimeUs, tDevice.UtcOffsetMinutes(llTimeUs), Text(t.szText))
                                            : Text(t.szText);
            DrawText(tImage, t.dwLeft * fWidth / g_fWhole, t.dwTop * fHeight / g_fWhole,
                     (t.dwHeight ? t.dwHeight : g_fUsualHeight) * fHeight / g_fWhole, t.dwColour, strText);
        }
    }
}

void DrawMasks(tagConfigPrivacy const& tPrivacy, tagImage& tImage)
{
    const double fX = tImage.dwWidth / g_fWhole;
    const double fY = tImage.dwHeight / g_fWhole;
    for (uint32_t i = 0; i < std::min<std::size_t>(tPrivacy.dwCount, std::size(tPrivacy.atMasks)); ++i)
    {
        tagPrivacyMask const& t = tPrivacy.atMasks[i];
        if (t.bEnabled != 0)
        {
            Fill(tImage, {t.dwLeft * fX, t.dwTop * fY, t.dwWidth * fX, t.dwHeight * fY}, t.dwColour);
        }
    }
}
} // namespace

std::string TimeText(int64_t llTimeUs, int32_t nUtcOffsetMinutes, std::string const& strFormat)
{
    const auto nSeconds = static_cast<std::time_t>(llTimeUs / 1000000 + int64_t{nUtcOffsetMinutes} * 60);
    std::tm tTime{};
    gmtime_r(&nSeconds, &tTime);
    char szText[256] = "";
    if (strFormat.empty())
    {
        (void)std::strftime(szText, sizeof szText, "%Y-%m-%d %H:%M:%S", &tTime);
    }
    else
    {
        // The format is the user's.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wformat-nonliteral"
        (void)std::strftime(szText, sizeof szText, strFormat.c_str(), &tTime);
#pragma GCC diagnostic pop
    }
    return szText;
}

int TakeScene(CDevice& tDevice, uint32_t dwChannel, int64_t llTimeUs, tagImage& tImage)
{
    tagStreamState tStream;
    tagPictureState tState;
    int nResult = tDevice.StreamState(dwChannel, eStreamMain, tStream);
    nResult = nResult ? nResult : tDevice.PictureState(dwChannel, tState);
    if (nResult)
    {
        return nResult;
    }
    if (tStream.bVideoLoss)
    {
        return eResultRefused;
    }
    const int64_t llPicture = PictureAt(std::max<int64_t>(llTimeUs, 0), std::max(tStream.tVideo.dwFrameRate, 1U));
    tagImage tScene = ReadImage(CClips::Instance().Picture(static_cast<uint64_t>(llPicture)));
    tImage = tagImage(tStream.tVideo.dwWidth, tStream.tVideo.dwHeight, 0);
    Draw(tImage, WholeOf(tImage), tScene, WholeOf(tScene));
    Adjust(tImage, WholeOf(tImage), tState.tPicture.dwBrightness, tState.tPicture.dwContrast,
           tState.bNight ? 0 : tState.tPicture.dwSaturation);
    if (tState.tPicture.dwTurn != eTurnNone)
    {
        tImage = Turn(tImage, tState.tPicture.dwTurn);
    }
    if (tState.nPan != 0 || tState.nTilt != 0 || tState.nZoom != 0)
    {
        char szPlace[64];
        std::snprintf(szPlace, sizeof szPlace, "pan %+.2f  tilt %+.2f  zoom %.2f", tState.nPan / g_fWhole,
                      tState.nTilt / g_fWhole, tState.nZoom / g_fWhole);
        DrawText(tImage, tImage.dwWidth * 0.5, tImage.dwHeight * 0.94, tImage.dwHeight * 0.05, 0xFFFFFF, szPlace);
    }
    DrawTexts(tDevice, tState.tOverlay, llTimeUs, tImage);
    DrawMasks(tState.tPrivacy, tImage);
    return eResultOk;
}
} // namespace device
