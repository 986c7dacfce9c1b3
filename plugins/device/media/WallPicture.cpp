#include "plugins/device/media/WallPicture.h"

#include "plugins/device/Device.h"
#include "plugins/device/Text.h"
#include "plugins/device/media/Font.h"
#include "plugins/device/media/Scene.h"

#include "protocol/interface/Results.h"

#include <algorithm>
#include <cmath>
#include <optional>
#include <stdexcept>

namespace device
{
namespace
{
constexpr uint32_t g_dwNumber = 0xFFFF;

// Paints a part of a wall.
class CPainter
{
public:
    // tPart: in ten-thousandths of the wall.
    CPainter(tagWallView const& tView, tagRectangle const& tPart, tagImage& tImage)
        : m_tView(tView), m_tPart(tPart), m_tImage(tImage)
    {
    }

    tagRectangle Screen(uint32_t dwScreen) const
    {
        const double fWidth = g_fWhole / m_tView.dwColumns;
        const double fHeight = g_fWhole / m_tView.dwRows;
        return {dwScreen % m_tView.dwColumns * fWidth, dwScreen / m_tView.dwColumns * fHeight, fWidth, fHeight};
    }

    // A place on the wall in dots of the picture.
    tagRectangle Dots(tagRectangle const& t) const
    {
        const double fX = m_tImage.dwWidth / m_tPart.fWidth;
        const double fY = m_tImage.dwHeight / m_tPart.fHeight;
        return {(t.fLeft - m_tPart.fLeft) * fX, (t.fTop - m_tPart.fTop) * fY, t.fWidth * fX, t.fHeight * fY};
    }

    void PaintBackground()
    {
        for (uint32_t i = 0; i < m_tView.atScreens.size(); ++i)
        {
            Fill(m_tImage, Dots(Screen(i)), m_tView.atScreens[i].dwBackground);
        }
    }

    void PaintWindow(tagWindowView const& tWindow)
    {
        tagDecoderWindow const& tPlace = tWindow.tPlace;
        const tagRectangle tWhere = Dots({static_cast<double>(tPlace.dwLeft), static_cast<double>(tPlace.dwTop),
                                          static_cast<double>(tPlace.dwWidth), static_cast<double>(tPlace.dwHeight)});
        // Painted by itself first, so that nothing lies outside.
        tagImage tPane(std::max(1U, static_cast<uint32_t>(tWhere.fWidth + 0.5)),
                       std::max(1U, static_cast<uint32_t>(tWhere.fHeight + 0.5)), Background(tPlace));
        // Its name stands above the picture and its time below, so that they hide nothing of what is written into that.
        const double fLine = LineOf(tPane);
        const double fAbove = tWindow.tConfig.bShowName != 0 ? fLine : 0;
        const double fBelow = ShowsTime(tWindow) ? fLine : 0;
        tagImage tPicture(tPane.dwWidth, std::max(1U, static_cast<uint32_t>(tPane.dwHeight - fAbove - fBelow)),
                          Background(tPlace));
        PaintSource(tWindow, tPicture);
        PaintLogo(tWindow.tLogo, tPicture);
        const tagRectangle tWhole = WholeOf(tPicture);
        Draw(tPane, {0, fAbove, tWhole.fWidth, tWhole.fHeight}, tPicture, tWhole);
        PaintTexts(tWindow, tPane);
        PaintBorder(tWindow.tConfig, tPane);
        Draw(m_tImage, tWhere, tPane, WholeOf(tPane));
    }

    void PaintScreens()
    {
        for (uint32_t i = 0; i < m_tView.atScreens.size(); ++i)
        {
            tagDecoderDisplayConfig const& t = m_tView.atScreens[i];
            const tagRectangle tWhere = Dots(Screen(i));
            Adjust(m_tImage, tWhere, t.dwBrightness, t.dwContrast, t.dwSaturation);
            if (t.bShowClock != 0)
            {
                DrawText(m_tImage, tWhere.fLeft + t.dwClockLeft * tWhere.fWidth / g_fWhole,
                         tWhere.fTop + t.dwClockTop * tWhere.fHeight / g_fWhole,
                         (t.dwClockHeight ? t.dwClockHeight : 400) * tWhere.fHeight / g_fWhole, 0xFFFFFF,
                         TimeText(m_tView.llNowUs, m_tView.nUtcOffsetMinutes));
            }
            if (t.bOn == 0)
            {
                Fill(m_tImage, tWhere, 0);
            }
        }
    }

private:
    uint32_t Background(tagDecoderWindow const& tPlace) const
    {
        const auto dwColumn =
            std::min(static_cast<uint32_t>(tPlace.dwLeft * m_tView.dwColumns / g_fWhole), m_tView.dwColumns - 1);
        const auto dwRow =
            std::min(static_cast<uint32_t>(tPlace.dwTop * m_tView.dwRows / g_fWhole), m_tView.dwRows - 1);
        const std::size_t nScreen = std::size_t{dwRow} * m_tView.dwColumns + dwColumn;
        return nScreen < m_tView.atScreens.size() ? m_tView.atScreens[nScreen].dwBackground : 0;
    }

