#pragma once

#include "plugins/device/Session.h"

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

namespace device
{
class CDevice;
}

namespace onvif_device
{
class CXml;

/// One event as ONVIF says it.
struct tagMessage
{
    using Items = std::vector<std::pair<std::string, std::string>>;

    std::string strTopic;     ///< "tns1:VideoSource/MotionAlarm"
    std::string strOperation; ///< Initialized, Changed, Deleted; empty: it has no state
    int64_t llTimeUs = 0;
    Items atSource;
    Items atData;

    /// An element of the type wsnt:NotificationMessageHolderType. strFrom: the subscription's address; empty: none.
    void Write(CXml& tXml, std::string const& strFrom, char const* szElement = "wsnt:NotificationMessage") const;
};

/// What an event of the device's is in ONVIF's topics; several, or nothing. Needs no lock of the device's.
std::vector<tagMessage> MessagesOf(device::CDevice& tDevice, device::tagDeviceEvent const& tEvent);
/// One message for each state that there is, on or off.
std::vector<tagMessage> InitialMessages(device::CDevice& tDevice);
/// The device's topics, as the inside of a wstop:TopicSet.
void WriteTopicSet(CXml& tXml);
/// Whether a topic is one that a filter of the concrete set dialect names; an empty filter: every one is.
bool MatchesTopic(std::string const& strFilter, std::string const& strTopic);
} // namespace onvif_device
