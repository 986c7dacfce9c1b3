/* Reads a device's configuration, changes a stream's frame rate and a channel's picture, and puts both back. */

#include "Tour.h"

/* [read] */
/* Reads the block that type, index and stream name into a record. A block is a quarter of a megabyte, so it is kept off
   the stack. Fields that the device doesn't know yet are 0. */
static int ReadBlock(int nLogin, uint32_t dwType, uint32_t dwIndex, uint32_t dwStream, void* pRecord, size_t nSize)
{
    tagConfigInformation* const ptBlock = calloc(1, sizeof *ptBlock);
    int nResult = eResultNoResources;
    if (ptBlock)
    {
        ptBlock->type = dwType;
        ptBlock->index = dwIndex;
        ptBlock->extra[1] = dwStream;
        nResult = ClientAdapter_GetConfig(nLogin, ptBlock);
        if (nResult == eResultOk)
        {
            const uint32_t dwSize = (uint32_t)nSize;
            memcpy(pRecord, ptBlock->data, nSize);
            memcpy(pRecord, &dwSize, sizeof dwSize); /* dwSize, which every record begins with: what we know of it */
        }
        free(ptBlock);
    }
    return Worked(nResult, "reading a block");
}
/* [read] */

/* [write] */
/* Writes a record back. Fields that we don't know stay as they are on the device. */
static int WriteBlock(int nLogin, uint32_t dwType, uint32_t dwIndex, uint32_t dwStream, void const* pRecord,
                      size_t nSize)
{
    tagConfigInformation* const ptBlock = calloc(1, sizeof *ptBlock);
    int nResult = eResultNoResources;
    if (ptBlock)
    {
        ptBlock->type = dwType;
        ptBlock->index = dwIndex;
        ptBlock->extra[1] = dwStream;
        memcpy(ptBlock->data, pRecord, nSize);
        nResult = ClientAdapter_SetConfig(nLogin, ptBlock);
        free(ptBlock);
    }
    return Worked(nResult, "writing a block");
}
/* [write] */

static int ShowDevice(int nLogin)
{
    tagConfigIdentity tIdentity;
    tagConfigClock tClock;
    tagConfigNetwork tNetwork;
    char szTime[32];
    if (!ReadBlock(nLogin, eConfigIdentity, 0, 0, &tIdentity, sizeof tIdentity) ||
        !ReadBlock(nLogin, eConfigClock, 0, 0, &tClock, sizeof tClock) ||
        !ReadBlock(nLogin, eConfigNetwork, eInterfaceOfLogin, 0, &tNetwork, sizeof tNetwork))
    {
        return 0;
    }
    printf("%s, a %s with firmware %s, serial number %s: %" PRIu32 " channels.\n", tIdentity.szName, tIdentity.szModel,
           tIdentity.szFirmware, tIdentity.szSerialNumber, tIdentity.dwChannels);
    printf("Its clock says %s; time zone %s.\n", TimeText(tClock.llTimeUs, szTime), tClock.szTimeZone);
    printf("It is at %s/%" PRIu32 " (%s).\n", tNetwork.szAddress, tNetwork.dwPrefixLength, tNetwork.szMac);
    return 1;
}

/* [change] */
static int SetFrameRate(int nLogin, uint32_t dwRate, uint32_t* pdwBefore)
{
    tagConfigVideoEncoder tVideo;
    if (!ReadBlock(nLogin, eConfigVideoEncoder, 0, eStreamMain, &tVideo, sizeof tVideo))
    {
        return 0;
    }
    printf("The main stream is %" PRIu32 "x%" PRIu32 " at %.1f frames/s.\n", tVideo.dwWidth, tVideo.dwHeight,
           tVideo.dwFrameRate / 1000.0);
    *pdwBefore = tVideo.dwFrameRate;
    tVideo.dwFrameRate = dwRate;
    return WriteBlock(nLogin, eConfigVideoEncoder, 0, eStreamMain, &tVideo, sizeof tVideo) &&
           ReadBlock(nLogin, eConfigVideoEncoder, 0, eStreamMain, &tVideo, sizeof tVideo) &&
           Expect(tVideo.dwFrameRate == dwRate, "the frame rate reads back as it was written");
}
/* [change] */

static int ChangeStream(int nLogin)
{
    uint32_t dwBefore, dwChanged;
    return SetFrameRate(nLogin, 15000, &dwBefore) && SetFrameRate(nLogin, dwBefore, &dwChanged);
}

/* What a device must refuse, and change nothing. */
static int TryNonsense(int nLogin)
{
    tagCameraPicture tPicture = {.dwSize = sizeof tPicture, .dwBrightness = 101};
    const int nResult = ClientAdapter_SetIpcPara(nLogin, 0, eCameraPicture, &tPicture, sizeof tPicture);
    printf("A brightness of 101 %%: result %d.\n", nResult);
    return Expect(nResult == eResultBadArgument, "nonsense is refused");
}

static int ChangePicture(int nLogin)
{
    tagCameraPicture tPicture = {.dwSize = sizeof tPicture};
    if (!Worked(ClientAdapter_GetIpcPara(nLogin, 0, eCameraPicture, &tPicture, sizeof tPicture), "reading the picture"))
    {
        return 0;
    }
    printf("Brightness is %" PRIu32 " %%.\n", tPicture.dwBrightness);
    tPicture.dwBrightness = tPicture.dwBrightness < 50 ? 70 : 30;
    return Worked(ClientAdapter_SetIpcPara(nLogin, 0, eCameraPicture, &tPicture, sizeof tPicture),
                  "changing the picture") &&
           TryNonsense(nLogin) &&
           Worked(ClientAdapter_SetChromaDefault(nLogin, 0, eDefaultPicture), "the factory's picture") &&
           Worked(ClientAdapter_GetIpcPara(nLogin, 0, eCameraPicture, &tPicture, sizeof tPicture),
                  "reading it again") &&
           Expect(tPicture.dwBrightness == 50, "brightness is the factory's");
}

int main(int nArguments, char** aszArguments)
{
    const int nLogin = BeginTour(nArguments, aszArguments);
    return EndTour(nLogin, nLogin != -1 && ShowDevice(nLogin) && ChangeStream(nLogin) && ChangePicture(nLogin));
}