    static void Message(tagImage& tPane, std::string const& strText)
    {
        DrawText(tPane, tPane.dwWidth * 0.1, tPane.dwHeight * 0.4, tPane.dwHeight * 0.12, 0xFFFFFF, strText);
    }

    // The picture of a source, if there is one.
    static std::optional<tagImage> SourcePicture(tagWindowView const& tWindow)
    {
        tagImage tImage;
        if (tWindow.pTransferred)
        {
            const Bytes tFrame{*tWindow.pTransferred};
            if (tWindow.dwTransferCodec == eCodecMJPEG)
            {
                return ReadImage(tFrame);
            }
            // There is no decoder here; but frames of a simulated camera are known.
            for (auto const& pClip : CClips::Instance().All())
            {
                const int nPicture = pClip->Codec() == tWindow.dwTransferCodec ? pClip->FindKeyFrame(tFrame) : -1;
                if (nPicture >= 0)
                {
                    return ReadImage(CClips::Instance().Picture(static_cast<uint64_t>(nPicture)));
                }
            }
        }
        else if (tWindow.pSource &&
                 TakeScene(*tWindow.pSource, tWindow.dwChannel, tWindow.llTimeUs, tImage) == eResultOk)
        {
            return tImage;
        }
        return {};
    }

    static void PaintSource(tagWindowView const& tWindow, tagImage& tPane)
    {
        const uint32_t dwState = tWindow.tStatus.dwState;
        const bool bLost = dwState == eWindowNoSignal || dwState == eWindowRefused;
        if (dwState == eWindowEmpty || dwState == eWindowConnecting || (bLost && tWindow.tConfig.dwLoss == eLossBlank))
        {
            return;
        }
        std::optional<tagImage> tPicture;
        try
        {
            if (!bLost || tWindow.tConfig.dwLoss == eLossFreeze)
            {
                tPicture = SourcePicture(tWindow);
            }
        }
        catch (std::runtime_error const&)
        {
            // What was sent is no picture.
        }
        if (tPicture)
        {
            PaintPicture(tWindow, *tPicture, tPane);
        }
        else if (!bLost || tWindow.tConfig.dwLoss == eLossMessage)
        {
            Message(tPane, "no signal");
        }
    }

    static void PaintPicture(tagWindowView const& tWindow, tagImage const& tPicture, tagImage& tPane)
    {
        tagRectangle tPart = WholeOf(tPicture);
        if (tWindow.tDisplay.dwZoomWidth != 0 && tWindow.tDisplay.dwZoomHeight != 0)
        {
            tPart = {tWindow.tDisplay.dwZoomLeft * tPart.fWidth / g_fWhole,
                     tWindow.tDisplay.dwZoomTop * tPart.fHeight / g_fWhole,
                     tWindow.tDisplay.dwZoomWidth * tPart.fWidth / g_fWhole,
                     tWindow.tDisplay.dwZoomHeight * tPart.fHeight / g_fWhole};
        }
        tagRectangle tWhere = WholeOf(tPane);
        const double fAcross = tWhere.fWidth / tPart.fWidth;
        const double fDown = tWhere.fHeight / tPart.fHeight;
        if (tWindow.tConfig.dwFit != eFitStretch)
        {
            const double fScale =
                tWindow.tConfig.dwFit == eFitFill ? std::max(fAcross, fDown) : std::min(fAcross, fDown);
            const double fWidth = tPart.fWidth * fScale;
            const double fHeight = tPart.fHeight * fScale;
            tWhere = {(tWhere.fWidth - fWidth) / 2, (tWhere.fHeight - fHeight) / 2, fWidth, fHeight};
        }
        Draw(tPane, tWhere, tPicture, tPart);
    }

    static void PaintLogo(tagLogo const& tLogo, tagImage& tPane)
    try
    {
        if (tLogo.bShown && tLogo.pData)
        {
            const tagImage tImage = ReadImage(Bytes{*tLogo.pData});
            tagUploadLogoParameter const& t = tLogo.tPlace;
            const double fWidth = t.dwWidth ? t.dwWidth * tPane.dwWidth / g_fWhole : tImage.dwWidth;
            const double fHeight = fWidth * tImage.dwHeight / tImage.dwWidth;
            Draw(tPane, {t.dwLeft * tPane.dwWidth / g_fWhole, t.dwTop * tPane.dwHeight / g_fWhole, fWidth, fHeight},
                 tImage, WholeOf(tImage), t.dwOpacity ? std::min(t.dwOpacity, 100U) : 100);
        }
    }
    catch (std::runtime_error const&)
    {
        // It is no picture.
    }

    // How high a line of a window's own text is, with the room around it.
    static double LineOf(tagImage const& tPane) { return std::floor(std::max(tPane.dwHeight * 0.09, 15.0)); }

