#pragma once

#include "onvif/Address.h"

#include <string>
#include <string_view>
#include <vector>

namespace onvif
{
/// What a device says of itself in WS-Discovery.
struct tagAnnouncement
{
    std::string strEndpoint;                ///< the device's name for ever: "urn:uuid:...", in lower case
    bool bBye = false;                      ///< it leaves; nothing below is known then
    std::string strVersion;                 ///< MetadataVersion: changes when something below did
    std::vector<std::string> astrAddresses; ///< of its device service
    std::string strName;                    ///< these from its scopes; empty: it doesn't say
    std::string strHardware;
    std::string strLocation;
    std::string strManufacturer;
    std::string strMac; ///< "02:00:5e:10:00:01"
};

/// The announcements of a message: answers to a probe, Hello, Bye. Empty: it is none, or not of an ONVIF device.
std::vector<tagAnnouncement> ParseAnnouncements(std::string_view strMessage);

/// Takes what one scope tells of a device: "onvif://www.onvif.org/name/Gate%20North".
void TakeScope(tagAnnouncement& tAnnouncement, std::string_view strScope);

/// A probe for devices of a type: "dn:NetworkVideoTransmitter" or "tds:Device". strId: "urn:uuid:...".
std::string ProbeMessage(std::string_view strType, std::string_view strId);
/// A new "urn:uuid:...".
std::string NewId();

/// Which of the device's addresses to speak to when it was heard from strSender (as text, IPv6 with its zone): the one
/// with this host; else the first of the same family, with the sender's host instead of its own.
std::optional<tagAddress> Choose(tagAnnouncement const& tAnnouncement, std::string const& strSender);
} // namespace onvif
