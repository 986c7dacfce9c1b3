// How streams are coded.

#include "plugins/onvif/Configuration.h"
#include "plugins/onvif/Convert.h"
#include "plugins/onvif/Edit.h"
#include "plugins/onvif/EncoderLimits.h"
#include "plugins/onvif/MediaCalls.h"
#include "plugins/onvif/Profiles.h"

#include "protocol/interface/Frames.h"

#include <algorithm>
#include <cstring>

namespace onvifclient
{
namespace
{
using namespace onvif;

// A stream's profile, and the channel that it lives in.
struct tagStream
{
    std::shared_ptr<tagChannel const> pChannel;
    tagProfile const* ptProfile = nullptr;
    bool bMedia2 = false;
};

int FindStream(CLogin& tLogin, tagWhich const& tWhich, tagStream& t)
{
    const int nResult = FindChannel(tLogin, tWhich.dwIndex, t.pChannel, t.bMedia2);
    return nResult ? nResult : t.pChannel->Stream(tWhich.dwStreamKind, t.ptProfile);
}

// --- video -----------------------------------------------------------------------------------------------------------

// A device's name of a profile; in the order of eVideoProfile.
constexpr std::string_view g_astrH264[] = {"Main", "Baseline", "High"};
constexpr std::string_view g_astrH265[] = {"Main", "", "Main10"};

uint32_t ProfileOf(std::string_view strName)
{
    return strName == "Baseline"                      ? eProfileBaseline
           : strName == "High" || strName == "Main10" ? eProfileHigh
                                                      : eProfileMain;
}

std::string_view ProfileName(uint32_t dwCodec, uint32_t dwProfile)
{
    return dwCodec == eCodecH265 ? g_astrH265[dwProfile] : g_astrH264[dwProfile];
}

void TakeVideo(pugi::xml_node tFound, bool bMedia2, std::optional<tagSpan> const& tQuality, tagConfigVideoEncoder& t)
{
    t.dwCodec = CodecOf(Text(tFound, "Encoding"));
    const char* const szPart = t.dwCodec == eCodecMPEG4 ? "MPEG4" : "H264";
    const pugi::xml_node tPart = Child(tFound, szPart);
    t.dwProfile = ProfileOf(bMedia2 ? Attribute(tFound, "Profile") : Text(tPart, "H264Profile"));
    t.dwWidth = Word(tFound, "Resolution/Width");
    t.dwHeight = Word(tFound, "Resolution/Height");
    t.dwFrameRate = static_cast<uint32_t>(
        std::llround(std::clamp(Number(tFound, "RateControl/FrameRateLimit").value_or(0), 0.0, 1000.0) * 1000));
    t.dwBitRate = Word(tFound, "RateControl/BitrateLimit");
    // The first media service doesn't tell: its bit rate is a limit.
    t.dwBitRateMode =
        Attribute(Child(tFound, "RateControl"), "ConstantBitRate") == "true" ? eBitRateConstant : eBitRateVariable;
    t.dwKeyFrameInterval = bMedia2 ? ParseWord(Attribute(tFound, "GovLength")) : Word(tPart, "GovLength");
    t.dwQuality = tQuality.value_or(tagSpan{0, 100}).Percent(Number(tFound, "Quality").value_or(0));
    t.bEnabled = 1;
}

bool IsValid(tagConfigVideoEncoder const& tBefore, tagConfigVideoEncoder const& t, bool bMedia2,
             tagEncoderLimits const& tLimits)
{
    const auto fnHolds = [](std::optional<tagSpan> const& tSpan, double d) { return !tSpan || tSpan->Holds(d); };
    const auto fnChanged = [&](uint32_t tagConfigVideoEncoder::*pWord) { return t.*pWord != tBefore.*pWord; };
    if (!tLimits.bOffered || t.dwProfile > eProfileHigh || t.dwBitRateMode > eBitRateVariable || t.dwQuality > 100 ||
        t.bEnabled != 1)
    {
        return false; // what a profile has can't be switched off
    }
    const bool bSize = fnChanged(&tagConfigVideoEncoder::dwWidth) || fnChanged(&tagConfigVideoEncoder::dwHeight) ||
                       fnChanged(&tagConfigVideoEncoder::dwCodec);
    const bool bProfile = fnChanged(&tagConfigVideoEncoder::dwProfile) && t.dwCodec != eCodecMJPEG;
    const bool bConstant = fnChanged(&tagConfigVideoEncoder::dwBitRateMode) && t.dwBitRateMode == eBitRateConstant;
    return (!bSize || tLimits.atSizes.empty() ||
            std::ranges::find(tLimits.atSizes, std::pair(t.dwWidth, t.dwHeight)) != tLimits.atSizes.end()) &&
           (!bProfile || tLimits.astrProfiles.empty() ||
            std::ranges::find(tLimits.astrProfiles, ProfileName(t.dwCodec, t.dwProfile)) !=
                tLimits.astrProfiles.end()) &&
           (!bConstant || (bMedia2 && tLimits.bConstantBitRate)) &&
           (!fnChanged(&tagConfigVideoEncoder::dwFrameRate) || fnHolds(tLimits.tFrameRate, t.dwFrameRate / 1000.0)) &&
           (!fnChanged(&tagConfigVideoEncoder::dwBitRate) || fnHolds(tLimits.tBitRate, t.dwBitRate)) &&
           (!fnChanged(&tagConfigVideoEncoder::dwKeyFrameInterval) ||
            fnHolds(tLimits.tKeyFrames, t.dwKeyFrameInterval));
}

// The first media service has a part for each encoding, and whole frames a second.
void ChangePart(CEdit& tEdit, tagConfigVideoEncoder const& t, bool bMedia2)
{
    const std::string strProfile(ProfileName(t.dwCodec, t.dwProfile));
    if (bMedia2)
    {
        tEdit.SetAttribute("", "GovLength", std::to_string(t.dwKeyFrameInterval));
        if (t.dwCodec != eCodecMJPEG)
        {
            tEdit.SetAttribute("", "Profile", strProfile);
        }
        tEdit.SetAttribute("RateControl", "ConstantBitRate", t.dwBitRateMode == eBitRateConstant ? "true" : "false");
    }
    else if (t.dwCodec == eCodecH264)
    {
        tEdit.Set("H264/GovLength", std::to_string(t.dwKeyFrameInterval));
        tEdit.Set("H264/H264Profile", strProfile);
    }
    if (!bMedia2 && t.dwCodec != eCodecH264)
    {
        tEdit.Remove("H264");
    }
}

void Change(CEdit& tEdit, tagConfigVideoEncoder const& tBefore, tagConfigVideoEncoder const& t, bool bMedia2,
            tagEncoderLimits const& tLimits)
{
    const bool bCodec = t.dwCodec != tBefore.dwCodec;
    if (bCodec)
    {
        tEdit.Set("Encoding", t.dwCodec == eCodecH264 ? "H264" : t.dwCodec == eCodecH265 ? "H265" : "JPEG");
    }
    tEdit.Set("Resolution/Width", std::to_string(t.dwWidth));
    tEdit.Set("Resolution/Height", std::to_string(t.dwHeight));
    if (t.dwQuality != tBefore.dwQuality)
    {
        const double dQuality = tLimits.tQuality.value_or(tagSpan{0, 100}).AtPercent(t.dwQuality);
        tEdit.Set("Quality", NumberText(bMedia2 ? dQuality : std::round(dQuality)));
    }
    if (t.dwFrameRate != tBefore.dwFrameRate)
    {
        const double dRate = t.dwFrameRate / 1000.0;
        tEdit.Set("RateControl/FrameRateLimit", NumberText(bMedia2 ? dRate : std::round(dRate)));
    }
    if (t.dwBitRate != tBefore.dwBitRate)
    {
        tEdit.Set("RateControl/BitrateLimit", std::to_string(t.dwBitRate));
    }
    if (bCodec || t.dwProfile != tBefore.dwProfile || t.dwKeyFrameInterval != tBefore.dwKeyFrameInterval ||
        t.dwBitRateMode != tBefore.dwBitRateMode)
    {
        ChangePart(tEdit, t, bMedia2);
    }
}
} // namespace

int Read(CLogin& tLogin, tagWhich const& tWhich, tagConfigVideoEncoder& t)
{
    tagStream tStream;
    if (const int nResult = FindStream(tLogin, tWhich, tStream))
    {
        return nResult;
    }
    CClient& tClient = tLogin.Client();
    tagProfile const& tProfile = *tStream.ptProfile;
    pugi::xml_node tFound;
    const CAnswer tAnswer = AskConfiguration(tClient, tStream.bMedia2, "VideoEncoder", tProfile.strEncoder, tFound);
    const CAnswer tOptions =
        AskOptions(tClient, tStream.bMedia2, "VideoEncoder", tProfile.strEncoder, tProfile.strToken);
    const uint32_t dwCodec = CodecOf(Text(tFound, "Encoding"));
    TakeVideo(tFound, tStream.bMedia2, VideoLimits(tOptions.Body(), tStream.bMedia2, dwCodec).tQuality, t);
    return tAnswer && !tFound ? int{eResultNotFound} : tAnswer.Result();
}

int Write(CLogin& tLogin, tagWhich const& tWhich, tagConfigVideoEncoder const& tBefore,
          tagConfigVideoEncoder const& tAfter)
{
    tagStream tStream;
    if (const int nResult = FindStream(tLogin, tWhich, tStream))
    {
        return nResult;
    }
    CClient& tClient = tLogin.Client();
    tagProfile const& tProfile = *tStream.ptProfile;
    pugi::xml_node tFound;
    const CAnswer tAnswer = AskConfiguration(tClient, tStream.bMedia2, "VideoEncoder", tProfile.strEncoder, tFound);
    const CAnswer tOptions =
        AskOptions(tClient, tStream.bMedia2, "VideoEncoder", tProfile.strEncoder, tProfile.strToken);
    if (!tAnswer || !tFound)
    {
        return tAnswer ? int{eResultNotFound} : tAnswer.Result();
    }
    tagEncoderLimits tLimits = VideoLimits(tOptions.Body(), tStream.bMedia2, tAfter.dwCodec);
    tLimits.bOffered = tLimits.bOffered || tAfter.dwCodec == tBefore.dwCodec;
    if (!IsValid(tBefore, tAfter, tStream.bMedia2, tLimits))
    {
        return eResultBadArgument;
    }
    CEdit tEdit(tFound, tStream.bMedia2 ? "VideoEncoder" : "VideoEncoderConfiguration");
    Change(tEdit, tBefore, tAfter, tStream.bMedia2, tLimits);
    const int nResult = SendConfiguration(tClient, tStream.bMedia2, "VideoEncoder", tEdit).Result();
    tLogin.Part<CProfiles>().Forget();
    return nResult;
}

// --- audio -----------------------------------------------------------------------------------------------------------

namespace
{
// The name of a codec in either media service; empty: it has none.
std::string_view AudioName(uint32_t dwCodec, bool bMedia2)
{
    switch (dwCodec)
    {
    case eCodecG711U:
        return bMedia2 ? "PCMU" : "G711";
    case eCodecG711A:
        return bMedia2 ? "PCMA" : "";
    case eCodecG726:
        return "G726";
    case eCodecAAC:
        return bMedia2 ? "MP4A-LATM" : "AAC";
    default:
        return "";
    }
}

// The first configuration of this kind that a profile may have.
std::string Compatible(CClient& tClient, bool bMedia2, std::string const& strKind, std::string const& strProfile)
{
    const std::string strName = (bMedia2 ? "Get" : "GetCompatible") + strKind + "Configurations";
    const CAnswer tAnswer = tClient.Call({MediaService(bMedia2), strName.c_str(),
                                          CXmlWriter().Add(MediaName(bMedia2, "ProfileToken"), strProfile).Take()});
    return std::string(Attribute(Child(tAnswer.Body(), "Configurations"), "token"));
}

// Gives a profile this configuration, or takes it away.
int Attach(CClient& tClient, bool bMedia2, bool bAdd, std::string const& strKind, std::string const& strProfile,
           std::string const& strToken)
{
    CXmlWriter tBody;
    tBody.Add(MediaName(bMedia2, "ProfileToken"), strProfile);
    std::string strName = bAdd ? "Add" : "Remove";
    if (bMedia2)
    {
        strName += "Configuration";
        tBody.Open("tr2:Configuration").Add("tr2:Type", strKind);
        if (!strToken.empty())
        {
            tBody.Add("tr2:Token", strToken);
        }
    }
    else
    {
        strName += strKind + "Configuration";
        if (bAdd)
        {
            tBody.Add("trt:ConfigurationToken", strToken);
        }
    }
    return tClient.Call({MediaService(bMedia2), strName.c_str(), tBody.Take()}).Result();
}

int Enable(CClient& tClient, tagStream const& tStream, bool bOn)
{
    tagProfile const& tProfile = *tStream.ptProfile;
    if (!bOn)
    {
        return Attach(tClient, tStream.bMedia2, false, "AudioEncoder", tProfile.strToken, tProfile.strAudioEncoder);
    }
    for (char const* const szKind : {"AudioSource", "AudioEncoder"})
    {
        const bool bThere =
            !(std::strcmp(szKind, "AudioSource") == 0 ? tProfile.strAudioSource : tProfile.strAudioEncoder).empty();
        const std::string strToken = bThere ? "" : Compatible(tClient, tStream.bMedia2, szKind, tProfile.strToken);
        if (!bThere && strToken.empty())
        {
            return eResultNotSupported;
        }
        const int nResult =
            bThere ? int{eResultOk} : Attach(tClient, tStream.bMedia2, true, szKind, tProfile.strToken, strToken);
        if (nResult != eResultOk)
        {
            return nResult;
        }
    }
    return eResultOk;
}

void TakeAudio(pugi::xml_node tFound, tagConfigAudioEncoder& t)
{
    t.bEnabled = 1;
    t.dwCodec = CodecOf(Text(tFound, "Encoding"));
    t.dwSampleRate = Word(tFound, "SampleRate") * 1000;
    t.dwChannels = 1;
    t.dwBitRate = Word(tFound, "Bitrate");
}
} // namespace

int Read(CLogin& tLogin, tagWhich const& tWhich, tagConfigAudioEncoder& t)
{
    tagStream tStream;
    const int nResult = FindStream(tLogin, tWhich, tStream);
    if (nResult != eResultOk || tStream.ptProfile->strAudioEncoder.empty())
    {
        return nResult;
    }
    pugi::xml_node tFound;
    const CAnswer tAnswer =
        AskConfiguration(tLogin.Client(), tStream.bMedia2, "AudioEncoder", tStream.ptProfile->strAudioEncoder, tFound);
    TakeAudio(tFound, t);
    return tAnswer && !tFound ? int{eResultNotFound} : tAnswer.Result();
}

int Write(CLogin& tLogin, tagWhich const& tWhich, tagConfigAudioEncoder const& tBefore,
          tagConfigAudioEncoder const& tAfter)
{
    tagStream tStream;
    if (const int nResult = FindStream(tLogin, tWhich, tStream))
    {
        return nResult;
    }
    CClient& tClient = tLogin.Client();
    tagProfile const& tProfile = *tStream.ptProfile;
    const bool bCoding = tAfter.dwCodec != tBefore.dwCodec || tAfter.dwSampleRate != tBefore.dwSampleRate ||
                         tAfter.dwBitRate != tBefore.dwBitRate;
    // ONVIF knows nothing of the rest; and how sound is coded only while there is some.
    if (tAfter.bEnabled > 1 || tAfter.dwChannels != tBefore.dwChannels || tAfter.dwSource != tBefore.dwSource ||
        tAfter.dwVolume != tBefore.dwVolume || (bCoding && (tBefore.bEnabled == 0 || tAfter.bEnabled == 0)))
    {
        return eResultBadArgument;
    }
    if (tAfter.bEnabled != tBefore.bEnabled)
    {
        const int nResult = Enable(tClient, tStream, tAfter.bEnabled != 0);
        tLogin.Part<CProfiles>().Forget();
        return nResult;
    }
    if (!bCoding)
    {
        return eResultOk;
    }
    pugi::xml_node tFound;
    const CAnswer tAnswer =
        AskConfiguration(tClient, tStream.bMedia2, "AudioEncoder", tProfile.strAudioEncoder, tFound);
    if (!tAnswer || !tFound)
    {
        return tAnswer ? int{eResultNotFound} : tAnswer.Result();
    }
    const CAnswer tOptions =
        AskOptions(tClient, tStream.bMedia2, "AudioEncoder", tProfile.strAudioEncoder, tProfile.strToken);
    const std::string_view strName = AudioName(tAfter.dwCodec, tStream.bMedia2);
    if (strName.empty() ||
        !TakesAudio(tOptions.Body(), tStream.bMedia2, tAfter.dwCodec, tAfter.dwBitRate, tAfter.dwSampleRate))
    {
        return eResultBadArgument;
    }
    CEdit tEdit(tFound, tStream.bMedia2 ? "AudioEncoder" : "AudioEncoderConfiguration");
    tEdit.Set("Encoding", strName);
    tEdit.Set("Bitrate", std::to_string(tAfter.dwBitRate));
    tEdit.Set("SampleRate", std::to_string(tAfter.dwSampleRate / 1000));
    return SendConfiguration(tClient, tStream.bMedia2, "AudioEncoder", tEdit).Result();
}
} // namespace onvifclient
