#include "plugins/onvif/MediaCalls.h"

#include "plugins/onvif/Edit.h"

namespace onvifclient
{
using namespace onvif;

onvif::CAnswer AskConfiguration(CClient& tClient, bool bMedia2, std::string_view strKind, std::string const& strToken,
                                pugi::xml_node& tFound)
{
    const std::string strName = "Get" + std::string(strKind) + (bMedia2 ? "Configurations" : "Configuration");
    CAnswer tAnswer = tClient.Call({MediaService(bMedia2), strName.c_str(),
                                    CXmlWriter().Add(MediaName(bMedia2, "ConfigurationToken"), strToken).Take()});
    tFound = {};
    for (pugi::xml_node tEach : Children(tAnswer.Body(), bMedia2 ? "Configurations" : "Configuration"))
    {
        // Some devices answer with all of them.
        tFound = tFound && Attribute(tEach, "token") != strToken ? tFound : tEach;
    }
    return tAnswer;
}

onvif::CAnswer AskOptions(CClient& tClient, bool bMedia2, std::string_view strKind, std::string const& strToken,
                          std::string const& strProfile)
{
    const std::string strName = "Get" + std::string(strKind) + "ConfigurationOptions";
    return tClient.Call({MediaService(bMedia2), strName.c_str(),
                         CXmlWriter()
                             .Add(MediaName(bMedia2, "ConfigurationToken"), strToken)
                             .Add(MediaName(bMedia2, "ProfileToken"), strProfile)
                             .Take()});
}

onvif::CAnswer SendConfiguration(CClient& tClient, bool bMedia2, std::string_view strKind, CEdit const& tEdit)
{
    const std::string strName = "Set" + std::string(strKind) + "Configuration";
    CXmlWriter tBody;
    tBody.Raw(tEdit.As(MediaName(bMedia2, "Configuration")));
    if (!bMedia2)
    {
        tBody.Add("trt:ForcePersistence", true);
    }
    return tClient.Call({MediaService(bMedia2), strName.c_str(), tBody.Take()});
}
} // namespace onvifclient
