// Connect blocks: three lines, for address, user name and password.

#include "plugins/rtsp/Address.h"
#include "tests/fuzz/Input.h"

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
} // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* pbyData, std::size_t nLength)
{
    CInput tInput(pbyData, nLength);
    tagRTSPClientPara tPara{};
    tInput.Line(tPara.szUrl);
    tInput.Line(tPara.szUserName);
    tInput.Line(tPara.szPassword);
    const auto tAddress = rtsp::MakeAddress(tPara);
    if (!tAddress)
    {
        return 0;
    }
    // One request line's worth, with the login where a URL has it and nothing else changed.
    const std::string_view strUrl = FieldText(tPara.szUrl);
    const std::string_view strWhole = tAddress->strUrl;
    const std::size_t nHost = strUrl.find("://") + 3;
    REQUIRE(strWhole.starts_with("rtsp://") || strWhole.starts_with("rtsps://"));
    REQUIRE(std::none_of(strWhole.begin(), strWhole.end(), [](unsigned char by) { return by < ' ' || by == 127; }));
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
