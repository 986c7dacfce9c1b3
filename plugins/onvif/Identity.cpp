#include "plugins/onvif/Identity.h"

#include "onvif/DiscoveryMessage.h"
#include "onvif/Xml.h"

#include <algorithm>

namespace onvifclient
{
tagIdentity AskIdentity(onvif::CClient& tClient)
{
    const onvif::CAnswer tAnswer = tClient.Call({.szName = "GetScopes"});
    onvif::tagAnnouncement tSaid;
    for (pugi::xml_node const& tScope : onvif::Children(tAnswer.Body(), "Scopes"))
    {
        onvif::TakeScope(tSaid, onvif::Text(tScope, "ScopeItem"));
    }
    return {tSaid.strName, tSaid.strLocation};
}

std::string AskMac(onvif::CClient& tClient, int& nResult)
{
    const onvif::CAnswer tAnswer = tClient.Call({.szName = "GetNetworkInterfaces"});
    nResult = tAnswer.Result();
    std::string strMac;
    for (pugi::xml_node const& tInterface : onvif::Children(tAnswer.Body(), "NetworkInterfaces"))
    {
        const std::string_view strThis = onvif::Text(tInterface, "Info/HwAddress");
        const bool bOn = onvif::Truth(tInterface, "Enabled").value_or(true);
        if (!strThis.empty() && (strMac.empty() || bOn))
        {
            strMac = strThis;
            if (bOn)
            {
                break;
            }
        }
    }
    std::ranges::replace(strMac, '-', ':');
    std::ranges::transform(strMac, strMac.begin(),
                           [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c; });
    return strMac;
}
} // namespace onvifclient
