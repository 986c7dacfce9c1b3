// The first media service: H.264 alone.

#include "tools/onvif_device/MediaParts.h"
#include "tools/onvif_device/Osd.h"
#include "tools/onvif_device/RtspSide.h"

namespace onvif_device
{
namespace
{
using device::Text;

constexpr char const* g_aszProfiles[] = {"Main", "Baseline", "High"};

// --- configurations --------------------------------------------------------------------------------------------------

void WriteVideoEncoder(CCall& tCall, char const* szElement, tagStreamKey const& tKey)
{
    CXml& tXml = tCall.Xml();
    const auto tVideo = tCall.Get<tagConfigVideoEncoder>(tKey.dwChannel, tKey.Kind());
    tXml.In(szElement, {{"token", tKey.Of("VideoEncoder")}},
            [&]
            {
                tXml.Put("tt:Name", tKey.dwStream == 0 ? "main" : "sub").Put("tt:UseCount", 1);
                tXml.Put("tt:Encoding", "H264");
                tXml.In("tt:Resolution",
                        [&] { tXml.Put("tt:Width", tVideo.dwWidth).Put("tt:Height", tVideo.dwHeight); });
                tXml.Put("tt:Quality", double(tVideo.dwQuality));
                tXml.In("tt:RateControl",
                        [&]
                        {
                            tXml.Put("tt:FrameRateLimit", tVideo.dwFrameRate / 1000).Put("tt:EncodingInterval", 1);
                            tXml.Put("tt:BitrateLimit", tVideo.dwBitRate);
                        });
                tXml.In("tt:H264",
                        [&]
                        {
                            tXml.Put("tt:GovLength", tVideo.dwKeyFrameInterval);
                            tXml.Put("tt:H264Profile", g_aszProfiles[tVideo.dwProfile]);
                        });
                WriteMulticast(tXml);
                tXml.Put("tt:SessionTimeout", "PT60S");
            });
}

void WriteAudioEncoder(CCall& tCall, char const* szElement, tagStreamKey const& tKey)
{
    CXml& tXml = tCall.Xml();
    const auto tAudio = tCall.Get<tagConfigAudioEncoder>(tKey.dwChannel, tKey.Kind());
    tXml.In(szElement, {{"token", tKey.Of("AudioEncoder")}},
            [&]
            {
                tXml.Put("tt:Name", tKey.Of("audio")).Put("tt:UseCount", 1).Put("tt:Encoding", "G711");
                tXml.Put("tt:Bitrate", tAudio.dwBitRate).Put("tt:SampleRate", tAudio.dwSampleRate / 1000);
                WriteMulticast(tXml);
                tXml.Put("tt:SessionTimeout", "PT60S");
            });
}

bool IsH264(CCall& tCall, tagStreamKey const& tKey)
{
    return tCall.Get<tagConfigVideoEncoder>(tKey.dwChannel, tKey.Kind()).dwCodec == eCodecH264;
}

bool IsSounding(CCall& tCall, tagStreamKey const& tKey)
{
    return tCall.Get<tagConfigAudioEncoder>(tKey.dwChannel, tKey.Kind()).bEnabled != 0;
}

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
                if (IsH264(tCall, tKey))
                {
                    WriteVideoEncoder(tCall, "tt:VideoEncoderConfiguration", tKey);
                }
                if (IsSounding(tCall, tKey))
                {
                    WriteAudioEncoder(tCall, "tt:AudioEncoderConfiguration", tKey);
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

void GetVideoEncoderConfigurations(CCall& tCall)
{
    const auto tLock = tCall.Lock();
    for (tagStreamKey const& t : Streams(tCall))
    {
        if (IsH264(tCall, t))
        {
            WriteVideoEncoder(tCall, "trt:Configurations", t);
        }
    }
}

void GetVideoEncoderConfiguration(CCall& tCall)
{
    const auto tLock = tCall.Lock();
    WriteVideoEncoder(tCall, "trt:Configuration", StreamAt(tCall, {"ConfigurationToken"}, "VideoEncoder"));
}

void SetVideoEncoderConfiguration(CCall& tCall)
{
    const auto tLock = tCall.Lock();
    uint32_t dwChannel = 0;
    uint32_t dwStream = 0;
    if (!ParseToken(tCall.At({"Configuration"}).attribute("token").value(), "VideoEncoder", {&dwChannel, &dwStream}) ||
        dwChannel >= tCall.Device().Channels() || dwStream > 1)
    {
        FailValue("ter:NoConfig", "there is no such configuration");
    }
    const tagStreamKey tKey{dwChannel, dwStream};
    auto tVideo = tCall.Get<tagConfigVideoEncoder>(tKey.dwChannel, tKey.Kind());
    if (tCall.Text({"Configuration", "Encoding"}) != "H264")
    {
        FailValue("ter:ConfigModify", "only H264 can be set here");
    }
    tVideo.dwCodec = eCodecH264;
    ReadVideoEncoder(tCall, tVideo);
    if (tCall.Has({"Configuration", "H264"}))
    {
        tVideo.dwKeyFrameInterval =
            static_cast<uint32_t>(tCall.Integer({"Configuration", "H264", "GovLength"}, 1, 300));
        tVideo.dwProfile = tCall.Word({"Configuration", "H264", "H264Profile"}, {"Main", "Baseline", "High"});
    }
    tCall.Set(eConfigVideoEncoder, tVideo, tKey.dwChannel, tKey.Kind());
}

void GetVideoEncoderConfigurationOptions(CCall& tCall)
{
    CXml& tXml = tCall.Xml();
    tXml.In("trt:Options",
            [&]
            {
                tXml.Range("tt:QualityRange", 0, 100);
                tXml.In("tt:H264",
                        [&]
                        {
                            for (auto const& [dwWidth, dwHeight] : SizesOf(eCodecH264))
                            {
                                tXml.In("tt:ResolutionsAvailable",
                                        [&] { tXml.Put("tt:Width", dwWidth).Put("tt:Height", dwHeight); });
                            }
                            tXml.Range("tt:GovLengthRange", 1, 300).Range("tt:FrameRateRange", 1, 30);
                            tXml.Range("tt:EncodingIntervalRange", 1, 1);
                            tXml.Put("tt:H264ProfilesSupported", "Baseline").Put("tt:H264ProfilesSupported", "Main");
                            tXml.Put("tt:H264ProfilesSupported", "High");
                        });
            });
}

void GetAudioEncoderConfigurations(CCall& tCall)
{
    const auto tLock = tCall.Lock();
    for (tagStreamKey const& t : Streams(tCall))
    {
        if (HasAudio(tCall, t.dwChannel))
        {
            WriteAudioEncoder(tCall, "trt:Configurations", t);
        }
    }
}

void GetAudioEncoderConfiguration(CCall& tCall)
{
    const auto tLock = tCall.Lock();
    WriteAudioEncoder(tCall, "trt:Configuration", StreamAt(tCall, {"ConfigurationToken"}, "AudioEncoder"));
}

void SetAudioEncoderConfiguration(CCall& tCall)
{
    const auto tLock = tCall.Lock();
    tagStreamKey tKey;
    if (!ParseToken(tCall.At({"Configuration"}).attribute("token").value(), "AudioEncoder",
                    {&tKey.dwChannel, &tKey.dwStream}) ||
        tKey.dwChannel >= tCall.Device().Channels() || tKey.dwStream > 1)
    {
        FailValue("ter:NoConfig", "there is no such configuration");
    }
    auto tAudio = tCall.Get<tagConfigAudioEncoder>(tKey.dwChannel, tKey.Kind());
    if (tCall.Text({"Configuration", "Encoding"}) != "G711")
    {
        FailValue("ter:ConfigModify", "there is G711 alone");
    }
    ReadAudioEncoder(tCall, tAudio);
    tCall.Set(eConfigAudioEncoder, tAudio, tKey.dwChannel, tKey.Kind());
}

void GetAudioEncoderConfigurationOptions(CCall& tCall)
{
    CXml& tXml = tCall.Xml();
    tXml.In("trt:Options",
            [&]
            {
                tXml.In("tt:Options",
                        [&]
                        {
                            tXml.Put("tt:Encoding", "G711");
                            tXml.In("tt:BitrateList", [&] { tXml.Put("tt:Items", 64); });
                            tXml.In("tt:SampleRateList", [&] { tXml.Put("tt:Items", 8); });
                        });
            });
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

void GetGuaranteed(CCall& tCall)
{
    tCall.Xml().Put("trt:TotalNumber", 2).Put("trt:H264", 2);
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
    {"GetVideoEncoderConfigurations", eUserViewer, "", GetVideoEncoderConfigurations},
    {"GetVideoEncoderConfiguration", eUserViewer, "ConfigurationToken", GetVideoEncoderConfiguration},
    {"SetVideoEncoderConfiguration", eUserAdministrator,
     "Configuration[token]{Name UseCount Encoding Resolution{Width Height} Quality "
     "RateControl{FrameRateLimit EncodingInterval BitrateLimit}? MPEG4{GovLength Mpeg4Profile}? "
     "H264{GovLength H264Profile}? " ONVIF_MULTICAST " SessionTimeout ...} ForcePersistence",
     SetVideoEncoderConfiguration},
    {"GetVideoEncoderConfigurationOptions", eUserViewer, "ConfigurationToken? ProfileToken?",
     GetVideoEncoderConfigurationOptions},
    {"GetGuaranteedNumberOfVideoEncoderInstances", eUserViewer, "ConfigurationToken", GetGuaranteed},
    {"GetAudioSourceConfigurations", eUserViewer, "", GetOfChannels<WriteAudioSourceConfiguration>},
    {"GetAudioEncoderConfigurations", eUserViewer, "", GetAudioEncoderConfigurations},
    {"GetAudioEncoderConfiguration", eUserViewer, "ConfigurationToken", GetAudioEncoderConfiguration},
    {"SetAudioEncoderConfiguration", eUserAdministrator,
     "Configuration[token]{Name UseCount Encoding Bitrate SampleRate " ONVIF_MULTICAST
     " SessionTimeout ...} ForcePersistence",
     SetAudioEncoderConfiguration},
    {"GetAudioEncoderConfigurationOptions", eUserViewer, "ConfigurationToken? ProfileToken?",
     GetAudioEncoderConfigurationOptions},
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
