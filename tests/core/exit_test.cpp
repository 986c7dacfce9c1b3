// The ways to end with a plug-in's thread that delivers without pause.

#include "tests/core/Ending.h"
#include "tests/recorder/Journal.h"

namespace
{
std::atomic<bool> g_bEndPlugin;
int g_nLogin = -1;
int g_nMedia = -1;

int OnFrame(void*, tagStreamMediaFrame const*, unsigned long dwMedia)
{
    Delivered();
    int nMedia = -1;
    tagRealStreamPara tStream{};
    API(RealStreamConnect)(&nMedia, g_nLogin, &tStream);
    API(RealStreamDisconnect)(nMedia);
    return API(StreamMediaControl)(static_cast<int>(dwMedia), eTaskPlay);
}

int OnEvent(void*, unsigned long, unsigned long, unsigned long, unsigned long, unsigned long dwLogin)
{
    Delivered();
    int nLogin = -1;
    tagUserLoginPara tLogin{};
    API(UserLogin)(&nLogin, eProtocolRTSP, &tLogin);
    API(UserLogout)(nLogin);
    return API(SubscribeEvent)(static_cast<int>(dwLogin), 1, &OnEvent, dwLogin);
}

void StartDelivering()
{
    tagUserLoginPara tLogin{};
    tagRealStreamPara tStream{};
    API(Start)(1);
    API(UserLogin)(&g_nLogin, eProtocolVTQ, &tLogin);
    API(RealStreamConnect)(&g_nMedia, g_nLogin, &tStream);
    const auto dwMedia = static_cast<unsigned long>(g_nMedia);
    const auto dwLogin = static_cast<unsigned long>(g_nLogin);
    API(StreamMediaCB)(g_nMedia, &OnFrame, dwMedia);
    API(SubscribeEvent)(g_nLogin, 1, &OnEvent, dwLogin);
    const auto atCalls = CJournal::Instance().Take(); // the last two: what the plug-in was given to call
    const auto pfnFrame = reinterpret_cast<StreamMediaCallback>(atCalls.end()[-2].auArguments.at(1));
    const auto pfnEvent = reinterpret_cast<DeviceEventCallback>(atCalls.end()[-1].auArguments.at(2));
    static auto* const g_pPlugin = new std::thread( // never destroyed: it may run to the very end
        [=]
        {
            while (!g_bEndPlugin)
            {
                pfnFrame(nullptr, nullptr, dwMedia);
                pfnEvent(nullptr, 0, 0, 0, 0, dwLogin);
                CJournal::Instance().Take();
            }
        });
    CJournal::Instance().Answer("VTQClient_Stop", // ends the plug-in's thread
                                [](tagCalled const&)
                                {
                                    g_bEndPlugin = true;
                                    g_pPlugin->join();
                                    return 0;
                                });
    AwaitDeliveries(100);
}
} // namespace

int main()
{
    return EndInEveryWay("frames and events without pause", &StartDelivering, TESSARO_RUNS, 1);
}
