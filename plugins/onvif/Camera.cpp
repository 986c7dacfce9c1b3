// Camera parameters and the head.

#include "plugins/onvif/Imaging.h"
#include "plugins/onvif/Operations.h"
#include "plugins/onvif/PTZ.h"
#include "plugins/onvif/Profiles.h"

#include <cstring>

namespace onvifclient
{
namespace
{
using Adapter_ProtocolSet::WriteList;
using Adapter_ProtocolSet::WriteRecord;

int CheckRecord(void const* pPara, unsigned long dwLength)
{
    uint32_t dwSize = 0;
    if (!pPara || dwLength < sizeof dwSize)
    {
        return eResultBadArgument;
    }
    std::memcpy(&dwSize, pPara, sizeof dwSize);
    return dwSize == dwLength ? int{eResultOk} : int{eResultBadArgument};
}

// A record that fnRead fills, to the caller.
template <class Record, class F>
int Give(void* pPara, F fnRead)
{
    Record t{};
    t.dwSize = sizeof t;
    const int nResult = fnRead(t);
    return nResult ? nResult : WriteRecord(static_cast<Record*>(pPara), t);
}

template <class List, class Entry>
int GiveList(void* pPara, CHead& tHead, int (CHead::*pfnRead)(std::vector<Entry>&))
{
    std::vector<Entry> atEntries;
    const int nResult = (tHead.*pfnRead)(atEntries);
    return nResult ? nResult : WriteList(static_cast<List*>(pPara), atEntries.data(), atEntries.size());
}

int ReadHead(CLogin& tLogin, uint32_t dwChannel, unsigned long dwType, void* pPara)
{
    std::shared_ptr<CHead> pHead;
    if (const int nResult = tLogin.Part<CHeads>().Find(dwChannel, pHead))
    {
        return nResult;
    }
    switch (dwType)
    {
    case eCameraPosition:
        return Give<tagPTZPosition>(pPara, [&](tagPTZPosition& t) { return pHead->Position(t); });
    case eCameraPTZAbility:
        return Give<tagPTZAbility>(pPara, [&](tagPTZAbility& t) { return pHead->Ability(t); });
    case eCameraPresets:
        return GiveList<tagPTZPresetList>(pPara, *pHead, &CHead::Presets);
    default: // eCameraTours
        return GiveList<tagPTZTourList>(pPara, *pHead, &CHead::Tours);
    }
}

int ReadCamera(CLogin& tLogin, uint32_t dwChannel, unsigned long dwType, void* pPara)
{
    if (dwType >= eCameraPosition && dwType <= eCameraPTZAbility)
    {
        return ReadHead(tLogin, dwChannel, dwType, pPara);
    }
    std::shared_ptr<tagChannel const> pChannel;
    bool bMedia2 = false;
    if (const int nResult = FindChannel(tLogin, dwChannel, pChannel, bMedia2))
    {
        return nResult;
    }
    onvif::CClient& tClient = tLogin.Client();
    switch (dwType)
    {
    case eCameraPicture:
        return Give<tagCameraPicture>(pPara, [&](auto& t) { return ReadPicture(tClient, *pChannel, bMedia2, t); });
    case eCameraDayNight:
        return Give<tagCameraDayNight>(pPara, [&](auto& t) { return ReadDayNight(tClient, *pChannel, t); });
    case eCameraExposure:
        return Give<tagCameraExposure>(pPara, [&](auto& t) { return ReadExposure(tClient, *pChannel, t); });
    case eCameraFocus:
        return Give<tagCameraFocus>(pPara, [&](auto& t) { return ReadFocus(tClient, *pChannel, t); });
    default:
        return eResultNotSupported;
    }
}

int WriteCamera(CLogin& tLogin, uint32_t dwChannel, unsigned long dwType, void const* pPara)
{
    std::shared_ptr<tagChannel const> pChannel;
    bool bMedia2 = false;
    if (const int nResult = FindChannel(tLogin, dwChannel, pChannel, bMedia2))
    {
        return nResult;
    }
    onvif::CClient& tClient = tLogin.Client();
    switch (dwType)
    {
    case eCameraPicture:
        return WritePicture(tClient, *pChannel, bMedia2, static_cast<tagCameraPicture const*>(pPara));
    case eCameraDayNight:
        return WriteDayNight(tClient, *pChannel, static_cast<tagCameraDayNight const*>(pPara));
    case eCameraExposure:
        return WriteExposure(tClient, *pChannel, static_cast<tagCameraExposure const*>(pPara));
    case eCameraFocus:
        return WriteFocus(tClient, *pChannel, static_cast<tagCameraFocus const*>(pPara));
    default:
        return dwType >= eCameraPosition && dwType <= eCameraPTZAbility ? int{eResultRefused}
                                                                        : int{eResultNotSupported};
    }
}

template <class F>
int OnCamera(void* hLogin, int nChannel, void const* pPara, unsigned long dwLength, F fnDo)
{
    return With<CLogin>(hLogin,
                        [&](CLogin& tLogin)
                        {
                            const int nResult = CheckRecord(pPara, dwLength);
                            return nResult        ? nResult
                                   : nChannel < 0 ? static_cast<int>(eResultNoChannel)
                                                  : fnDo(tLogin, static_cast<uint32_t>(nChannel));
                        });
}
} // namespace

int Serve(tagCall<&CClientProtocolBase::GetIpcPara>, void* hLogin, int nChannel, unsigned long dwType, void* pPara,
          unsigned long dwLength)
{
    return OnCamera(hLogin, nChannel, pPara, dwLength,
                    [&](CLogin& tLogin, uint32_t dwChannel) { return ReadCamera(tLogin, dwChannel, dwType, pPara); });
}

int Serve(tagCall<&CClientProtocolBase::SetIpcPara>, void* hLogin, int nChannel, unsigned long dwType, void* pPara,
          unsigned long dwLength)
{
    return OnCamera(hLogin, nChannel, pPara, dwLength,
                    [&](CLogin& tLogin, uint32_t dwChannel) { return WriteCamera(tLogin, dwChannel, dwType, pPara); });
}

int Serve(tagCall<&CClientProtocolBase::SetChromaDefault>, void* hLogin, unsigned long dwChannel, unsigned long dwFlag)
{
    return With<CLogin>(hLogin,
                        [&](CLogin& tLogin)
                        {
                            std::shared_ptr<tagChannel const> pChannel;
                            bool bMedia2 = false;
                            const int nResult =
                                FindChannel(tLogin, static_cast<uint32_t>(dwChannel), pChannel, bMedia2);
                            return nResult                ? nResult
                                   : dwFlag > eDefaultAll ? static_cast<int>(eResultBadArgument)
                                                          : DefaultCamera(tLogin.Client(), *pChannel, bMedia2,
                                                                          static_cast<eChromaDefault>(dwFlag));
                        });
}

int Serve(tagCall<&CClientProtocolBase::PTZControl>, void* hLogin, unsigned long dwChannel, ePTZControlCmdCode eCommand,
          unsigned long dwPara1, unsigned long dwPara2, unsigned long dwPara3, unsigned long dwPara4)
{
    return With<CLogin>(hLogin,
                        [&](CLogin& tLogin)
                        {
                            std::shared_ptr<CHead> pHead;
                            const int nResult = tLogin.Part<CHeads>().Find(static_cast<uint32_t>(dwChannel), pHead);
                            char const* const szName =
                                eCommand == ePTZPresetSet ? reinterpret_cast<char const*>(dwPara2) : nullptr;
                            const CHead::Para anPara = {static_cast<int32_t>(dwPara1), static_cast<int32_t>(dwPara2),
                                                        static_cast<int32_t>(dwPara3), static_cast<int32_t>(dwPara4)};
                            return nResult ? nResult : pHead->Command(eCommand, anPara, szName);
                        });
}
} // namespace onvifclient
