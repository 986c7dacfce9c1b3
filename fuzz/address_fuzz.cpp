// Connect blocks: three lines, for address, user name and password.

#include "plugins/rtsp/Address.h"
#include "fuzz/Input.h"

#include <string>

namespace
{
std::string Unescape(std::string_view strText)
{
    std::string strPlain;
    for (std::size_t i = 0; i < strText.size(); ++i)
    {
        if (strText[i] == '%')
        {
            REQUIRE(i + 2 < strText.size());
            strPlain += static_cast<char>(std::stoi(std::string(strText.substr(i + 1, 2)), nullptr, 16));
            i += 2;
        }
        else
        {
            strPlain += strText[i];
        }
    }
    return strPlain;
}
bool HasControl(std::string_view strText)
{
    return std::any_of(strText.begin(), strText.end(), [](unsigned char by) { return by < ' ' || by == 127; });
}

// An address that the plug-in's documentation refuses. A login's length is that of its escaped form: at most three
// times its own.
bool IsRightToRefuse(std::string_view strUrl, std::string_view strUser, std::string_view strPassword)
{
    const std::size_t nScheme = strUrl.find("://");
    const std::string_view strScheme = strUrl.substr(0, nScheme);
    if (nScheme == std::string_view::npos || (strScheme != "rtsp" && strScheme != "rtsps") || HasControl(strUrl))
    {
        return true;
    }
    const std::string_view strRest = strUrl.substr(nScheme + 3);
    const std::string_view strAuthority = strRest.substr(0, strRest.find_first_of("/?#"));
    return strAuthority.empty() || strAuthority.find('@') != std::string_view::npos ||
           strUser.find(':') != std::string_view::npos ||
           (!strUser.empty() && 3 * (strUser.size() + strPassword.size()) + 1 > 127);
}
} // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* pbyData, std::size_t nLength)
{
    CInput tInput(pbyData, nLength);
    tagRTSPClientPara tPara{};
    tInput.Line(tPara.szUrl);
    tInput.Line(tPara.szUserName);
    tInput.Line(tPara.szPassword);
    const auto tAddress = rtsp::MakeAddress(tPara);
    const std::string_view strUrl = FieldText(tPara.szUrl);
    if (!tAddress)
    {
        REQUIRE(IsRightToRefuse(strUrl, FieldText(tPara.szUserName), FieldText(tPara.szPassword)));
        return 0;
    }
    // One request line's worth, with the login where a URL has it and nothing else changed.
    const std::string_view strWhole = tAddress->strUrl;
    const std::size_t nHost = strUrl.find("://") + 3;
    REQUIRE(strWhole.starts_with("rtsp://") || strWhole.starts_with("rtsps://"));
    REQUIRE(!HasControl(strWhole));
    REQUIRE(strWhole.ends_with(strUrl.substr(nHost)));
    REQUIRE(strWhole.substr(0, nHost) == strUrl.substr(0, nHost));
    const std::string_view strLogin = strWhole.substr(nHost, strWhole.size() - strUrl.size());
    REQUIRE(strLogin.empty() == (tPara.szUserName[0] == '\0'));
    if (!strLogin.empty())
    {
        REQUIRE(strLogin.size() <= 128 && strLogin.ends_with('@'));
        REQUIRE(strLogin.find_first_of("/?#@") == strLogin.size() - 1);
        const std::size_t nColon = strLogin.find(':');
        REQUIRE(Unescape(strLogin.substr(0, nColon)) == FieldText(tPara.szUserName));
        REQUIRE(Unescape(strLogin.substr(nColon + 1, strLogin.size() - nColon - 2)) == FieldText(tPara.szPassword));
    }
    return 0;
}
