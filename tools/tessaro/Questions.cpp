#include "tools/tessaro/Questions.h"

#include "tools/tessaro/records/Records.h"

#include <array>
#include <vector>

namespace tessaro
{
namespace
{
template <eConfigType eType>
int Block(CSession const& tSession)
{
    std::array<unsigned char, 4096> abyRecord{};
    return tSession.ReadBlock(eType, 0, 0, abyRecord.data(), abyRecord.size());
}

template <eCameraParameter eParameter, class Record>
int Camera(CSession const& tSession)
{
    auto t = Sized<Record>();
    return ClientAdapter_GetIpcPara(tSession.Login(), 0, eParameter, &t, sizeof t);
}

template <class Record>
int List(CSession const& tSession, int (*pfnGet)(int, Record*))
{
    auto t = Sized<Record>();
    return pfnGet(tSession.Login(), &t);
}

template <class Record>
int Screen(CSession const& tSession, int (*pfnGet)(int, unsigned long, Record*))
{
    auto t = Sized<Record>();
    return pfnGet(tSession.Login(), 0, &t);
}

// Something that is opened to see whether it can be, and closed again.
template <class Open>
int Opened(CMedia::Close pfnClose, Open fnOpen)
{
    CMedia tMedia(pfnClose);
    const int nResult = fnOpen(tMedia.Target());
    return nResult;
}

int Live(CSession const& tSession)
{
    tagRealStreamPara tPara{};
    tPara.dwStreamKind = eStreamMain;
    return Opened(&ClientAdapter_RealStreamDisconnect,
                  [&](int* pn) { return ClientAdapter_RealStreamConnect(pn, tSession.Login(), &tPara); });
}

int Recordings(CSession const& tSession)
{
    auto tFactor = Sized<tagHistoryStreamQueryFactor>();
    return Opened(&ClientAdapter_HistoryStreamQueryDisconnect,
                  [&](int* pn) { return ClientAdapter_HistoryStreamQueryConnect(pn, tSession.Login(), &tFactor); });
}

int RecordingsOfTypes(CSession const& tSession)
{
    auto tFactor = Sized<tagHistoryStreamMultiTypeQueryFactor>();
    return Opened(&ClientAdapter_HistoryStreamQueryDisconnect, [&](int* pn)
                  { return ClientAdapter_HistoryStreamMultiTypeQueryConnect(pn, tSession.Login(), &tFactor); });
}

int Log(CSession const& tSession)
{
    auto tFactor = Sized<tagLogQueryFactor>();
    return Opened(&ClientAdapter_HistoryLogQueryDisconnect,
                  [&](int* pn) { return ClientAdapter_HistoryLogQueryConnect(pn, tSession.Login(), &tFactor); });
}

int Playback(CSession const& tSession)
{
    auto tPara = Sized<tagHistoryStreamPara>();
    const int nResult =
        Opened(&ClientAdapter_HistoryStreamDestroy, [&](int* pn)
               { return ClientAdapter_HistoryStreamCreate(pn, tSession.Login(), &tPara, eHistoryPaused); });
    return nResult == eResultNotFound ? static_cast<int>(eResultOk) : nResult; // nothing is recorded yet
}

int Picture(CSession const& tSession)
{
    std::vector<unsigned char> abyRoom(4 << 20);
    auto tInfo = Sized<tagImageFileInfo>();
    tInfo.dwWidth = 320;
    tInfo.dwCapacity = static_cast<std::uint32_t>(abyRoom.size());
    tInfo.pbyData = abyRoom.data();
    return ClientAdapter_ImageCapture(tSession.Login(), 0, eImageJpeg, &tInfo);
}

int DataSize(CSession const& tSession)
{
    unsigned long dwSize = 0;
    return ClientAdapter_GetDataSize(tSession.Login(), TESSARO_ALL, eDiskGroupAll, eHistoryAny, "", "", 0, &dwSize);
}

int Days(CSession const& tSession)
{
    char szDays[32]{};
    unsigned long dwLength = sizeof szDays;
    return ClientAdapter_DataExistCheck(tSession.Login(), 0, 0, 202401, szDays, &dwLength);
}

int Inputs(CSession const& tSession)
{
    unsigned long dwCount = 0;
    return ClientAdapter_AlarminStateGet(tSession.Login(), &dwCount, nullptr);
}

int Outputs(CSession const& tSession)
{
    unsigned long dwCount = 0;
    return ClientAdapter_AlarmoutStateGet(tSession.Login(), &dwCount, nullptr);
}

int Version(CSession const& tSession)
{
    eNetworkSDKVersion eVersion = eSDKVersionUnknown;
    return ClientAdapter_GetSDKVersionByHandle(tSession.Login(), &eVersion);
}

int Link(CSession const& tSession)
{
    auto tResult = Sized<tagMediaLinkIDQueryResult>();
    return ClientAdapter_QueryStreamMediaLinkID(tSession.Login(), eMediaFunctionLive, &tResult);
}

int Layout(CSession const& tSession)
{
    auto t = Sized<tagDecoderDeviceConfig>();
    return ClientAdapter_DecoderGetConfig(tSession.Login(), &t);
}

constexpr tagQuestion g_atQuestions[] = {
    {"GetConfigV2", "identity", &Block<eConfigIdentity>},
    {"GetConfigV2", "network", &Block<eConfigNetwork>},
    {"GetConfigV2", "clock", &Block<eConfigClock>},
    {"GetConfigV2", "users", &Block<eConfigUsers>},
    {"GetConfigV2", "storage", &Block<eConfigStorage>},
    {"GetConfigV2", "video_encoder", &Block<eConfigVideoEncoder>},
    {"GetConfigV2", "audio_encoder", &Block<eConfigAudioEncoder>},
    {"GetConfigV2", "picture", &Block<eConfigPicture>},
    {"GetConfigV2", "overlay", &Block<eConfigOverlay>},
    {"GetConfigV2", "motion", &Block<eConfigMotion>},
    {"GetConfigV2", "privacy", &Block<eConfigPrivacy>},
    {"GetConfigV2", "schedule", &Block<eConfigSchedule>},
    {"GetConfigV2", "alarm_input", &Block<eConfigAlarmInput>},
    {"GetConfigV2", "alarm_output", &Block<eConfigAlarmOutput>},
    {"GetSDKVersionByHandle", "", &Version},
    {"GetIpcPara", "picture", &Camera<eCameraPicture, tagCameraPicture>},
    {"GetIpcPara", "day_night", &Camera<eCameraDayNight, tagCameraDayNight>},
    {"GetIpcPara", "exposure", &Camera<eCameraExposure, tagCameraExposure>},
    {"GetIpcPara", "focus", &Camera<eCameraFocus, tagCameraFocus>},
    {"GetIpcPara", "position", &Camera<eCameraPosition, tagPTZPosition>},
    {"GetIpcPara", "presets", &Camera<eCameraPresets, tagPTZPresetList>},
    {"GetIpcPara", "tours", &Camera<eCameraTours, tagPTZTourList>},
    {"RealStreamConnect", "", &Live},
    {"QueryStreamMediaLinkID", "", &Link},
    {"ImageCapture", "", &Picture},
    {"AlarminStateGet", "", &Inputs},
    {"AlarmoutStateGet", "", &Outputs},
    {"HistoryStreamQueryConnect", "", &Recordings},
    {"HistoryStreamMultiTypeQueryConnect", "", &RecordingsOfTypes},
    {"HistoryStreamCreate", "", &Playback},
    {"HistoryLogQueryConnect", "", &Log},
    {"DataExistCheck", "", &Days},
    {"GetDataSize", "", &DataSize},
    {"PanelGetStatus", "", [](CSession const& t) { return List(t, &ClientAdapter_PanelGetStatus); }},
    {"DecoderGetConfig", "", &Layout},
    {"DecoderChannelGetStatus", "", [](CSession const& t) { return List(t, &ClientAdapter_DecoderChannelGetStatus); }},
    {"DecoderGetLoopEnable", "", [](CSession const& t) { return List(t, &ClientAdapter_DecoderGetLoopEnable); }},
    {"DecoderGetDisplayConfig", "",
     [](CSession const& t) { return Screen(t, &ClientAdapter_DecoderGetDisplayConfig); }},
    {"DecoderGetVideoStandard", "",
     [](CSession const& t) { return Screen(t, &ClientAdapter_DecoderGetVideoStandard); }},
};
} // namespace

std::span<tagQuestion const> Questions()
{
    return g_atQuestions;
}

char const* AnswerText(int nResult)
{
    switch (nResult)
    {
    case eResultOk:
        return "yes";
    case eResultNotSupported:
    case eResultNoChannel:
    case eResultNotFound:
        return "no";
    case eResultNoEntryPoint:
        return "missing";
    case eResultWrongLogin:
        return "forbidden";
    case eResultTimeOut:
    case eResultConnectionLost:
    case eResultUnreachable:
        return "silent";
    default:
        return "error";
    }
}
} // namespace tessaro
