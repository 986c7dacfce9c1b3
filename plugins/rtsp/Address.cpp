#include "plugins/rtsp/Address.h"

#include <algorithm>
#include <cstring>
#include <string_view>

namespace rtsp
{
namespace
{
// libavformat 5 keeps "user:password", escaped, in a field of this size.
constexpr std::size_t g_nLongestLogin = 127;

template <std::size_t n>
std::string_view Text(char const (&szField)[n])
{
    return {szField, strnlen(szField, n)};
}

// Only what would end the login inside the URL, or be taken for an escape; room is short.
std::string Escape(std::string_view strText)
{
    constexpr char szHex[] = "0123456789ABCDEF";
    std::string strEscaped;
    for (const char c : strText)
    {
        const auto by = static_cast<unsigned char>(c);
        if (by <= ' ' || by == 127 || std::strchr("%@/?#:", c))
        {
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

std::optional<tagAddress> MakeAddress(tagRTSPClientPara const& tPara)
{
    const std::string_view strUrl = Text(tPara.szUrl);
    const std::size_t nHost = strUrl.starts_with("rtsp://") ? 7 : strUrl.starts_with("rtsps://") ? 8 : 0;
    const std::string_view strAuthority = strUrl.substr(nHost, strUrl.find_first_of("/?#", nHost) - nHost);
    // A control character would end the line of a request and begin one of its own.
    const bool bControl =
        std::any_of(strUrl.begin(), strUrl.end(), [](unsigned char by) { return by < ' ' || by == 127; });
    if (nHost == 0 || bControl || strAuthority.empty() || strAuthority.find('@') != std::string_view::npos)
    {
        return std::nullopt;
    }
    tagAddress tAddress;
    tAddress.eTransport = static_cast<eRtspTransport>(tPara.dwStreamPara[0]);
    tAddress.strUrl = strUrl;
    if (const std::string_view strUser = Text(tPara.szUserName); !strUser.empty())
    {
        const std::string strLogin = Escape(strUser) + ':' + Escape(Text(tPara.szPassword));
        if (strUser.find(':') != std::string_view::npos || strLogin.size() > g_nLongestLogin)
        {
            return std::nullopt;
        }
        tAddress.strUrl.insert(nHost, strLogin + '@');
    }
    return tAddress;
}
} // namespace rtsp