    static bool ShowsTime(tagWindowView const& tWindow)
    {
        return tWindow.tConfig.bShowTime != 0 && tWindow.llTimeUs != 0;
    }

    void PaintTexts(tagWindowView const& tWindow, tagImage& tPane) const
    {
        const double fHeight = LineOf(tPane) * 2 / 3;
        if (tWindow.tConfig.bShowName != 0)
        {
            DrawText(tPane, fHeight / 2, fHeight / 4, fHeight, 0xFFFFFF, Text(tWindow.tConfig.szName));
        }
        if (ShowsTime(tWindow))
        {
            const int32_t nOffset =
                tWindow.pSource ? tWindow.pSource->UtcOffsetMinutes(tWindow.llTimeUs) : m_tView.nUtcOffsetMinutes;
            DrawText(tPane, fHeight / 2, tPane.dwHeight - fHeight * 1.25, fHeight, 0xFFFFFF,
                     TimeText(tWindow.llTimeUs, nOffset));
        }
    }

    static void PaintBorder(tagDecoderChannelConfig const& tConfig, tagImage& tPane)
    {
        const double fBorder = tConfig.dwBorder;
        const tagRectangle t = WholeOf(tPane);
        Fill(tPane, {0, 0, t.fWidth, fBorder}, tConfig.dwBorderColour);
        Fill(tPane, {0, t.fHeight - fBorder, t.fWidth, fBorder}, tConfig.dwBorderColour);
        Fill(tPane, {0, 0, fBorder, t.fHeight}, tConfig.dwBorderColour);
        Fill(tPane, {t.fWidth - fBorder, 0, fBorder, t.fHeight}, tConfig.dwBorderColour);
    }

    tagWallView const& m_tView;
    const tagRectangle m_tPart;
    tagImage& m_tImage;
};

// Dots of a screen.
std::pair<uint32_t, uint32_t> SizeOf(tagWallView const& tView, std::size_t nScreen)
{
    const bool bKnown = nScreen < tView.atSignals.size() && tView.atSignals[nScreen].dwWidth != 0 &&
                        tView.atSignals[nScreen].dwHeight != 0;
    return bKnown ? std::pair{tView.atSignals[nScreen].dwWidth, tView.atSignals[nScreen].dwHeight}
                  : std::pair{1920U, 1080U};
}
} // namespace

int TakeWall(tagWallView const& tView, uint32_t dwTarget, uint32_t dwMaxWidth, uint32_t dwMaxHeight, tagImage& tImage)
{
    const uint32_t dwKind = dwTarget & ~g_dwNumber;
    const uint32_t dwNumber = dwTarget & g_dwNumber;
    const auto itWindow =
        std::ranges::find_if(tView.atWindows, [&](tagWindowView const& t) { return t.tPlace.dwChannel == dwNumber; });
    const bool bThere = dwKind == eCaptureWindow   ? itWindow != tView.atWindows.end()
                        : dwKind == eCaptureScreen ? dwNumber < tView.atScreens.size()
                                                   : dwTarget == eCaptureWall && !tView.atScreens.empty();
    if (!bThere || tView.dwRows == 0 || tView.dwColumns == 0)
    {
        return eResultNoChannel;
    }
    auto [dwWidth, dwHeight] = SizeOf(tView, dwKind == eCaptureScreen ? dwNumber : 0);
    tagRectangle tPart{0, 0, g_fWhole, g_fWhole};
    if (dwKind == eCaptureScreen)
    {
        tPart = CPainter(tView, tPart, tImage).Screen(dwNumber);
    }
    else
    {
        dwWidth *= tView.dwColumns;
        dwHeight *= tView.dwRows;
    }
    if (dwKind == eCaptureWindow)
    {
        tagDecoderWindow const& t = itWindow->tPlace;
        tPart = {static_cast<double>(t.dwLeft), static_cast<double>(t.dwTop), static_cast<double>(t.dwWidth),
                 static_cast<double>(t.dwHeight)};
        dwWidth = std::max(1U, static_cast<uint32_t>(dwWidth * tPart.fWidth / g_fWhole + 0.5));
        dwHeight = std::max(1U, static_cast<uint32_t>(dwHeight * tPart.fHeight / g_fWhole + 0.5));
    }
    Limit(dwWidth, dwHeight, dwMaxWidth ? dwMaxWidth : 8192, dwMaxHeight ? dwMaxHeight : 8192);
    tImage = tagImage(dwWidth, dwHeight, 0);
    CPainter tPainter(tView, tPart, tImage);
    tPainter.PaintBackground();
    for (tagWindowView const& tWindow : tView.atWindows)
    {
        if (dwKind != eCaptureWindow || &tWindow == &*itWindow)
        {
            tPainter.PaintWindow(tWindow);
        }
    }
    if (dwKind != eCaptureWindow)
    {
        tPainter.PaintScreens();
    }
    return eResultOk;
}
} // namespace device
