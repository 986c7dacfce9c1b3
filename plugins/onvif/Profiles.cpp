#include "plugins/onvif/Profiles.h"

#include "onvif/Client.h"
#include "plugins/onvif/Convert.h"

#include "protocol/interface/Live.h"
#include "protocol/interface/Results.h"

#include <algorithm>

namespace onvifclient
{
namespace
{
using namespace onvif;

constexpr std::size_t g_nMostProfiles = 1024;

// The two media services have the same parts under other names.
struct tagNames
{
    char const* szGroup; // around the configurations; empty: nothing is
    char const* szVideoSource;
    char const* szVideoEncoder;
    char const* szAudioSource;
    char const* szAudioEncoder;
    char const* szAnalytics;
    char const* szPTZ;
};
constexpr tagNames g_tMedia1 = {"",
                                "VideoSourceConfiguration",
                                "VideoEncoderConfiguration",
                                "AudioSourceConfiguration",
                                "AudioEncoderConfiguration",
                                "VideoAnalyticsConfiguration",
                                "PTZConfiguration"};
constexpr tagNames g_tMedia2 = {"Configurations", "VideoSource", "VideoEncoder", "AudioSource",
                                "AudioEncoder",   "Analytics",   "PTZ"};

// Profiles without video are none of a channel's.
void Take(CProfiles::Channels& atChannels, pugi::xml_node tProfile, tagNames const& tNames)
{
    const pugi::xml_node tParts = Find(tProfile, tNames.szGroup);
    const pugi::xml_node tSource = Child(tParts, tNames.szVideoSource);
    const pugi::xml_node tEncoder = Child(tParts, tNames.szVideoEncoder);
    tagProfile t;
    t.strToken = Attribute(tProfile, "token");
    const std::string strSource(Text(tSource, "SourceToken"));
    if (t.strToken.empty() || strSource.empty() || !tEncoder)
    {
        return;
    }
    t.strSourceConfig = Attribute(tSource, "token");
    t.strEncoder = Attribute(tEncoder, "token");
    t.strAudioSource = Attribute(Child(tParts, tNames.szAudioSource), "token");
    t.strAudioEncoder = Attribute(Child(tParts, tNames.szAudioEncoder), "token");
    t.strAnalytics = Attribute(Child(tParts, tNames.szAnalytics), "token");
    t.strNode = Text(Child(tParts, tNames.szPTZ), "NodeToken");
    t.dwWidth = Word(tEncoder, "Resolution/Width");
    t.dwHeight = Word(tEncoder, "Resolution/Height");
    t.dwCodec = CodecOf(Text(tEncoder, "Encoding"));
    auto it = std::ranges::find(atChannels, strSource, &tagChannel::strSource);
    if (it == atChannels.end())
    {
        const pugi::xml_node tBounds = Child(tSource, "Bounds");
        it = atChannels.insert(
            it, {strSource, ParseWord(Attribute(tBounds, "width")), ParseWord(Attribute(tBounds, "height")), {}});
    }
    it->atProfiles.push_back(std::move(t));
}
} // namespace

int tagChannel::Stream(uint32_t dwKind, tagProfile const*& ptProfile) const
{
    const std::size_t n = dwKind < eStreamSub ? 0 : 1;
    if (dwKind > eStreamSub + 1)
    {
        return eResultBadArgument;
    }
    if (n >= atProfiles.size())
    {
        return eResultNotSupported;
    }
    ptProfile = &atProfiles[n];
    return eResultOk;
}

tagProfile const* tagChannel::Moving() const
{
    const auto it = std::ranges::find_if(atProfiles, [](tagProfile const& t) { return !t.strNode.empty(); });
    return it == atProfiles.end() ? nullptr : &*it;
}

int CProfiles::All(std::shared_ptr<Channels const>& pChannels)
{
    {
        const std::lock_guard tLock(m_tMutex);
        pChannels = m_pChannels;
    }
    if (pChannels)
    {
        return eResultOk;
    }
    // Where the second service can't say, the first one is asked: some devices announce more than they have.
    int nResult = eResultNotSupported;
    Channels atChannels;
    bool bMedia2 = false;
    for (const bool bSecond : {true, false})
    {
        const eService eWhich = bSecond ? eService::Media2 : eService::Media;
        if (!atChannels.empty() || !m_tClient.Has(eWhich))
        {
            continue;
        }
        const CAnswer tAnswer =
            m_tClient.Call({eWhich, "GetProfiles", bSecond ? CXmlWriter().Add("tr2:Type", "All").Take() : ""});
        if (!tAnswer)
        {
            nResult = nResult == eResultOk ? nResult : tAnswer.Result();
            if (IsSilent(tAnswer))
            {
                return nResult; // nobody is there: the other service wouldn't know better
            }
            continue;
        }
        const auto atProfiles = Children(tAnswer.Body(), "Profiles");
        for (std::size_t i = 0; i < std::min(atProfiles.size(), g_nMostProfiles); ++i)
        {
            Take(atChannels, atProfiles[i], bSecond ? g_tMedia2 : g_tMedia1);
        }
        nResult = eResultOk;
        bMedia2 = bSecond;
    }
    if (nResult != eResultOk)
    {
        return nResult;
    }
    const std::lock_guard tLock(m_tMutex);
    m_pChannels = std::make_shared<Channels const>(std::move(atChannels));
    m_bMedia2 = bMedia2;
    pChannels = m_pChannels;
    return eResultOk;
}

int CProfiles::Channel(uint32_t dwChannel, std::shared_ptr<tagChannel const>& pChannel)
{
    std::shared_ptr<Channels const> pChannels;
    const int nResult = All(pChannels);
    if (nResult != eResultOk || dwChannel >= pChannels->size())
    {
        // A device without media has no channels.
        return nResult == eResultOk || nResult == eResultNotSupported ? int{eResultNoChannel} : nResult;
    }
    pChannel = {pChannels, &(*pChannels)[dwChannel]};
    return eResultOk;
}

bool CProfiles::IsMedia2()
{
    const std::lock_guard tLock(m_tMutex);
    return m_bMedia2;
}

void CProfiles::Forget()
{
    const std::lock_guard tLock(m_tMutex);
    m_pChannels.reset();
}

int FindChannel(CLogin& tLogin, uint32_t dwChannel, std::shared_ptr<tagChannel const>& pChannel, bool& bMedia2)
{
    CProfiles& tProfiles = tLogin.Part<CProfiles>();
    const int nResult = tProfiles.Channel(dwChannel, pChannel);
    bMedia2 = tProfiles.IsMedia2();
    return nResult;
}
} // namespace onvifclient
