#include "tools/onvif_device/MediaParts.h"
#include "tools/onvif_device/PtzParts.h"

#include "plugins/device/ClipSizes.h"

#include <cmath>

namespace onvif_device
{
std::vector<tagStreamKey> Streams(CCall& tCall)
{
    std::vector<tagStreamKey> atKeys;
    for (uint32_t i = 0; i < tCall.Device().Channels(); ++i)
    {
        atKeys.push_back({i, 0});
        atKeys.push_back({i, 1});
    }
    return atKeys;
}

tagStreamKey StreamAt(CCall& tCall, CCall::Path astrPath, std::string_view strKind, std::string const& strDetail)
{
    tagStreamKey tKey;
    if (!ParseToken(tCall.Text(astrPath), strKind, {&tKey.dwChannel, &tKey.dwStream}) ||
        tKey.dwChannel >= tCall.Device().Channels() || tKey.dwStream > 1)
    {
        FailValue(strDetail, "there is nothing of the token " + tCall.Text(astrPath));
    }
    return tKey;
}

bool Moves(CCall& tCall, uint32_t dwChannel)
{
    return tCall.Device().Blueprint().atChannels[dwChannel].bPTZ && !IsWithout(tCall.Quirks(), "ptz");
}

bool HasAudio(CCall& tCall, uint32_t dwChannel)
{
    return tCall.Device().Blueprint().atChannels[dwChannel].bAudio;
}

bool IsEncoding(CCall& tCall, tagStreamKey const& tKey, bool bAudio)
{
    return bAudio ? tCall.Get<tagConfigAudioEncoder>(tKey.dwChannel, tKey.Kind()).bEnabled != 0
                  : tCall.Get<tagConfigVideoEncoder>(tKey.dwChannel, tKey.Kind()).bEnabled != 0;
}

bool SetEncoding(CCall& tCall, tagStreamKey const& tKey, std::string_view strKind, bool bOn)
{
    if (strKind == "AudioEncoder")
    {
        auto t = tCall.Get<tagConfigAudioEncoder>(tKey.dwChannel, tKey.Kind());
        t.bEnabled = bOn ? 1 : 0;
        tCall.Set(eConfigAudioEncoder, t, tKey.dwChannel, tKey.Kind());
        return true;
    }
    if (strKind == "VideoEncoder")
    {
        auto t = tCall.Get<tagConfigVideoEncoder>(tKey.dwChannel, tKey.Kind());
        t.bEnabled = bOn ? 1 : 0;
        tCall.Set(eConfigVideoEncoder, t, tKey.dwChannel, tKey.Kind());
        return true;
    }
    return false;
}

void WriteVideoSourceConfiguration(CCall& tCall, char const* szElement, uint32_t dwChannel)
{
    const auto tVideo = tCall.Get<tagConfigVideoEncoder>(dwChannel, eStreamMain);
    tCall.Xml().In(szElement, {{"token", Token("VideoSourceConfig", {dwChannel})}},
                   [&]
                   {
                       tCall.Xml().Put("tt:Name", "Sensor " + std::to_string(dwChannel)).Put("tt:UseCount", 2);
                       tCall.Xml().Put("tt:SourceToken", Token("VideoSource", {dwChannel}));
                       tCall.Xml().Empty("tt:Bounds", {{"x", "0"},
                                                       {"y", "0"},
                                                       {"width", std::to_string(tVideo.dwWidth)},
                                                       {"height", std::to_string(tVideo.dwHeight)}});
                   });
}

void WriteAudioSourceConfiguration(CCall& tCall, char const* szElement, uint32_t dwChannel)
{
    tCall.Xml().In(szElement, {{"token", Token("AudioSourceConfig", {dwChannel})}},
                   [&]
                   {
                       tCall.Xml().Put("tt:Name", "Microphone " + std::to_string(dwChannel)).Put("tt:UseCount", 2);
                       tCall.Xml().Put("tt:SourceToken", Token("AudioSource", {dwChannel}));
                   });
}

void WriteMulticast(CXml& tXml)
{
    tXml.In("tt:Multicast",
            [&]
            {
                tXml.In("tt:Address", [&] { tXml.Put("tt:Type", "IPv4").Put("tt:IPv4Address", "0.0.0.0"); });
                tXml.Put("tt:Port", 0).Put("tt:TTL", 1).Put("tt:AutoStart", false);
            });
}

void WriteMetadataConfiguration(CCall& tCall, char const* szElement, uint32_t dwChannel)
{
    tCall.Xml().In(szElement, {{"token", Token("Metadata", {dwChannel})}},
                   [&]
                   {
                       tCall.Xml().Put("tt:Name", "Metadata " + std::to_string(dwChannel)).Put("tt:UseCount", 2);
                       tCall.Xml().Put("tt:Analytics", false);
                       WriteMulticast(tCall.Xml());
                       tCall.Xml().Put("tt:SessionTimeout", "PT60S");
                   });
}

void WriteAudioOutputConfiguration(CCall& tCall, char const* szElement)
{
    tCall.Xml().In(szElement, {{"token", "AudioOutputConfig_0"}},
                   [&]
                   {
                       tCall.Xml().Put("tt:Name", "Loudspeaker").Put("tt:UseCount", 1);
                       tCall.Xml().Put("tt:OutputToken", "AudioOutput_0");
                       tCall.Xml().Put("tt:SendPrimacy", "www.onvif.org/ver20/HalfDuplex/Server");
                       tCall.Xml().Put("tt:OutputLevel", 50);
                   });
}

void WriteAudioDecoderConfiguration(CCall& tCall, char const* szElement)
{
    tCall.Xml().In(szElement, {{"token", "AudioDecoder_0"}},
                   [&] { tCall.Xml().Put("tt:Name", "Decoder").Put("tt:UseCount", 1); });
}

void WritePtzConfiguration(CCall& tCall, char const* szElement, uint32_t dwChannel)
{
    CXml& tXml = tCall.Xml();
    const auto fnLimits = [&](char const* szName, char const* szSpace, bool bTilt)
    {
        tXml.In(szName,
                [&]
                {
                    tXml.In("tt:Range",
                            [&]
                            {
                                tXml.Put("tt:URI", GenericSpace(szSpace));
                                tXml.Range("tt:XRange", bTilt ? -1.0 : 0.0, 1.0);
                                if (bTilt)
                                {
                                    tXml.Range("tt:YRange", -1.0, 1.0);
                                }
                            });
                });
    };
    tXml.In(
        szElement, {{"token", Token("PTZConfig", {dwChannel})}},
        [&]
        {
            tXml.Put("tt:Name", "Head " + std::to_string(dwChannel)).Put("tt:UseCount", 2);
            tXml.Put("tt:NodeToken", Token("PTZNode", {dwChannel}));
            tXml.Put("tt:DefaultAbsolutePantTiltPositionSpace", GenericSpace("PanTiltSpaces/PositionGenericSpace"));
            tXml.Put("tt:DefaultAbsoluteZoomPositionSpace", GenericSpace("ZoomSpaces/PositionGenericSpace"));
            tXml.Put("tt:DefaultRelativePanTiltTranslationSpace",
                     GenericSpace("PanTiltSpaces/TranslationGenericSpace"));
            tXml.Put("tt:DefaultRelativeZoomTranslationSpace", GenericSpace("ZoomSpaces/TranslationGenericSpace"));
            tXml.Put("tt:DefaultContinuousPanTiltVelocitySpace", GenericSpace("PanTiltSpaces/VelocityGenericSpace"));
            tXml.Put("tt:DefaultContinuousZoomVelocitySpace", GenericSpace("ZoomSpaces/VelocityGenericSpace"));
            tXml.In(
                "tt:DefaultPTZSpeed",
                [&]
                {
                    tXml.Empty(
                        "tt:PanTilt",
                        {{"x", "1.0"}, {"y", "1.0"}, {"space", GenericSpace("PanTiltSpaces/GenericSpeedSpace")}});
                    tXml.Empty("tt:Zoom", {{"x", "1.0"}, {"space", GenericSpace("ZoomSpaces/ZoomGenericSpeedSpace")}});
                });
            tXml.Put("tt:DefaultPTZTimeout", "PT5S");
            fnLimits("tt:PanTiltLimits", "PanTiltSpaces/PositionGenericSpace", true);
            fnLimits("tt:ZoomLimits", "ZoomSpaces/PositionGenericSpace", false);
        });
}

void ReadVideoEncoder(CCall& tCall, tagConfigVideoEncoder& tVideo)
{
    tVideo.dwWidth = static_cast<uint32_t>(tCall.Integer({"Configuration", "Resolution", "Width"}, 1, 65535));
    tVideo.dwHeight = static_cast<uint32_t>(tCall.Integer({"Configuration", "Resolution", "Height"}, 1, 65535));
    tVideo.dwQuality = static_cast<uint32_t>(std::lround(tCall.Number({"Configuration", "Quality"})));
    if (tCall.Has({"Configuration", "RateControl"}))
    {
        const double fRate = tCall.Number({"Configuration", "RateControl", "FrameRateLimit"});
        tVideo.dwFrameRate = static_cast<uint32_t>(std::lround(std::clamp(fRate, 0.0, 1000.0) * 1000));
        tVideo.dwBitRate =
            static_cast<uint32_t>(tCall.Integer({"Configuration", "RateControl", "BitrateLimit"}, 0, 1000000));
    }
}

void ReadAudioEncoder(CCall& tCall, tagConfigAudioEncoder& tAudio)
{
    tAudio.dwBitRate = static_cast<uint32_t>(tCall.Integer({"Configuration", "Bitrate"}, 1, 1000));
    tAudio.dwSampleRate = static_cast<uint32_t>(tCall.Integer({"Configuration", "SampleRate"}, 1, 192));
    tAudio.dwSampleRate *= 1000;
}

std::vector<std::pair<uint32_t, uint32_t>> SizesOf(uint32_t dwCodec)
{
    std::vector<std::pair<uint32_t, uint32_t>> atSizes;
    for (device::tagClipSize const& t : device::g_atClipSizes)
    {
        if (t.dwCodec == dwCodec)
        {
            atSizes.emplace_back(t.dwWidth, t.dwHeight);
        }
    }
    return atSizes;
}
} // namespace onvif_device
