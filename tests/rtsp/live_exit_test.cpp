// The ways to end with two live streams of the RTSP plug-in, one of them encrypted.

#include "tests/core/Ending.h"
#include "tests/rtsp/Support.h"

namespace
{
std::string g_strPlainUrl;
std::string g_strTlsUrl;
std::atomic<bool> g_abCame[2];

int OnFrame(void* hStream, tagStreamMediaFrame const*, unsigned long dwStream)
{
    Delivered();
    g_abCame[dwStream] = true;
    return API(StreamMediaControl)(static_cast<int>(reinterpret_cast<std::intptr_t>(hStream)), eTaskPlay);
}

int OnEvent(void*, unsigned long, unsigned long, unsigned long, unsigned long, unsigned long)
{
    Delivered();
    return 0;
}

void StartStreams()
{
    API(Start)(16);
    unsigned long dwStream = 0;
    for (std::string const& strUrl : {g_strPlainUrl, g_strTlsUrl})
    {
        tagUserLoginPara tLogin{};
        tagRealStreamPara tStream{};
        int nLogin = -1;
        int nMedia = -1;
        strUrl.copy(tLogin.szAddress, sizeof tLogin.szAddress - 1);
        tLogin.szUserName[0] = 'u'; // the first server doesn't ask
        tLogin.szPassword[0] = 'p';
        tStream.dwStreamKind = eStreamMain;
        API(UserLogin)(&nLogin, eProtocolRTSP, &tLogin);
        API(RealStreamConnect)(&nMedia, nLogin, &tStream);
        API(SubscribeEvent)(nLogin, 0, &OnEvent, 0);
        API(StreamMediaCB)(nMedia, &OnFrame, dwStream++);
    }
    while (!g_abCame[0] || !g_abCame[1])
    {
        std::this_thread::sleep_for(1ms); // the deadline ends it
    }
}
} // namespace

int main()
{
    // The parent's alone to end: a child that destroyed them would.
    static CServer* const g_ptPlain = new CServer;
    static CServer* const g_ptTls = new CServer({"--user", "u", "--password", "p", "--tls", TESSARO_CLIPS "/tls.pem"});
    g_strPlainUrl = g_ptPlain->Url("/h264");
    g_strTlsUrl = "rtsps" + g_ptTls->Url("/h264").substr(4);
    const pid_t nParent = getpid();
    const int nResult = EndInEveryWay("live RTSP streams", &StartStreams, TESSARO_RUNS, 3);
    if (getpid() == nParent)
    {
        delete g_ptPlain;
        delete g_ptTls;
    }
    return nResult;
}
