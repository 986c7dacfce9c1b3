// The second media service: H.264 and H.265.

#include "tools/onvif_device/AnalyticsService.h"
#include "tools/onvif_device/Masks.h"
#include "tools/onvif_device/MediaParts.h"
#include "tools/onvif_device/Osd.h"
#include "tools/onvif_device/RtspSide.h"

namespace onvif_device
{
namespace
{
using device::Text;

constexpr char const* g_aszProfiles[] = {"Main", "Baseline", "High"};

char const* CodecName(uint32_t dwCodec)
{
    return dwCodec == eCodecH265 ? "H265" : "H264";
}

// --- configurations --------------------------------------------------------------------------------------------------

void WriteVideoEncoder(CCall& tCall, char const* szElement, tagStreamKey const& tKey)
{
    CXml& tXml = tCall.Xml();
    const auto t = tCall.Get<tagConfigVideoEncoder>(tKey.dwChannel, tKey.Kind());
    tXml.In(szElement,
            {{"token", tKey.Of("VideoEncoder")},
             {"GovLength", std::to_string(t.dwKeyFrameInterval)},
             {"Profile", g_aszProfiles[t.dwProfile]}},
            [&]
            {
                tXml.Put("tt:Name", tKey.dwStream == 0 ? "main" : "sub").Put("tt:UseCount", 1);
                tXml.Put("tt:Encoding", CodecName(t.dwCodec));
                tXml.In("tt:Resolution", [&] { tXml.Put("tt:Width", t.dwWidth).Put("tt:Height", t.dwHeight); });
                tXml.In("tt:RateControl", {{"ConstantBitRate", t.dwBitRateMode == eBitRateConstant ? "true" : "false"}},
                        [&]
                        {
                            tXml.Put("tt:FrameRateLimit", t.dwFrameRate / 1000.0);
                            tXml.Put("tt:BitrateLimit", t.dwBitRate);
                        });
                if (!tCall.Quirks().bSparse)
                {
                    WriteMulticast(tXml);
                }
                tXml.Put("tt:Quality", double(t.dwQuality));
            });
}

void WriteAudioEncoder(CCall& tCall, char const* szElement, tagStreamKey const& tKey)
{
    CXml& tXml = tCall.Xml();
    const auto t = tCall.Get<tagConfigAudioEncoder>(tKey.dwChannel, tKey.Kind());
    tXml.In(szElement, {{"token", tKey.Of("AudioEncoder")}},
            [&]
            {
                tXml.Put("tt:Name", tKey.Of("audio")).Put("tt:UseCount", 1);
                tXml.Put("tt:Encoding", t.dwCodec == eCodecG711U ? "PCMU" : "PCMA");
                tXml.Put("tt:Bitrate", t.dwBitRate).Put("tt:SampleRate", t.dwSampleRate / 1000);
            });
}

// What a profile consists of, in the order of the schema.
struct tagPart
{
    char const* szName;
    bool (*pfnExists)(CCall&, tagStreamKey const&); // the configuration itself
    bool (*pfnHas)(CCall&, tagStreamKey const&);    // the profile has it
    void (*pfnWrite)(CCall&, char const* szElement, tagStreamKey const&);
};

template <void (*pfnWrite)(CCall&, char const*, uint32_t)>
void OfChannel(CCall& tCall, char const* szElement, tagStreamKey const& tKey)
{
    pfnWrite(tCall, szElement, tKey.dwChannel);
}

template <void (*pfnWrite)(CCall&, char const*)>
void OfDevice(CCall& tCall, char const* szElement, tagStreamKey const&)
{
    pfnWrite(tCall, szElement);
}

bool Always(CCall&, tagStreamKey const&)
{
    return true;
}

bool Sounds(CCall& tCall, tagStreamKey const& t)
{
    return HasAudio(tCall, t.dwChannel);
}

template <bool bAudio>
bool Encodes(CCall& tCall, tagStreamKey const& t)
{
    return IsEncoding(tCall, t, bAudio);
}

bool Turns(CCall& tCall, tagStreamKey const& t)
{
    return Moves(tCall, t.dwChannel);
}

bool Detects(CCall& tCall, tagStreamKey const&)
{
    return !IsWithout(tCall.Quirks(), "analytics");
}

constexpr tagPart g_atParts[] = {
    {"VideoSource", Always, Always, OfChannel<WriteVideoSourceConfiguration>},
    {"AudioSource", Sounds, Sounds, OfChannel<WriteAudioSourceConfiguration>},
    {"VideoEncoder", Always, Encodes<false>, WriteVideoEncoder},
    {"AudioEncoder", Sounds, Encodes<true>, WriteAudioEncoder},
    {"Analytics", Detects, Detects, OfChannel<WriteAnalyticsConfiguration>},
    {"PTZ", Turns, Turns, OfChannel<WritePtzConfiguration>},
    {"Metadata", Always, Always, OfChannel<WriteMetadataConfiguration>},
    {"AudioOutput", Always, Always, OfDevice<WriteAudioOutputConfiguration>},
    {"AudioDecoder", Always, Always, OfDevice<WriteAudioDecoderConfiguration>},
};

bool IsTypeAsked(CCall& tCall, std::string_view strType)
{
    for (const pugi::xml_node t : tCall.Request().children())
    {
        if (LocalName(t) == "Type" && (TextOf(t) == "All" || TextOf(t) == strType))
        {
            return true;
        }
    }
    return false;
}

void WriteProfile(CCall& tCall, tagStreamKey const& tKey)
{
    CXml& tXml = tCall.Xml();
    tXml.In("tr2:Profiles", {{"token", tKey.Of("Profile")}, {"fixed", "true"}},
            [&]
            {
                tXml.Put("tr2:Name", tKey.dwStream == 0 ? "main" : "sub");
                if (!tCall.Has({"Type"}))
                {
                    return;
                }
                tXml.In("tr2:Configurations",
                        [&]
                        {
                            for (tagPart const& t : g_atParts)
                            {
                                if (IsTypeAsked(tCall, t.szName) && t.pfnHas(tCall, tKey))
                                {
                                    t.pfnWrite(tCall, (std::string("tr2:") + t.szName).c_str(), tKey);
                                }
                            }
                        });
            });
}

void GetProfiles(CCall& tCall)
{
    const auto tLock = tCall.Lock();
    if (tCall.Has({"Token"}))
    {
        WriteProfile(tCall, StreamAt(tCall, {"Token"}, "Profile", "ter:NoProfile"));
        return;
    }
    for (tagStreamKey const& t : Streams(tCall))
    {
        WriteProfile(tCall, t);
    }
}

// Configurations of one kind: all, that of a token, or those of a profile.
template <std::size_t nPart>
void GetConfigurations(CCall& tCall)
{
    const auto tLock = tCall.Lock();
    tagPart const& tPart = g_atParts[nPart];
    const bool bStreams = std::string_view(tPart.szName).ends_with("Encoder");
    const bool bDevice = std::string_view(tPart.szName).starts_with("AudioOutput") ||
                         std::string_view(tPart.szName).starts_with("AudioDecoder");
    const bool bOne = tCall.Has({"ProfileToken"});
    const tagStreamKey tOne = bOne ? StreamAt(tCall, {"ProfileToken"}, "Profile", "ter:NoProfile") : tagStreamKey{};
    const std::string strToken = tCall.Text({"ConfigurationToken"});
    bool bFound = strToken.empty();
    for (tagStreamKey const& t : Streams(tCall))
    {
        const bool bOften =
            (t.dwStream != 0 && !bStreams && !bOne) || (bDevice && (t.dwChannel != 0 || t.dwStream != 0));
        if (bOften || !tPart.pfnExists(tCall, t) ||
            (bOne && (t.dwChannel != tOne.dwChannel || t.dwStream != tOne.dwStream)))
        {
            continue;
        }
        const std::string strKind = std::string(tPart.szName) + (bStreams ? "" : "Config");
        const std::string strThis = bDevice ? strToken : bStreams ? t.Of(tPart.szName) : Token(strKind, {t.dwChannel});
        if (strToken.empty() || strToken == strThis)
        {
            bFound = true;
            tPart.pfnWrite(tCall, "tr2:Configurations", t);
        }
    }
    if (!bFound)
    {
        FailValue("ter:NoConfig", "there is no configuration " + strToken);
    }
}

tagStreamKey ConfigurationAt(CCall& tCall, char const* szKind)
{
    tagStreamKey t;
    if (!ParseToken(tCall.At({"Configuration"}).attribute("token").value(), szKind, {&t.dwChannel, &t.dwStream}) ||
        t.dwChannel >= tCall.Device().Channels() || t.dwStream > 1)
    {
        FailValue("ter:NoConfig", "there is no such configuration");
    }
    return t;
}

void SetVideoEncoderConfiguration(CCall& tCall)
{
    const auto tLock = tCall.Lock();
    const tagStreamKey tKey = ConfigurationAt(tCall, "VideoEncoder");
    auto t = tCall.Get<tagConfigVideoEncoder>(tKey.dwChannel, tKey.Kind());
    t.dwCodec = tCall.Word({"Configuration", "Encoding"}, {"H264", "H265"}) ? eCodecH265 : eCodecH264;
    ReadVideoEncoder(tCall, t);
    const pugi::xml_node tConfiguration = tCall.At({"Configuration"});
    int64_t llInterval = t.dwKeyFrameInterval;
    if (const pugi::xml_attribute tGov = tConfiguration.attribute("GovLength");
        tGov && (!ParseNumber(tGov.value(), llInterval) || llInterval < 1 || llInterval > 300))
    {
        FailValue("ter:ConfigModify", "GovLength is out of its range");
    }
    t.dwKeyFrameInterval = static_cast<uint32_t>(llInterval);
    for (uint32_t i = 0; i < std::size(g_aszProfiles); ++i)
    {
        t.dwProfile =
            std::string_view(tConfiguration.attribute("Profile").value()) == g_aszProfiles[i] ? i : t.dwProfile;
    }
    if (tCall.Has({"Configuration", "RateControl"}))
    {
        bool bConstant = t.dwBitRateMode == eBitRateConstant;
        ParseBoolean(tCall.At({"Configuration", "RateControl"}).attribute("ConstantBitRate").value(), bConstant);
        t.dwBitRateMode = bConstant ? eBitRateConstant : eBitRateVariable;
    }
    tCall.Set(eConfigVideoEncoder, t, tKey.dwChannel, tKey.Kind());
}

void GetVideoEncoderConfigurationOptions(CCall& tCall)
{
    CXml& tXml = tCall.Xml();
    for (const uint32_t dwCodec : {eCodecH264, eCodecH265})
    {
        tXml.In("tr2:Options",
                {{"GovLengthRange", "1 300"},
                 {"FrameRatesSupported", "30 25 20 15 12.5 10 5 1"},
                 {"ProfilesSupported", dwCodec == eCodecH264 ? "Baseline Main High" : "Main"},
                 {"ConstantBitRateSupported", "true"}},
                [&]
                {
                    tXml.Put("tt:Encoding", CodecName(dwCodec)).Range("tt:QualityRange", 0.0, 100.0);
                    for (auto const& tSize : SizesOf(dwCodec))
                    {
                        tXml.In("tt:ResolutionsAvailable",
                                [&] { tXml.Put("tt:Width", tSize.first).Put("tt:Height", tSize.second); });
                    }
                    tXml.Range("tt:BitrateRange", 16, 32000);
                });
    }
}

void SetAudioEncoderConfiguration(CCall& tCall)
{
    const auto tLock = tCall.Lock();
    const tagStreamKey tKey = ConfigurationAt(tCall, "AudioEncoder");
    auto t = tCall.Get<tagConfigAudioEncoder>(tKey.dwChannel, tKey.Kind());
    t.dwCodec = tCall.Word({"Configuration", "Encoding"}, {"PCMU", "PCMA"}) ? eCodecG711A : eCodecG711U;
    ReadAudioEncoder(tCall, t);
    tCall.Set(eConfigAudioEncoder, t, tKey.dwChannel, tKey.Kind());
}

void GetAudioEncoderConfigurationOptions(CCall& tCall)
{
    CXml& tXml = tCall.Xml();
    for (char const* const szCodec : {"PCMU", "PCMA"})
    {
        tXml.In("tr2:Options",
                [&]
                {
                    tXml.Put("tt:Encoding", szCodec);
                    tXml.In("tt:BitrateList", [&] { tXml.Put("tt:Items", 64); });
                    tXml.In("tt:SampleRateList", [&] { tXml.Put("tt:Items", 8); });
                });
    }
}

void GetAudioDecoderConfigurationOptions(CCall& tCall)
{
    GetAudioEncoderConfigurationOptions(tCall);
}

// Adds encoders to a profile, or takes them from it.
template <bool bOn>
void ChangeConfigurations(CCall& tCall)
{
    const auto tLock = tCall.Lock();
    const tagStreamKey tKey = StreamAt(tCall, {"ProfileToken"}, "Profile", "ter:NoProfile");
    for (const pugi::xml_node t : tCall.Request().children())
    {
        const std::string strKind = ChildText(t, "Type");
        const std::string strToken = ChildText(t, "Token");
        if (LocalName(t) != "Configuration")
        {
            continue;
        }
        if (!strToken.empty() && strToken != tKey.Of(strKind))
        {
            FailValue("ter:NoConfig", "the profile can't have this configuration");
        }
        if (!SetEncoding(tCall, tKey, strKind, bOn))
        {
            FailAction("ter:ConfigurationConflict", strKind + " belongs to the profile");
        }
    }
}

// --- streams ---------------------------------------------------------------------------------------------------------

void GetStreamUri(CCall& tCall)
{
    const tagStreamKey tKey = StreamAt(tCall, {"ProfileToken"}, "Profile", "ter:NoProfile");
    if (tCall.Word({"Protocol"}, {"RtspUnicast", "RTSP", "RtspMulticast", "RtspOverHttp"}) > 1)
    {
        FailValue("ter:InvalidStreamSetup", "there is unicast by RTSP alone");
    }
    tCall.Xml().Put("tr2:Uri", tCall.StreamAddress(tKey.dwChannel, tKey.Kind()));
}

void GetSnapshotUri(CCall& tCall)
{
    const tagStreamKey tKey = StreamAt(tCall, {"ProfileToken"}, "Profile", "ter:NoProfile");
    tCall.Xml().Put("tr2:Uri", tCall.Address(Token("/snapshot", {tKey.dwChannel})));
}

void SetSynchronizationPoint(CCall& tCall)
{
    const tagStreamKey tKey = StreamAt(tCall, {"ProfileToken"}, "Profile", "ter:NoProfile");
    tCall.Face().Rtsp().ForceKeyFrame(tCall.Face().Index(), tKey.dwChannel, tKey.Kind());
}

#define ONVIF_WHICH "ConfigurationToken? ProfileToken?"
constexpr tagAction g_atActions[] = {
    {"GetServiceCapabilities", 0, "", ServeCapabilities<eService::Media2>},
    {"GetProfiles", eUserViewer, "Token? Type*", GetProfiles},
    {"GetVideoSourceConfigurations", eUserViewer, ONVIF_WHICH, GetConfigurations<0>},
    {"GetAudioSourceConfigurations", eUserViewer, ONVIF_WHICH, GetConfigurations<1>},
    {"GetVideoEncoderConfigurations", eUserViewer, ONVIF_WHICH, GetConfigurations<2>},
    {"GetAudioEncoderConfigurations", eUserViewer, ONVIF_WHICH, GetConfigurations<3>},
    {"GetMetadataConfigurations", eUserViewer, ONVIF_WHICH, GetConfigurations<6>},
    {"GetAudioOutputConfigurations", eUserViewer, ONVIF_WHICH, GetConfigurations<7>},
    {"GetAudioDecoderConfigurations", eUserViewer, ONVIF_WHICH, GetConfigurations<8>},
    {"SetVideoEncoderConfiguration", eUserAdministrator,
     "Configuration[token]{Name UseCount Encoding Resolution{Width Height} "
     "RateControl{FrameRateLimit BitrateLimit}? " ONVIF_MULTICAST "? Quality ...}",
     SetVideoEncoderConfiguration},
    {"SetAudioEncoderConfiguration", eUserAdministrator,
     "Configuration[token]{Name UseCount Encoding " ONVIF_MULTICAST "? Bitrate SampleRate ...}",
     SetAudioEncoderConfiguration},
    {"GetVideoEncoderConfigurationOptions", eUserViewer, ONVIF_WHICH, GetVideoEncoderConfigurationOptions},
    {"GetAudioEncoderConfigurationOptions", eUserViewer, ONVIF_WHICH, GetAudioEncoderConfigurationOptions},
    {"GetAudioDecoderConfigurationOptions", eUserViewer, ONVIF_WHICH, GetAudioDecoderConfigurationOptions},
    {"AddConfiguration", eUserAdministrator, "ProfileToken Name? Configuration{tr2:Type tr2:Token?}*",
     ChangeConfigurations<true>},
    {"RemoveConfiguration", eUserAdministrator, "ProfileToken Configuration{tr2:Type tr2:Token?}+",
     ChangeConfigurations<false>},
    {"GetStreamUri", eUserViewer, "Protocol ProfileToken", GetStreamUri},
    {"GetSnapshotUri", eUserViewer, "ProfileToken", GetSnapshotUri},
    {"SetSynchronizationPoint", eUserViewer, "ProfileToken", SetSynchronizationPoint},
    {"GetOSDs", eUserViewer, "OSDToken? ConfigurationToken?", GetOSDs},
    {"GetOSDOptions", eUserViewer, "ConfigurationToken", GetOSDOptions},
    {"SetOSD", eUserAdministrator, ONVIF_OSD, SetOSD},
    {"CreateOSD", eUserAdministrator, ONVIF_OSD, CreateOSD},
    {"DeleteOSD", eUserAdministrator, "OSDToken", DeleteOSD},
    {"GetMasks", eUserViewer, "Token? ConfigurationToken?", GetMasks},
    {"GetMaskOptions", eUserViewer, "ConfigurationToken", GetMaskOptions},
    {"SetMask", eUserAdministrator, ONVIF_MASK, SetMask},
    {"CreateMask", eUserAdministrator, ONVIF_MASK, CreateMask},
    {"DeleteMask", eUserAdministrator, "Token", DeleteMask},
};
} // namespace

std::span<tagAction const> Media2Actions()
{
    return g_atActions;
}
} // namespace onvif_device
