#include "tools/onvif_device/TopicFilter.h"

#include "tools/onvif_device/Fault.h"
#include "tools/onvif_device/Names.h"

#include <algorithm>
#include <string_view>

namespace onvif_device
{
std::string TopicsOf(pugi::xml_node tTopics)
{
    const std::string strDialect = tTopics.attribute("Dialect").value();
    if (tTopics && std::ranges::find(g_aszTopicDialects, strDialect, [](char const* sz) { return std::string(sz); }) ==
                       std::end(g_aszTopicDialects))
    {
        throw CFault(eBlame::Sender, "wsnt:TopicExpressionDialectUnknownFault", {}, strDialect + " isn't understood");
    }
    std::string strTopics = TextOf(tTopics);
    for (std::size_t nColon = strTopics.find(':'); nColon != std::string::npos;
         nColon = strTopics.find(':', nColon + 1))
    {
        const std::size_t nBegin = strTopics.find_last_of("|/ ", nColon);
        const std::size_t nPrefix = nBegin == std::string::npos ? 0 : nBegin + 1;
        const std::string strUri = ResolvePrefix(tTopics, strTopics.substr(nPrefix, nColon - nPrefix));
        auto const* const pt =
            std::ranges::find(g_atNamespaces, strUri, [](tagNamespace const& t) { return std::string(t.szUri); });
        if (pt == std::end(g_atNamespaces))
        {
            throw CFault(eBlame::Sender, "wsnt:InvalidTopicExpressionFault", {}, "a prefix stands for nothing");
        }
        strTopics.replace(nPrefix, nColon - nPrefix, pt->szPrefix);
        nColon = nPrefix + std::string_view(pt->szPrefix).size();
    }
    return strTopics;
}
} // namespace onvif_device
