// The first media service: how streams are coded.

#include "tools/onvif_device/MediaEncoders.h"

namespace onvif_device
{
constexpr char const* g_aszProfiles[] = {"Main", "Baseline", "High"};

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

namespace
{
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

void GetGuaranteed(CCall& tCall)
{
    tCall.Xml().Put("trt:TotalNumber", 2).Put("trt:H264", 2);
}

// A profile has the encoders of its own stream, or not.
template <bool bAudio>
void GetCompatibleEncoders(CCall& tCall)
{
    const auto tLock = tCall.Lock();
    const tagStreamKey tKey = StreamAt(tCall, {"ProfileToken"}, "Profile", "ter:NoProfile");
    if (bAudio && HasAudio(tCall, tKey.dwChannel))
    {
        WriteAudioEncoder(tCall, "trt:Configurations", tKey);
    }
    if (!bAudio && IsH264(tCall, tKey))
    {
        WriteVideoEncoder(tCall, "trt:Configurations", tKey);
    }
}

template <bool bAudio>
void AddEncoder(CCall& tCall)
{
    constexpr char const* szKind = bAudio ? "AudioEncoder" : "VideoEncoder";
    const auto tLock = tCall.Lock();
    const tagStreamKey tKey = StreamAt(tCall, {"ProfileToken"}, "Profile", "ter:NoProfile");
    if (tCall.Text({"ConfigurationToken"}) != tKey.Of(szKind))
    {
        FailValue("ter:NoConfig", "the profile can't have this configuration");
    }
    SetEncoding(tCall, tKey, szKind, true);
}

template <bool bAudio>
void RemoveEncoder(CCall& tCall)
{
    const auto tLock = tCall.Lock();
    SetEncoding(tCall, StreamAt(tCall, {"ProfileToken"}, "Profile", "ter:NoProfile"),
                bAudio ? "AudioEncoder" : "VideoEncoder", false);
}

constexpr tagAction g_atActions[] = {
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
    {"GetAudioEncoderConfigurations", eUserViewer, "", GetAudioEncoderConfigurations},
    {"GetAudioEncoderConfiguration", eUserViewer, "ConfigurationToken", GetAudioEncoderConfiguration},
    {"SetAudioEncoderConfiguration", eUserAdministrator,
     "Configuration[token]{Name UseCount Encoding Bitrate SampleRate " ONVIF_MULTICAST
     " SessionTimeout ...} ForcePersistence",
     SetAudioEncoderConfiguration},
    {"GetAudioEncoderConfigurationOptions", eUserViewer, "ConfigurationToken? ProfileToken?",
     GetAudioEncoderConfigurationOptions},
    {"GetCompatibleVideoEncoderConfigurations", eUserViewer, "ProfileToken", GetCompatibleEncoders<false>},
    {"GetCompatibleAudioEncoderConfigurations", eUserViewer, "ProfileToken", GetCompatibleEncoders<true>},
    {"AddVideoEncoderConfiguration", eUserAdministrator, "ProfileToken ConfigurationToken", AddEncoder<false>},
    {"AddAudioEncoderConfiguration", eUserAdministrator, "ProfileToken ConfigurationToken", AddEncoder<true>},
    {"RemoveVideoEncoderConfiguration", eUserAdministrator, "ProfileToken", RemoveEncoder<false>},
    {"RemoveAudioEncoderConfiguration", eUserAdministrator, "ProfileToken", RemoveEncoder<true>},
};
} // namespace

std::span<tagAction const> MediaEncoderActions()
{
    return g_atActions;
}
} // namespace onvif_device
