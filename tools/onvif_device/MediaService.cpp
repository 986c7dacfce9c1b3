// The first media service: profiles, sources, streams.

#include "tools/onvif_device/AnalyticsService.h"
#include "tools/onvif_device/MediaEncoders.h"
#include "tools/onvif_device/MediaParts.h"
#include "tools/onvif_device/Osd.h"
#include "tools/onvif_device/RtspSide.h"

namespace onvif_device
{
namespace
{
// --- configurations --------------------------------------------------------------------------------------------------

void WriteProfile(CCall& tCall, char const* szElement, tagStreamKey const& tKey)
{
    CXml& tXml = tCall.Xml();
    tXml.In(szElement, {{"token", tKey.Of("Profile")}, {"fixed", "true"}},
            [&]
            {
                tXml.Put("tt:Name", tKey.dwStream == 0 ? "main" : "sub");
                WriteVideoSourceConfiguration(tCall, "tt:VideoSourceConfiguration", tKey.dwChannel);
                if (HasAudio(tCall, tKey.dwChannel))
                {
                    WriteAudioSourceConfiguration(tCall, "tt:AudioSourceConfiguration", tKey.dwChannel);
                }
                if (IsH264(tCall, tKey) && IsEncoding(tCall, tKey, false))
                {
                    WriteVideoEncoder(tCall, "tt:VideoEncoderConfiguration", tKey);
                }
                if (IsEncoding(tCall, tKey, true))
                {
                    WriteAudioEncoder(tCall, "tt:AudioEncoderConfiguration", tKey);
                }
                if (!IsWithout(tCall.Quirks(), "analytics"))
                {
                    WriteAnalyticsConfiguration(tCall, "tt:VideoAnalyticsConfiguration", tKey.dwChannel);
                }
                if (Moves(tCall, tKey.dwChannel))
                {
                    WritePtzConfiguration(tCall, "tt:PTZConfiguration", tKey.dwChannel);
                }
                if (tCall.Quirks().bSparse)
                {
                    return;
                }
                WriteMetadataConfiguration(tCall, "tt:MetadataConfiguration", tKey.dwChannel);
                tXml.In("tt:Extension",
                        [&]
                        {
                            WriteAudioOutputConfiguration(tCall, "tt:AudioOutputConfiguration");
                            WriteAudioDecoderConfiguration(tCall, "tt:AudioDecoderConfiguration");
                        });
            });
}

void GetProfiles(CCall& tCall)
{
    const auto tLock = tCall.Lock();
    for (tagStreamKey const& t : Streams(tCall))
    {
        WriteProfile(tCall, "trt:Profiles", t);
    }
}

void GetProfile(CCall& tCall)
{
    const auto tLock = tCall.Lock();
    WriteProfile(tCall, "trt:Profile", StreamAt(tCall, {"ProfileToken"}, "Profile", "ter:NoProfile"));
}

void GetVideoSources(CCall& tCall)
{
    const auto tLock = tCall.Lock();
    CXml& tXml = tCall.Xml();
    for (uint32_t i = 0; i < tCall.Device().Channels(); ++i)
    {
        const auto tVideo = tCall.Get<tagConfigVideoEncoder>(i, eStreamMain);
        tXml.In("trt:VideoSources", {{"token", Token("VideoSource", {i})}},
                [&]
                {
                    tXml.Put("tt:Framerate", tVideo.dwFrameRate / 1000.0);
                    tXml.In("tt:Resolution",
                            [&] { tXml.Put("tt:Width", tVideo.dwWidth).Put("tt:Height", tVideo.dwHeight); });
                });
    }
}

void GetAudioSources(CCall& tCall)
{
    const auto tLock = tCall.Lock();
    for (uint32_t i = 0; i < tCall.Device().Channels(); ++i)
    {
        if (HasAudio(tCall, i))
        {
            tCall.Xml().In("trt:AudioSources", {{"token", Token("AudioSource", {i})}},
                           [&] { tCall.Xml().Put("tt:Channels", 1); });
        }
    }
}

void GetAudioOutputs(CCall& tCall)
{
    tCall.Xml().Empty("trt:AudioOutputs", {{"token", "AudioOutput_0"}});
}

// All configurations of a channel, by a writer.
template <void (*pfnWrite)(CCall&, char const*, uint32_t)>
void GetOfChannels(CCall& tCall)
{
    const auto tLock = tCall.Lock();
    for (uint32_t i = 0; i < tCall.Device().Channels(); ++i)
    {
        pfnWrite(tCall, "trt:Configurations", i);
    }
}

void GetVideoSourceConfiguration(CCall& tCall)
{
    const auto tLock = tCall.Lock();
    WriteVideoSourceConfiguration(
        tCall, "trt:Configuration",
        tCall.Index({"ConfigurationToken"}, "VideoSourceConfig", tCall.Device().Channels(), "ter:NoConfig"));
}

void GetAudioOutputConfigurations(CCall& tCall)
{
    WriteAudioOutputConfiguration(tCall, "trt:Configurations");
}

void GetAudioDecoderConfigurations(CCall& tCall)
{
    WriteAudioDecoderConfiguration(tCall, "trt:Configurations");
}

void GetAudioDecoderConfigurationOptions(CCall& tCall)
{
    CXml& tXml = tCall.Xml();
    tXml.In("trt:Options",
            [&]
            {
                tXml.In("tt:G711DecOptions",
                        [&]
                        {
                            tXml.In("tt:Bitrate", [&] { tXml.Put("tt:Items", 64); });
                            tXml.In("tt:SampleRateRange", [&] { tXml.Put("tt:Items", 8); });
                        });
            });
}

// --- streams ---------------------------------------------------------------------------------------------------------

void WriteMediaUri(CCall& tCall, std::string const& strUri)
{
    tCall.Xml().In("trt:MediaUri",
                   [&]
                   {
                       tCall.Xml().Put("tt:Uri", strUri).Put("tt:InvalidAfterConnect", false);
                       tCall.Xml().Put("tt:InvalidAfterReboot", false).Put("tt:Timeout", "PT60S");
                   });
}

void GetStreamUri(CCall& tCall)
{
    const tagStreamKey tKey = StreamAt(tCall, {"ProfileToken"}, "Profile", "ter:NoProfile");
    const uint32_t dwProtocol = tCall.Word({"StreamSetup", "Transport", "Protocol"}, {"UDP", "TCP", "RTSP", "HTTP"});
    const uint32_t dwStream = tCall.Word({"StreamSetup", "Stream"}, {"RTP-Unicast", "RTP-Multicast"});
    if (dwStream != 0 || dwProtocol == 3)
    {
        FailValue("ter:InvalidStreamSetup", "there is unicast by RTSP alone");
    }
    WriteMediaUri(tCall, tCall.StreamAddress(tKey.dwChannel, tKey.Kind()));
}

void GetSnapshotUri(CCall& tCall)
{
    const tagStreamKey tKey = StreamAt(tCall, {"ProfileToken"}, "Profile", "ter:NoProfile");
    WriteMediaUri(tCall, tCall.Address(Token("/snapshot", {tKey.dwChannel})));
}

void SetSynchronizationPoint(CCall& tCall)
{
    const tagStreamKey tKey = StreamAt(tCall, {"ProfileToken"}, "Profile", "ter:NoProfile");
    tCall.Face().Rtsp().ForceKeyFrame(tCall.Face().Index(), tKey.dwChannel, tKey.Kind());
}

constexpr tagAction g_atActions[] = {
    {"GetServiceCapabilities", 0, "", ServeCapabilities<eService::Media>},
    {"GetProfiles", eUserViewer, "", GetProfiles},
    {"GetProfile", eUserViewer, "ProfileToken", GetProfile},
    {"GetVideoSources", eUserViewer, "", GetVideoSources},
    {"GetAudioSources", eUserViewer, "", GetAudioSources},
    {"GetAudioOutputs", eUserViewer, "", GetAudioOutputs},
    {"GetVideoSourceConfigurations", eUserViewer, "", GetOfChannels<WriteVideoSourceConfiguration>},
    {"GetVideoSourceConfiguration", eUserViewer, "ConfigurationToken", GetVideoSourceConfiguration},
    {"GetAudioSourceConfigurations", eUserViewer, "", GetOfChannels<WriteAudioSourceConfiguration>},
    {"GetAudioOutputConfigurations", eUserViewer, "", GetAudioOutputConfigurations},
    {"GetAudioDecoderConfigurations", eUserViewer, "", GetAudioDecoderConfigurations},
    {"GetAudioDecoderConfigurationOptions", eUserViewer, "ConfigurationToken? ProfileToken?",
     GetAudioDecoderConfigurationOptions},
    {"GetMetadataConfigurations", eUserViewer, "", GetOfChannels<WriteMetadataConfiguration>},
    {"GetStreamUri", eUserViewer, "StreamSetup{Stream Transport{Protocol Tunnel{...}?}} ProfileToken", GetStreamUri},
    {"GetSnapshotUri", eUserViewer, "ProfileToken", GetSnapshotUri},
    {"SetSynchronizationPoint", eUserViewer, "ProfileToken", SetSynchronizationPoint},
    {"GetOSDs", eUserViewer, "ConfigurationToken?", GetOSDs},
    {"GetOSD", eUserViewer, "OSDToken", GetOSD},
    {"GetOSDOptions", eUserViewer, "ConfigurationToken", GetOSDOptions},
    {"SetOSD", eUserAdministrator, ONVIF_OSD, SetOSD},
    {"CreateOSD", eUserAdministrator, ONVIF_OSD, CreateOSD},
    {"DeleteOSD", eUserAdministrator, "OSDToken", DeleteOSD},
};
} // namespace

std::span<tagAction const> MediaActions()
{
    return g_atActions;
}
} // namespace onvif_device
