#include "onvif/Notification.h"

#include <algorithm>

namespace onvif
{
namespace
{
constexpr std::size_t g_nMostItems = 64;      // of one message
constexpr std::size_t g_nMostMessages = 2000; // of one answer

void TakeItems(pugi::xml_node tFrom, tagNotification::Items& atItems)
{
    for (pugi::xml_node const& tItem : Children(tFrom, "SimpleItem"))
    {
        if (atItems.size() < g_nMostItems)
        {
            atItems.emplace_back(Attribute(tItem, "Name"), Attribute(tItem, "Value"));
        }
    }
}

std::string const* FindItem(tagNotification::Items const& atItems, std::string_view strName)
{
    const auto it = std::ranges::find(atItems, strName, [](auto const& t) { return std::string_view(t.first); });
    return it == atItems.end() ? nullptr : &it->second;
}

eChange ReadChange(std::string_view strOperation)
{
    return strOperation == "Initialized" ? eChange::Initialized
           : strOperation == "Changed"   ? eChange::Changed
           : strOperation == "Deleted"   ? eChange::Deleted
                                         : eChange::None;
}
} // namespace

std::string tagNotification::PlainTopic() const
{
    std::string strPlain;
    for (std::size_t nBegin = 0; nBegin <= strTopic.size();)
    {
        const std::size_t nEnd = std::min(strTopic.find('/', nBegin), strTopic.size());
        std::string_view strPart = std::string_view(strTopic).substr(nBegin, nEnd - nBegin);
        strPart.remove_prefix(strPart.find(':') + 1); // from the begin where there is none
        strPlain.append(strPlain.empty() ? "" : "/").append(strPart);
        nBegin = nEnd + 1;
    }
    return strPlain;
}

std::string const* tagNotification::Source(std::string_view strName) const
{
    return FindItem(atSource, strName);
}

std::string const* tagNotification::Data(std::string_view strName) const
{
    return FindItem(atData, strName);
}

std::string tagNotification::Key() const
{
    return PlainTopic() + '?' + Text(atSource);
}

std::string tagNotification::Text(Items const& atItems)
{
    std::string strText;
    for (auto const& [strName, strValue] : atItems)
    {
        strText.append(strText.empty() ? "" : ",").append(strName).append("=").append(strValue);
    }
    return strText;
}

tagNotification ReadNotification(pugi::xml_node tMessage)
{
    tagNotification t;
    t.strTopic = Text(tMessage, "Topic");
    // The element inside has the same name in another namespace.
    pugi::xml_node tInner = Find(tMessage, "Message/Message");
    tInner = tInner ? tInner : Child(tMessage, "Message");
    t.llTimeUs = ParseTime(Attribute(tInner, "UtcTime")).value_or(0);
    t.eWhat = ReadChange(Attribute(tInner, "PropertyOperation"));
    TakeItems(Child(tInner, "Source"), t.atSource);
    TakeItems(Child(tInner, "Key"), t.atSource);
    TakeItems(Child(tInner, "Data"), t.atData);
    return t;
}

std::vector<tagNotification> ReadNotifications(pugi::xml_node tParent)
{
    std::vector<tagNotification> atFound;
    for (pugi::xml_node const& tMessage : Children(tParent, "NotificationMessage"))
    {
        if (atFound.size() < g_nMostMessages)
        {
            atFound.push_back(ReadNotification(tMessage));
        }
    }
    return atFound;
}
} // namespace onvif
