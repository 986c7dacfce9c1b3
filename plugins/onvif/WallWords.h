#pragma once

#include "onvif/Xml.h"
#include "plugins/onvif/Wall.h"

#include <string>
#include <string_view>

namespace onvifclient
{
/// What a receiver connects to, in the interface's words; with its password.
tagDecoderSource SourceOf(tagReceiver const& t);
/// The other way round. A password that is empty for the address and user of tBefore stays. eResultNotSupported: ONVIF
/// has addresses of streams alone; eResultBadArgument.
int ReceiverOf(tagDecoderSource const& t, tagDecoderSource const& tBefore, tagReceiver& tReceiver);
/// A stream's address with a login in it.
std::string WithLogin(std::string strUrl, std::string const& strUser, std::string const& strPassword);
/// Of how a window looks ONVIF knows the name alone: eResultNotSupported where anything else is to change.
int CheckLooks(tagDecoderChannelConfig const& t, tagDecoderChannelConfig const& tBefore);
/// eDecoderWindowState of a receiver that is to be connected.
uint32_t WindowStateOf(std::string_view strState);
/// What a decoder can decode, of its coding capabilities.
tagDecoderChannelInformation Abilities(pugi::xml_node tCoding);
} // namespace onvifclient
