// The ways to end with two live streams of the RTSP plug-in, one of them encrypted.

#include "tests/core/Ending.h"
#include <string>

namespace
{
char const* g_aszUrls[2];
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
    for (const std::string strUrl : g_aszUrls)
    {
        tagUserLoginPara tLogin{};
        tagRealStreamPara tStream{};
        int nLogin = -1;
        int nMedia = -1;
        strUrl.copy(tLogin.szAddress, sizeof tLogin.szAddress - 1);
        tLogin.szUserName[0] = 'u'; // the first server doesn't ask
        std::string("secret").copy(tLogin.szPassword, sizeof tLogin.szPassword);
        tStream.dwStreamKind = eStreamMain;
        API(UserLogin)(&nLogin, eProtocolRTSP, &tLogin);
        API(RealStreamConnect)(&nMedia, nLogin, &tStream);
        API(SubscribeEvent)(nLogin, 0, &OnEvent, 0);
        API(StreamMediaCB)(nMedia, &OnFrame, dwStream++);
    }
    while (!g_abCame[0] || !g_abCame[1])
    {
        usleep(1000); // the deadline ends it
    }
}
} // namespace

// The addresses of two servers; the second asks for user u and password secret.
int main(int nArguments, char** aszArguments)
{
    if (nArguments != 3)
    {
        return EXIT_FAILURE;
    }
    g_aszUrls[0] = aszArguments[1];
    g_aszUrls[1] = aszArguments[2];
    return EndInEveryWay("live RTSP streams", &StartStreams, TESSARO_RUNS, 3);
}
