#include "plugins/device/media/Capture.h"

#include "plugins/device/Device.h"
#include "plugins/device/media/Scene.h"
#include "plugins/device/media/WallPicture.h"

#include "protocol/interface/Results.h"

#include <cstdio>
#include <cstring>
#include <stdexcept>

namespace device
{
namespace
{
constexpr uint32_t g_dwUsualQuality = 80;

bool WriteFile(std::string const& strPath, std::vector<unsigned char> const& abyFile)
{
    std::FILE* const pFile = std::fopen(strPath.c_str(), "wb");
    const bool bWritten = pFile && std::fwrite(abyFile.data(), 1, abyFile.size(), pFile) == abyFile.size();
    return pFile && std::fclose(pFile) == 0 && bWritten;
}

int TakePicture(CDevice& tDevice, uint32_t dwTarget, tagImageFileInfo& tInfo, tagImage& tImage)
{
    if (dwTarget >= eCaptureWindow)
    {
        return TakeWall(tDevice.WallView(), dwTarget, tInfo.dwWidth, tInfo.dwHeight, tImage);
    }
    tagImage tScene;
    if (const int nResult = TakeScene(tDevice, dwTarget, tInfo.llTimeUs, tScene))
    {
        return nResult;
    }
    uint32_t dwWidth = tScene.dwWidth;
    uint32_t dwHeight = tScene.dwHeight;
    Limit(dwWidth, dwHeight, tInfo.dwWidth, tInfo.dwHeight);
    tImage = tagImage(dwWidth, dwHeight, 0);
    Draw(tImage, WholeOf(tImage), tScene, WholeOf(tScene));
    return eResultOk;
}
} // namespace

int Capture(CDevice& tDevice, uint32_t dwTarget, eImageFormat eFormat, tagImageFileInfo& tInfo)
{
    const std::string strPath(tInfo.szPath, strnlen(tInfo.szPath, sizeof tInfo.szPath));
    if ((eFormat != eImageJpeg && eFormat != eImagePng) || (strPath.empty() && !tInfo.pbyData) || tInfo.dwQuality > 100)
    {
        return eResultBadArgument;
    }
    tInfo.llTimeUs = tDevice.NowUs();
    tagImage tImage;
    std::vector<unsigned char> abyFile;
    try
    {
        if (const int nResult = TakePicture(tDevice, dwTarget, tInfo, tImage))
        {
            return nResult;
        }
        abyFile = WriteImage(tImage, eFormat, tInfo.dwQuality ? tInfo.dwQuality : g_dwUsualQuality);
    }
    catch (std::runtime_error const&)
    {
        return eResultNoResources;
    }
    tInfo.dwWidth = tImage.dwWidth;
    tInfo.dwHeight = tImage.dwHeight;
    tInfo.dwLength = static_cast<uint32_t>(abyFile.size());
    if ((tInfo.pbyData && tInfo.dwCapacity < abyFile.size()) || (!strPath.empty() && !WriteFile(strPath, abyFile)))
    {
        return eResultNoResources;
    }
    if (tInfo.pbyData)
    {
        std::memcpy(tInfo.pbyData, abyFile.data(), abyFile.size());
    }
    if (dwTarget < eCaptureWindow)
    {
        char szName[64];
        std::snprintf(szName, sizeof szName, "ch%02u/%s-%06u.%s", dwTarget,
                      TimeText(tInfo.llTimeUs, 0, "%Y%m%dT%H%M%SZ").c_str(),
                      static_cast<unsigned>(tInfo.llTimeUs % 1000000), eFormat == eImageJpeg ? "jpg" : "png");
        tDevice.KeepPicture(dwTarget, szName, std::make_shared<std::vector<unsigned char> const>(std::move(abyFile)));
    }
    return eResultOk;
}
} // namespace device
