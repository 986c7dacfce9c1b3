// What the makers of frames, files and pictures ask a device for.

#include "plugins/device/Device.h"
#include "plugins/device/TimeZone.h"

namespace device
{
int32_t CDevice::UtcOffsetMinutes(int64_t llTimeUs)
{
    const CLock tLock(*this);
    return device::UtcOffsetMinutes(m_tConfiguration.Get<tagConfigClock>().szTimeZone, llTimeUs);
}

std::string CDevice::Name()
{
    const CLock tLock(*this);
    return m_tConfiguration.Get<tagConfigIdentity>().szName;
}

int CDevice::StreamState(uint32_t dwChannel, uint32_t dwStreamKind, tagStreamState& tState)
{
    const CLock tLock(*this);
    if (dwChannel >= Channels())
    {
        return eResultNoChannel;
    }
    if (StreamIndex(dwStreamKind) < 0)
    {
        return eResultBadArgument;
    }
    tState = {};
    tState.tVideo = m_tConfiguration.Get<tagConfigVideoEncoder>(dwChannel, dwStreamKind);
    tState.tAudio = m_tConfiguration.Get<tagConfigAudioEncoder>(dwChannel, dwStreamKind);
    tState.bUp = m_bUp && tState.tVideo.bEnabled != 0;
    tState.dwRun = m_dwRun;
    tState.bVideoLoss = m_tAlarms.IsOn(eEventVideoLoss, dwChannel);
    tState.bMotion = m_tAlarms.IsOn(eEventMotion, dwChannel);
    m_tFaults.Describe(dwChannel, tState);
    return eResultOk;
}

int CDevice::PictureState(uint32_t dwChannel, tagPictureState& tState)
{
    const CLock tLock(*this);
    if (dwChannel >= Channels())
    {
        return eResultNoChannel;
    }
    const tagPTZPosition tPosition = m_tPTZ.Position(dwChannel);
    tState = {m_tConfiguration.Get<tagCameraPicture>(dwChannel),
              m_tConfiguration.Get<tagConfigOverlay>(dwChannel),
              m_tConfiguration.Get<tagConfigPrivacy>(dwChannel),
              m_tCamera.DayNight(dwChannel).bNight != 0,
              tPosition.nPan,
              tPosition.nTilt,
              tPosition.nZoom};
    return eResultOk;
}

std::vector<tagRecording> CDevice::Recordings(tagRecordingQuestion const& tQuestion)
{
    const CLock tLock(*this);
    return m_tStorage.Find(tQuestion);
}

SharedBytes CDevice::File(uint32_t dwKind, std::string const& strName)
{
    const CLock tLock(*this);
    return m_tFiles.Find(dwKind, strName);
}

void CDevice::KeepPicture(uint32_t dwChannel, std::string const& strName, SharedBytes pData)
{
    const CLock tLock(*this);
    m_tFiles.KeepPicture(dwChannel, strName, std::move(pData));
}

tagWallView CDevice::WallView()
{
    const CLock tLock(*this);
    return m_tWall.View();
}
} // namespace device
