#pragma once

#include "onvif/Xml.h"

#include <cstdint>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace onvif
{
/// What an event says of the state that it is about.
enum class eChange
{
    None,        ///< it is about no state
    Initialized, ///< this is how it stands
    Changed,
    Deleted, ///< there is no such state any more
};

/// One event as a device tells it.
struct tagNotification
{
    using Items = std::vector<std::pair<std::string, std::string>>; ///< name and value

    std::string strTopic;      ///< as the device wrote it: "tns1:Device/Trigger/Relay"
    std::int64_t llTimeUs = 0; ///< on the device's clock, since 1970 UTC; 0: it doesn't say
    eChange eWhat = eChange::None;
    Items atSource; ///< where; its key too
    Items atData;   ///< the values that came with it

    /// The topic without prefixes: "Device/Trigger/Relay".
    std::string PlainTopic() const;
    /// Null: there is no such item.
    std::string const* Source(std::string_view strName) const;
    std::string const* Data(std::string_view strName) const;
    /// Topic and source: what tells one state from another.
    std::string Key() const;
    /// "a=1,b=2"
    static std::string Text(Items const& atItems);
};

/// One NotificationMessage, or what is built like one: the event of a search's result. Nothing in it need be there.
tagNotification ReadNotification(pugi::xml_node tMessage);
/// All NotificationMessage children.
std::vector<tagNotification> ReadNotifications(pugi::xml_node tParent);
} // namespace onvif
