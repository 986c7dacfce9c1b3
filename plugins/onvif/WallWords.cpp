#include "plugins/onvif/WallWords.h"

#include "plugins/common/Text.h"

#include "protocol/interface/Frames.h"
#include "protocol/interface/Live.h"
#include "protocol/interface/Results.h"

#include <algorithm>
#include <cctype>
#include <cstring>

namespace onvifclient
{
namespace
{
// As a part of a URL.
std::string Escaped(std::string const& strText)
{
    constexpr char szDigits[] = "0123456789ABCDEF";
    std::string strUrl;
    for (const char c : strText)
    {
        const auto by = static_cast<unsigned char>(c);
        if (std::isalnum(by) || c == '-' || c == '.' || c == '_' || c == '~')
        {
            strUrl += c;
        }
        else
        {
            strUrl += {'%', szDigits[by >> 4], szDigits[by & 15U]};
        }
    }
    return strUrl;
}

std::string Plain(std::string_view strUrl)
{
    std::string strText;
    for (std::size_t i = 0; i < strUrl.size(); ++i)
    {
        const bool bEscape = strUrl[i] == '%' && i + 2 < strUrl.size() &&
                             std::isxdigit(static_cast<unsigned char>(strUrl[i + 1])) &&
                             std::isxdigit(static_cast<unsigned char>(strUrl[i + 2]));
        strText +=
            bEscape ? static_cast<char>(std::stoi(std::string(strUrl.substr(i + 1, 2)), nullptr, 16)) : strUrl[i];
        i += bEscape ? 2 : 0;
    }
    return strText;
}
} // namespace

tagDecoderSource SourceOf(tagReceiver const& t)
{
    tagDecoderSource tSource{};
    if (t.strUri.empty() || !t.bOn)
    {
        return tSource;
    }
    std::string strAddress = t.strUri;
    const std::size_t nHost = strAddress.find("://");
    const std::size_t nEnd = nHost == std::string::npos ? 0 : strAddress.find('/', nHost + 3);
    const std::size_t nAt = strAddress.substr(0, nEnd).rfind('@');
    if (nHost != std::string::npos && nAt != std::string::npos && nAt > nHost)
    {
        const std::string strLogin = strAddress.substr(nHost + 3, nAt - nHost - 3);
        const std::size_t nColon = std::min(strLogin.find(':'), strLogin.size());
        plugin::CopyText(tSource.szUserName, Plain(std::string_view(strLogin).substr(0, nColon)));
        plugin::CopyText(tSource.szPassword,
                         Plain(std::string_view(strLogin).substr(std::min(nColon + 1, strLogin.size()))));
        strAddress.erase(nHost + 3, nAt - nHost - 2);
    }
    tSource.dwKind = eDecoderSourceAddress;
    tSource.dwProtocol = eProtocolRTSP;
    plugin::CopyText(tSource.szAddress, strAddress);
    return tSource;
}

int ReceiverOf(tagDecoderSource const& t, tagDecoderSource const& tBefore, tagReceiver& tReceiver)
{
    tReceiver = {};
    if (t.dwKind > eDecoderSourceTransfer || (t.dwKind == eDecoderSourceAddress && t.szAddress[0] == '\0'))
    {
        return eResultBadArgument;
    }
    if (t.dwKind == eDecoderSourceNone)
    {
        return eResultOk;
    }
    if (t.dwKind != eDecoderSourceAddress)
    {
        return eResultNotSupported;
    }
    const std::string strAddress = plugin::Text(t.szAddress);
    const std::string strUser = plugin::Text(t.szUserName);
    std::string strPassword = plugin::Text(t.szPassword);
    if (strPassword.empty() && strAddress == plugin::Text(tBefore.szAddress) &&
        strUser == plugin::Text(tBefore.szUserName))
    {
        strPassword = plugin::Text(tBefore.szPassword);
    }
    const std::size_t nHost = strAddress.find("://");
    if (nHost == std::string::npos ||
        strAddress.substr(0, strAddress.find('/', nHost + 3)).find('@') != std::string::npos)
    {
        return eResultBadArgument;
    }
    tReceiver.bOn = true;
    tReceiver.strUri = WithLogin(strAddress, strUser, strPassword);
    return eResultOk;
}

std::string WithLogin(std::string strUrl, std::string const& strUser, std::string const& strPassword)
{
    const std::size_t nHost = strUrl.find("://");
    if (!strUser.empty() && nHost != std::string::npos)
    {
        strUrl.insert(nHost + 3, Escaped(strUser) + ':' + Escaped(strPassword) + '@');
    }
    return strUrl;
}

int CheckLooks(tagDecoderChannelConfig const& t, tagDecoderChannelConfig const& tBefore)
{
    tagDecoderChannelConfig tLooks = t;
    tLooks.tSource = tBefore.tSource;
    std::memcpy(tLooks.szName, tBefore.szName, sizeof tLooks.szName);
    return std::memcmp(&tLooks, &tBefore, sizeof tLooks) == 0 ? int{eResultOk} : int{eResultNotSupported};
}

uint32_t WindowStateOf(std::string_view strState)
{
    return strState == "Connected"    ? uint32_t{eWindowShowing}
           : strState == "Connecting" ? uint32_t{eWindowConnecting}
                                      : uint32_t{eWindowRefused};
}

tagDecoderChannelInformation Abilities(pugi::xml_node tCoding)
{
    constexpr std::pair<char const*, eMediaCodec> atCodecs[] = {
        {"JpegDecOptions", eCodecMJPEG}, {"H264DecOptions", eCodecH264}, {"Mpeg4DecOptions", eCodecMPEG4}};
    tagDecoderChannelInformation t{};
    t.dwSize = sizeof t;
    const pugi::xml_node tVideo = onvif::Child(tCoding, "VideoDecodingCapabilities");
    for (auto const& [szName, eCodec] : atCodecs)
    {
        const pugi::xml_node tOptions = onvif::Child(tVideo, szName);
        t.dwCodecs |= tOptions ? 1U << eCodec : 0U;
        for (pugi::xml_node const& tSize : onvif::Children(tOptions, "ResolutionsAvailable"))
        {
            t.dwMaxWidth = std::max(t.dwMaxWidth, static_cast<uint32_t>(onvif::Integer(tSize, "Width").value_or(0)));
            t.dwMaxHeight = std::max(t.dwMaxHeight, static_cast<uint32_t>(onvif::Integer(tSize, "Height").value_or(0)));
        }
        t.dwMaxFrameRate =
            std::max(t.dwMaxFrameRate,
                     static_cast<uint32_t>(onvif::Number(tOptions, "SupportedFrameRate/Max").value_or(0) * 1000));
    }
    t.dwAbilities = onvif::Child(tCoding, "AudioDecodingCapabilities") ? uint32_t{eDecoderCanAudio} : 0U;
    return t;
}
} // namespace onvifclient
