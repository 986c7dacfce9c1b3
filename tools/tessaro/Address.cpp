#include "tools/tessaro/Address.h"

#include "tools/tessaro/Failure.h"

#include <charconv>
#include <fmt/format.h>

namespace tessaro
{
namespace
{
struct tagScheme
{
    char const* szName;
    eProtocolType eProtocol;
};
constexpr tagScheme g_atSchemes[] = {
    {"vtq", eProtocolVTQ},   {"onvif", eProtocolOnvif}, {"private", eProtocolPrivate},
    {"rtsp", eProtocolRTSP}, {"rtsps", eProtocolRTSP},
};

[[noreturn]] void Wrong(std::string const& strWhy)
{
    throw CFailure(eExitUsage, "the address " + strWhy, "an address is PROTOCOL://[user@]host[:port]");
}

eProtocolType Protocol(std::string const& strScheme)
{
    for (tagScheme const& t : g_atSchemes)
    {
        if (strScheme == t.szName)
        {
            return t.eProtocol;
        }
    }
    Wrong(fmt::format("begins with vtq://, onvif://, rtsp://, rtsps:// or private://, not with \"{}\"", strScheme));
}

// "host", "host:80", "[2001:db8::1]:80"
void SplitPort(std::string const& strText, tagAddress& tAddress)
{
    const bool bBracket = strText.starts_with('[');
    const auto nEnd = bBracket ? strText.find(']') : strText.find(':');
    if (bBracket && nEnd == std::string::npos)
    {
        Wrong("has no ] after the host");
    }
    tAddress.strHost = bBracket ? strText.substr(1, nEnd - 1) : strText.substr(0, nEnd);
    const std::string strRest = nEnd == std::string::npos ? "" : strText.substr(nEnd + bBracket);
    if (!strRest.empty())
    {
        char const* const szEnd = strRest.data() + strRest.size();
        const auto [pRead, eError] = std::from_chars(strRest.data() + 1, szEnd, tAddress.dwPort);
        if (strRest[0] != ':' || eError != std::errc{} || pRead != szEnd || tAddress.dwPort > 65535)
        {
            Wrong(fmt::format("has \"{}\" where a port stands", strRest));
        }
    }
}
} // namespace

tagAddress tagAddress::Parse(std::string const& strText)
{
    const auto nScheme = strText.find("://");
    if (nScheme == std::string::npos)
    {
        Wrong("has no protocol before it, as in vtq://192.0.2.10");
    }
    tagAddress tAddress;
    tAddress.strText = strText;
    tAddress.eProtocol = Protocol(strText.substr(0, nScheme));
    std::string strRest = strText.substr(nScheme + 3);
    const auto nPath = strRest.find('/');
    const auto nUser = strRest.substr(0, nPath).rfind('@');
    const bool bRtsp = tAddress.eProtocol == eProtocolRTSP;
    tAddress.strUser = nUser != std::string::npos ? strRest.substr(0, nUser) : bRtsp ? "" : "admin";
    if (tAddress.strUser.find(':') != std::string::npos)
    {
        Wrong("holds a password; give it in TESSARO_PASSWORD, in a file, or when asked for it");
    }
    if (nUser != std::string::npos)
    {
        strRest.erase(0, nUser + 1);
    }
    if (bRtsp)
    {
        tAddress.strHost = strText.substr(0, nScheme + 3) + strRest;
    }
    else
    {
        SplitPort(strRest.substr(0, nPath), tAddress);
    }
    if (strRest.empty() || strRest[0] == '/' || tAddress.strHost.empty())
    {
        Wrong("names no host");
    }
    if (tAddress.strHost.size() >= sizeof tagUserLoginPara::szAddress ||
        tAddress.strUser.size() >= sizeof tagUserLoginPara::szUserName)
    {
        Wrong("is too long: at most 255 bytes, and 31 of the user name");
    }
    return tAddress;
}
} // namespace tessaro
