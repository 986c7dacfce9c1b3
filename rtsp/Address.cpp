#include "rtsp/Address.h"

#include "rtsp/Text.h"

#include <algorithm>

#include <arpa/inet.h>

namespace rtsp
{
namespace
{
std::uint16_t DefaultPort(bool bTls)
{
    return bTls ? 322 : 554;
}

// Where what follows "://host:port" begins; nothing: the text is no URL with a host.
std::optional<std::size_t> FindPath(std::string_view strUrl)
{
    const std::size_t nScheme = strUrl.find("://");
    if (nScheme == std::string_view::npos || nScheme == 0 || strUrl.find_first_of("/?#") != nScheme + 1)
    {
        return std::nullopt;
    }
    return std::min(strUrl.find_first_of("/?#", nScheme + 3), strUrl.size());
}

// An IPv6 address as it stands between brackets. A zone has "%25" in front, or, as people write it, "%".
std::optional<std::string> ParseIpv6(std::string_view strText)
{
    const std::size_t nZone = std::min(strText.find('%'), strText.size());
    const std::string strAddress = Lower(strText.substr(0, nZone));
    in6_addr tAddress;
    if (inet_pton(AF_INET6, strAddress.c_str(), &tAddress) != 1)
    {
        return std::nullopt;
    }
    std::string_view strZone = strText.substr(nZone);
    if (strZone.empty())
    {
        return strAddress;
    }
    strZone.remove_prefix(strZone.starts_with("%25") && strZone.size() > 3 ? 3 : 1);
    if (strZone.empty() || strZone.find_first_of("%[]:@") != std::string_view::npos)
    {
        return std::nullopt;
    }
    return strAddress + '%' + std::string(strZone);
}

// What would end the URL in a request line.
std::string Escape(std::string_view strText)
{
    constexpr char szHex[] = "0123456789ABCDEF";
    std::string strEscaped;
    for (const char c : strText)
    {
        if (IsControl(c) || c == ' ')
        {
            const auto by = static_cast<unsigned char>(c);
            strEscaped += {'%', szHex[by >> 4], szHex[by & 15]};
        }
        else
        {
            strEscaped += c;
        }
    }
    return strEscaped;
}
} // namespace

std::string tagUrl::Authority() const
{
    const bool bIpv6 = strHost.find(':') != std::string::npos;
    std::string strAuthority = bIpv6 ? '[' + strHost.substr(0, strHost.find('%')) + ']' : strHost;
    if (wPort != DefaultPort(bTls))
    {
        strAuthority += ':' + std::to_string(wPort);
    }
    return strAuthority;
}

std::string tagUrl::Text() const
{
    return (bTls ? "rtsps://" : "rtsp://") + Authority() + strPath;
}

std::optional<tagUrl> ParseUrl(std::string_view strUrl)
{
    tagUrl tUrl;
    tUrl.bTls = BeginsInAnyCase(strUrl, "rtsps://");
    const std::optional<std::size_t> nPath = FindPath(strUrl);
    if ((!tUrl.bTls && !BeginsInAnyCase(strUrl, "rtsp://")) || !nPath ||
        std::any_of(strUrl.begin(), strUrl.end(), [](char c) { return IsControl(c) || c == ' '; }))
    {
        return std::nullopt;
    }
    const std::size_t nHost = tUrl.bTls ? 8 : 7;
    std::string_view strPort = strUrl.substr(nHost, *nPath - nHost);
    if (strPort.starts_with('['))
    {
        const std::size_t nEnd = strPort.find(']');
        const auto strHost = nEnd == std::string_view::npos ? std::nullopt : ParseIpv6(strPort.substr(1, nEnd - 1));
        if (!strHost)
        {
            return std::nullopt;
        }
        tUrl.strHost = *strHost;
        strPort.remove_prefix(nEnd + 1);
    }
    else
    {
        const std::size_t nEnd = std::min(strPort.find(':'), strPort.size());
        tUrl.strHost = Lower(strPort.substr(0, nEnd));
        strPort.remove_prefix(nEnd);
    }
    // Without an '@', which ends a login. The others are what is left of a URL with a slip in it.
    if (tUrl.strHost.empty() || tUrl.strHost.find_first_of("@[]<>\"\\") != std::string::npos)
    {
        return std::nullopt;
    }
    tUrl.wPort = DefaultPort(tUrl.bTls);
    if (strPort.size() > 1)
    {
        const auto wPort = Number<std::uint16_t>(strPort.substr(1));
        if (strPort.front() != ':' || !wPort || *wPort == 0)
        {
            return std::nullopt;
        }
        tUrl.wPort = *wPort;
    }
    else if (!strPort.empty() && strPort != ":")
    {
        return std::nullopt;
    }
    tUrl.strPath = strUrl.substr(*nPath);
    if (!tUrl.strPath.empty() && tUrl.strPath.front() != '/')
    {
        tUrl.strPath.insert(0, 1, '/');
    }
    return tUrl;
}

std::string ResolveControl(std::string_view strBase, std::string_view strControlText)
{
    std::string strControl = Escape(strControlText);
    if (strControl.empty() || strControl == "*")
    {
        return std::string(strBase);
    }
    if (FindPath(strControl))
    {
        return strControl;
    }
    const std::size_t nPath = FindPath(strBase).value_or(0);
    std::string_view strBasePath = strBase.substr(nPath);
    strBasePath = strBasePath.substr(0, strBasePath.find_first_of("?#"));
    while (strBasePath.ends_with('/'))
    {
        strBasePath.remove_suffix(1);
    }
    if (nPath > 0 && !strBasePath.empty() && strControl.starts_with(strBasePath) &&
        strControl.substr(strBasePath.size()).starts_with('/'))
    {
        return std::string(strBase.substr(0, nPath)) + strControl;
    }
    std::string strUrl(strBase);
    if (strUrl.ends_with('/') && strControl.starts_with('/'))
    {
        strUrl.pop_back();
    }
    else if (!strUrl.ends_with('/') && !strControl.starts_with('/'))
    {
        strUrl += '/';
    }
    return strUrl + strControl;
}
} // namespace rtsp
