#include "onvif/Address.h"

#include <charconv>
#include <curl/curl.h>
#include <memory>

namespace onvif
{
namespace
{
constexpr std::string_view g_strUsualPath = "/onvif/device_service";

using Url = std::unique_ptr<CURLU, decltype(&curl_url_cleanup)>;

std::string Part(CURLU* pUrl, CURLUPart ePart)
{
    char* szPart = nullptr;
    std::string strPart;
    if (curl_url_get(pUrl, ePart, &szPart, 0) == CURLUE_OK && szPart)
    {
        strPart = szPart;
    }
    curl_free(szPart);
    return strPart;
}

Url Parse(std::string_view strUrl)
{
    Url pUrl(curl_url(), &curl_url_cleanup);
    const std::string strText(strUrl);
    if (!pUrl || strText.find('\0') != std::string::npos ||
        curl_url_set(pUrl.get(), CURLUPART_URL, strText.c_str(), CURLU_NON_SUPPORT_SCHEME) != CURLUE_OK)
    {
        pUrl.reset();
    }
    return pUrl;
}

std::string WithoutBrackets(std::string strHost)
{
    return strHost.starts_with('[') && strHost.ends_with(']') ? strHost.substr(1, strHost.size() - 2) : strHost;
}

std::uint16_t PortOf(CURLU* pUrl, std::uint16_t wUsual)
{
    const std::string strPort = Part(pUrl, CURLUPART_PORT);
    unsigned nPort = 0;
    std::from_chars(strPort.data(), strPort.data() + strPort.size(), nPort);
    return nPort == 0 ? wUsual : static_cast<std::uint16_t>(nPort);
}

std::string PathOf(CURLU* pUrl)
{
    const std::string strPath = Part(pUrl, CURLUPART_PATH);
    const std::string strQuery = Part(pUrl, CURLUPART_QUERY);
    return strQuery.empty() ? strPath : strPath + '?' + strQuery;
}

std::optional<tagAddress> AddressOf(CURLU* pUrl)
{
    const std::string strScheme = Part(pUrl, CURLUPART_SCHEME);
    tagAddress tAddress;
    tAddress.bTls = strScheme == "https";
    tAddress.strHost = WithoutBrackets(Part(pUrl, CURLUPART_HOST));
    if (const std::string strZone = Part(pUrl, CURLUPART_ZONEID); !strZone.empty())
    {
        tAddress.strHost += '%' + strZone;
    }
    tAddress.wPort = PortOf(pUrl, tAddress.bTls ? 443 : 80);
    tAddress.strPath = PathOf(pUrl);
    // Only IPv6 has zones; a name with a percent sign would be another one when it is read again.
    const bool bName = tAddress.strHost.find(':') == std::string::npos;
    if (bName && tAddress.strHost.find('%') != std::string::npos)
    {
        return std::nullopt;
    }
    const bool bLogin = !Part(pUrl, CURLUPART_USER).empty() || !Part(pUrl, CURLUPART_PASSWORD).empty();
    return (strScheme == "http" || tAddress.bTls) && !tAddress.strHost.empty() && !bLogin ? std::optional(tAddress)
                                                                                          : std::nullopt;
}
} // namespace

std::string tagAddress::HostText() const
{
    const std::size_t nZone = strHost.find('%');
    return strHost.find(':') == std::string::npos ? strHost
           : nZone == std::string::npos           ? '[' + strHost + ']'
                                        : '[' + strHost.substr(0, nZone) + "%25" + strHost.substr(nZone + 1) + ']';
}

std::string tagAddress::Text() const
{
    const std::string strPort = wPort == (bTls ? 443 : 80) ? std::string() : ':' + std::to_string(wPort);
    return (bTls ? "https://" : "http://") + HostText() + strPort + strPath;
}

std::optional<tagAddress> ParseAddress(std::string_view strUrl)
{
    const Url pUrl = Parse(strUrl);
    return pUrl ? AddressOf(pUrl.get()) : std::nullopt;
}

std::optional<tagAddress> ParseDevice(std::string_view strText, std::uint32_t dwPort)
{
    if (dwPort > 65535)
    {
        return std::nullopt;
    }
    std::string strUrl(strText);
    if (strUrl.find("://") == std::string::npos)
    {
        // A bare IPv6 address has colons, and none of them is before a port.
        const bool bBare = strUrl.find(':') != strUrl.rfind(':') && !strUrl.starts_with('[');
        const std::size_t nZone = strUrl.find('%');
        if (bBare && nZone != std::string::npos && strUrl.compare(nZone, 3, "%25") != 0)
        {
            strUrl.insert(nZone + 1, "25");
        }
        strUrl = "http://" + (bBare ? '[' + strUrl + ']' : strUrl);
    }
    std::optional<tagAddress> tAddress = ParseAddress(strUrl);
    if (tAddress)
    {
        tAddress->wPort = dwPort ? static_cast<std::uint16_t>(dwPort) : tAddress->wPort;
        tAddress->strPath = tAddress->strPath.size() > 1 ? tAddress->strPath : std::string(g_strUsualPath);
    }
    return tAddress;
}

std::string Reachable(std::string_view strAnnounced, tagAddress const& tReached, std::uint16_t wAnnouncedPort)
{
    const Url pUrl = Parse(strAnnounced);
    const std::string strScheme = pUrl ? Part(pUrl.get(), CURLUPART_SCHEME) : std::string();
    if (strScheme.empty())
    {
        return std::string(strAnnounced);
    }
    const bool bHttp = strScheme == "http" || strScheme == "https";
    const std::uint16_t wPort = PortOf(pUrl.get(), strScheme == "https" ? 443 : bHttp ? 80 : 0);
    if (bHttp && (wPort == wAnnouncedPort || strScheme == (tReached.bTls ? "http" : "https")))
    {
        tagAddress tAddress = tReached;
        tAddress.strPath = PathOf(pUrl.get());
        return tAddress.Text();
    }
    return strScheme + "://" + tReached.HostText() +
           (Part(pUrl.get(), CURLUPART_PORT).empty() ? "" : ':' + std::to_string(wPort)) + PathOf(pUrl.get());
}
} // namespace onvif
