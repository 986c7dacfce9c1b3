#include "tools/onvif_device/Scopes.h"

#include "plugins/device/Device.h"
#include "plugins/device/Text.h"

#include <cctype>
#include <charconv>

namespace onvif_device
{
namespace
{
constexpr std::string_view g_strRoot = "onvif://www.onvif.org/";

std::string Escape(std::string const& strText)
{
    constexpr char const* szDigits = "0123456789ABCDEF";
    std::string strEscaped;
    for (const char c : strText)
    {
        const auto by = static_cast<unsigned char>(c);
        if (std::isalnum(by) || std::string_view("-._~").find(c) != std::string_view::npos)
        {
            strEscaped += c;
        }
        else
        {
            strEscaped += {'%', szDigits[by >> 4], szDigits[by & 15]};
        }
    }
    return strEscaped;
}

std::string Unescape(std::string_view strText)
{
    std::string strPlain;
    for (std::size_t i = 0; i < strText.size(); ++i)
    {
        unsigned nByte = 0;
        char const* const pEnd = strText.data() + std::min(i + 3, strText.size());
        if (strText[i] == '%' && std::from_chars(strText.data() + i + 1, pEnd, nByte, 16).ptr == strText.data() + i + 3)
        {
            strPlain += static_cast<char>(nByte);
            i += 2;
        }
        else
        {
            strPlain += strText[i];
        }
    }
    return strPlain;
}
} // namespace

std::vector<tagScope> ScopesOf(device::CDevice& tDevice)
{
    const auto tIdentity = tDevice.Part<device::CConfiguration>().Get<tagConfigIdentity>();
    const auto fnScope = [](char const* szKind, std::string const& strValue, bool bFixed) {
        return tagScope{std::string(g_strRoot) + szKind + Escape(strValue), bFixed};
    };
    std::vector<tagScope> atScopes = {
        fnScope("type/", "video_encoder", true),
        fnScope("type/", "Network_Video_Transmitter", true),
        fnScope("Profile/", "Streaming", true),
        fnScope("Profile/", "T", true),
        fnScope("Profile/", "G", true),
        fnScope("hardware/", device::Text(tIdentity.szModel), true),
        fnScope("name/", device::Text(tIdentity.szName), false),
    };
    if (tIdentity.szLocation[0] != '\0')
    {
        atScopes.push_back(fnScope("location/", device::Text(tIdentity.szLocation), false));
    }
    return atScopes;
}

std::string EndpointOf(device::CDevice& tDevice)
{
    std::string strMac = tDevice.Part<device::CConfiguration>().Mac();
    std::erase(strMac, ':');
    return "urn:uuid:7e55a20d-0b0c-4000-8000-" + strMac;
}

bool ScopeValue(std::string_view strUri, std::string_view strKind, std::string& strValue)
{
    const std::string strBegin = std::string(g_strRoot) + std::string(strKind) + '/';
    if (!strUri.starts_with(strBegin))
    {
        return false;
    }
    strValue = Unescape(strUri.substr(strBegin.size()));
    return true;
}
} // namespace onvif_device
