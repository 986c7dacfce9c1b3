// A login record and a stream of it, through the C API: what the RTSP binding makes of them. Numbers first (mode and
// host of the address, kind of stream, the two ports), then six lines: address, main path, sub path, user
// name, password, second host.

#include "adapter/ClientAdapter.h"
#include "fuzz/Input.h"
#include "tests/recorder/Journal.h"

#include <string>

namespace
{
tagRTSPClientPara g_tBlock; // what came to the plug-in
bool g_bConnected;

int Plugin(tagCalled const& tCall, void** ppHandle)
{
    if (tCall.strEntry == "RTSPClient_Create")
    {
        g_bConnected = true;
        g_tBlock = *reinterpret_cast<tagRTSPClientPara const*>(tCall.auArguments.at(1));
    }
    if (ppHandle)
    {
        *ppHandle = &g_tBlock;
    }
    return 0;
}

std::string Cut(std::string_view strText, std::size_t nField)
{
    return std::string(strText.substr(0, nField - 1));
}
} // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***)
{
    REQUIRE(std::freopen("/dev/null", "w", stdout));
    CJournal::Instance().Observe(&Plugin);
    return ClientAdapter_Start(16);
}

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* pbyData, std::size_t nLength)
{
    CInput tInput(pbyData, nLength);
    tagUserLoginPara tLogin{};
    tagRealStreamPara tStream{};
    tLogin.dwRtspUrlMode = tInput.Number<std::uint8_t>();
    tLogin.dwRtspHostSelect = tInput.Number<std::uint8_t>();
    tStream.dwStreamKind = tInput.Number<std::uint8_t>();
    tLogin.dwRtspMainPort = tInput.Number<std::int32_t>();
    tLogin.dwRtspSubPort = tInput.Number<std::int32_t>();
    tLogin.dwPort = static_cast<std::uint32_t>(tLogin.dwRtspSubPort ^ 0x55);
    tInput.Line(tLogin.szAddress);
    tInput.Line(tLogin.szRtspMainPath);
    tInput.Line(tLogin.szRtspSubPath);
    tInput.Line(tLogin.szUserName);
    tInput.Line(tLogin.szPassword);
    tInput.Line(tLogin.szRtspHost);

    int nLogin = -1;
    int nMedia = -1;
    g_bConnected = false;
    REQUIRE(ClientAdapter_UserLogin(&nLogin, eProtocolRTSP, &tLogin) == 0 && nLogin >= 0);
    const bool bMain = tStream.dwStreamKind >= 1 && tStream.dwStreamKind <= 3;
    const bool bSub = tStream.dwStreamKind == 4 || tStream.dwStreamKind == 5;
    REQUIRE(ClientAdapter_RealStreamConnect(&nMedia, nLogin, &tStream) == (bMain || bSub ? 0 : 1));
    REQUIRE(g_bConnected == (bMain || bSub) && (nMedia >= 0) == g_bConnected);
    if (g_bConnected)
    {
        std::string strUrl;
        if (tLogin.dwRtspUrlMode != 0)
        {
            strUrl = "rtsp://";
            strUrl += tLogin.dwRtspHostSelect == 1 ? FieldText(tLogin.szRtspHost) : FieldText(tLogin.szAddress);
            strUrl += ':' + std::to_string(bMain ? tLogin.dwRtspMainPort : tLogin.dwRtspSubPort) + '/';
            strUrl += bMain ? FieldText(tLogin.szRtspMainPath) : FieldText(tLogin.szRtspSubPath);
        }
        else if (bMain)
        {
            strUrl = FieldText(tLogin.szAddress);
        }
        REQUIRE(g_tBlock.szUrl == Cut(strUrl, sizeof g_tBlock.szUrl)); // terminated, whatever came
        REQUIRE(g_tBlock.szUserName == Cut(FieldText(tLogin.szUserName), sizeof g_tBlock.szUserName));
        REQUIRE(g_tBlock.szPassword == Cut(FieldText(tLogin.szPassword), sizeof g_tBlock.szPassword));
        REQUIRE(g_tBlock.szSubUrl[0] == '\0' && g_tBlock.dwFlag == 1 && g_tBlock.dwSubPort == 0);
        const std::uint32_t dwSubPort =
            tLogin.dwRtspUrlMode != 0 ? static_cast<std::uint32_t>(tLogin.dwRtspSubPort) : 0;
        const std::uint32_t dwMainPort =
            tLogin.dwRtspUrlMode != 0 ? static_cast<std::uint32_t>(tLogin.dwRtspMainPort) : tLogin.dwPort;
        REQUIRE(g_tBlock.dwPort == (bMain ? dwMainPort : dwSubPort));
        REQUIRE(ClientAdapter_RealStreamDisconnect(nMedia) == 0);
    }
    REQUIRE(ClientAdapter_UserLogout(nLogin) == 0);
    return 0;
}
