// What is fetched by GET, and what is sent to the device by POST.

#include "tools/onvif_device/Call.h"
#include "tools/onvif_device/Exchange.h"
#include "tools/onvif_device/Security.h"

#include "plugins/device/Worker.h"
#include "plugins/device/media/Capture.h"

namespace onvif_device
{
namespace
{
constexpr uint32_t g_dwPictureRoom = 8 << 20;

void Plain(tagExchange& tExchange, unsigned nStatus, std::string const& strText)
{
    tExchange.nStatus = nStatus;
    tExchange.strType = "text/plain";
    tExchange.strAnswer = strText;
}

// dwTarget: a channel, or eCaptureTarget.
void ServePicture(CFace& tFace, tagExchange& tExchange, uint32_t dwTarget)
{
    tagImageFileInfo tInfo{};
    tInfo.dwSize = sizeof tInfo;
    tInfo.dwCapacity = g_dwPictureRoom;
    std::string strPicture(g_dwPictureRoom, '\0');
    tInfo.pbyData = reinterpret_cast<unsigned char*>(strPicture.data());
    if (device::Capture(tFace.Device(), dwTarget, eImageJpeg, tInfo) != eResultOk)
    {
        Plain(tExchange, 503, "no picture\n");
        return;
    }
    strPicture.resize(tInfo.dwLength);
    tExchange.strType = "image/jpeg";
    tExchange.strAnswer = std::move(strPicture);
}

void ServeStored(CFace& tFace, tagExchange& tExchange, uint32_t dwKind)
{
    const device::SharedBytes pFile = tFace.Device().File(dwKind, {});
    tExchange.strType = "application/octet-stream";
    tExchange.strAnswer.assign(pFile->begin(), pFile->end());
}

// Firmware restarts the device, which has to answer first.
void ReceiveFirmware(CFace& tFace, tagExchange& tExchange, uint32_t dwKind)
{
    if (tExchange.strBody.empty())
    {
        Plain(tExchange, 415, "nothing came\n");
        return;
    }
    device::TimeWorker().At(device::SteadyUs() + 300000,
                            [pDevice = tFace.SharedDevice(), tCaller = tExchange.tCaller, dwKind,
                             pFile = device::ToBytes(tExchange.strBody)]
                            {
                                const device::CDevice::CLock tLock(*pDevice);
                                pDevice->Part<device::CFiles>().Receive(tCaller, dwKind, {}, pFile);
                            });
    Plain(tExchange, 200, "taken\n");
}

void Receive(CFace& tFace, tagExchange& tExchange, uint32_t dwKind)
{
    const device::CDevice::CLock tLock(tFace.Device());
    const int nResult = tFace.Device().Part<device::CFiles>().Receive(tExchange.tCaller, dwKind, {},
                                                                      device::ToBytes(tExchange.strBody));
    Plain(tExchange, nResult == eResultOk ? 200 : 415, nResult == eResultOk ? "taken\n" : "not what it must be\n");
}

// A picture, with a number after its path: /snapshot_1.
struct tagPictureRow
{
    char const* szPath;
    uint32_t dwTarget; // eCaptureTarget
};
constexpr tagPictureRow g_atPictures[] = {
    {"/snapshot", eCaptureChannel}, {"/window", eCaptureWindow}, {"/screen", eCaptureScreen}};

struct tagFileRow
{
    char const* szMethod;
    char const* szPath;
    uint32_t dwKind; // eFileKind
    void (*pfnServe)(CFace&, tagExchange&, uint32_t dwKind);
};
constexpr tagFileRow g_atFiles[] = {
    {"GET", "/files/log", eFileLog, ServeStored},
    {"GET", "/files/support", eFileSupport, ServeStored},
    {"GET", "/files/configuration", eFileConfiguration, ServeStored},
    {"POST", "/files/firmware", eFileFirmware, ReceiveFirmware},
    {"POST", "/files/configuration", eFileConfiguration, Receive},
};

void ServeUnsafe(CFace& tFace, tagExchange& tExchange)
{
    uint32_t dwNumber = 0;
    for (tagPictureRow const& t : g_atPictures)
    {
        if (tExchange.strMethod == "GET" && ParseToken(tExchange.strPath, t.szPath, {&dwNumber}))
        {
            RequireLevel(tFace, tExchange, eUserViewer);
            ServePicture(tFace, tExchange, t.dwTarget + dwNumber);
            return;
        }
    }
    for (tagFileRow const& t : g_atFiles)
    {
        if (tExchange.strMethod == t.szMethod && tExchange.strPath == t.szPath)
        {
            RequireLevel(tFace, tExchange, eUserAdministrator);
            t.pfnServe(tFace, tExchange, t.dwKind);
            return;
        }
    }
    Plain(tExchange, 404, "nothing is here\n");
}
} // namespace

void ServeFile(CFace& tFace, tagExchange& tExchange)
{
    try
    {
        const tagQuirks tQuirks = tFace.Quirks();
        if (tQuirks.strAuth == "none")
        {
            tExchange.tCaller.dwLevel = eUserAdministrator;
        }
        else if (!tExchange.strDigestUser.empty())
        {
            AuthenticateDigest(tFace, tExchange);
        }
        ServeUnsafe(tFace, tExchange);
    }
    catch (CFault const& tFault)
    {
        tExchange.bChallenge = tExchange.tCaller.dwLevel == 0;
        Plain(tExchange, tExchange.bChallenge ? 401 : 403, std::string(tFault.what()) + '\n');
    }
}
} // namespace onvif_device
