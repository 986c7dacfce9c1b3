#pragma once

#include "onvif/Client.h"

#include <string>
#include <string_view>

namespace onvifclient
{
class CEdit;

/// Calls that both media services have, under names that differ a little. strKind: "VideoSource", "VideoEncoder",
/// "AudioEncoder".
/// @{

/// A configuration; *ptFound is null where the answer has none.
onvif::CAnswer AskConfiguration(onvif::CClient& tClient, bool bMedia2, std::string_view strKind,
                                std::string const& strToken, pugi::xml_node& tFound);
/// What a configuration may be; its element "Options" (in the second service one for each encoding).
onvif::CAnswer AskOptions(onvif::CClient& tClient, bool bMedia2, std::string_view strKind, std::string const& strToken,
                          std::string const& strProfile);
/// Sends a configuration back, for good.
onvif::CAnswer SendConfiguration(onvif::CClient& tClient, bool bMedia2, std::string_view strKind, CEdit const& tEdit);

inline onvif::eService MediaService(bool bMedia2)
{
    return bMedia2 ? onvif::eService::Media2 : onvif::eService::Media;
}
/// "trt:" or "tr2:" and the name.
inline std::string MediaName(bool bMedia2, std::string_view strName)
{
    return std::string(bMedia2 ? "tr2:" : "trt:").append(strName);
}
/// @}
} // namespace onvifclient
