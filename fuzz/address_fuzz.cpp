// A URL, as users and redirects give it, and behind it, one a line, control addresses of an SDP.

#include "fuzz/Input.h"
#include "rtsp/Address.h"

#include <string>

namespace
{
bool IsPlain(std::string_view strText)
{
    return std::all_of(strText.begin(), strText.end(), [](unsigned char by) { return by > ' ' && by != 127; });
}
bool IsOf(std::string_view strText, std::string_view strCharacters)
{
    return strText.find_first_not_of(strCharacters) == std::string_view::npos;
}

// A URL that nobody has a reason to refuse: a name, perhaps a port, and a path.
bool IsSimple(std::string_view strUrl)
{
    if (!strUrl.starts_with("rtsp://") || !IsPlain(strUrl))
    {
        return false;
    }
    strUrl.remove_prefix(7);
    const std::string_view strAuthority = strUrl.substr(0, strUrl.find('/'));
    const std::size_t nColon = std::min(strAuthority.find(':'), strAuthority.size());
    const std::string_view strPort = strAuthority.substr(std::min(nColon + 1, strAuthority.size()));
    return nColon > 0 && IsOf(strAuthority.substr(0, nColon), "abcdefghijklmnopqrstuvwxyz0123456789.-") &&
           IsOf(strPort, "123456789") && strPort.size() < 5;
}
} // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* pbyData, std::size_t nLength)
{
    CInput tInput(pbyData, nLength);
    const std::string_view strUrl = tInput.Line();
    const auto tUrl = rtsp::ParseUrl(strUrl);
    REQUIRE(tUrl || !IsSimple(strUrl));
    if (!tUrl)
    {
        return 0;
    }
    const std::string strText = tUrl->Text();
    REQUIRE(IsPlain(strText) && tUrl->wPort != 0 && !tUrl->strHost.empty());
    REQUIRE(tUrl->strPath.empty() || tUrl->strPath.front() == '/');
    REQUIRE(strUrl.ends_with(tUrl->strPath) || strUrl.ends_with(std::string_view(tUrl->strPath).substr(1)));
    REQUIRE(tUrl->Authority().find_first_of("@/?#%") == std::string::npos ||
            tUrl->strHost.find(':') == std::string::npos);
    REQUIRE(tUrl->strHost.find('@') == std::string::npos); // no login came through
    auto tAgain = rtsp::ParseUrl(strText);
    REQUIRE(tAgain && tAgain->Text() == strText);
    if (const std::size_t nZone = tUrl->strHost.find('%'); tUrl->strHost.find(':') < nZone)
    {
        tAgain->strHost += tUrl->strHost.substr(std::min(nZone, tUrl->strHost.size()));
    }
    REQUIRE(tAgain == tUrl);
    while (!tInput.IsEmpty())
    {
        const std::string strControl = rtsp::ResolveControl(strText, tInput.Line());
        REQUIRE(IsPlain(strControl) && strControl.find("://") != std::string::npos);
        REQUIRE(rtsp::ResolveControl(strText, strControl) == strControl);
    }
    return 0;
}
