// The ways to end with a plug-in's thread that delivers without pause.

#include "tests/core/Ending.h"
#include "tests/recorder/Journal.h"

namespace
{
std::atomic<bool> g_bEndPlugin;
int g_nLogin = -1;

// Opens and closes, so that destructors find the registry and the tables in use.
int OnFrame(void*, tagStreamMediaFrame const*, unsigned long)
{
    Delivered();
    int nMedia = -1;
    tagRealStreamPara tStream{};
    API(RealStreamConnect)(&nMedia, g_nLogin, &tStream);
    return API(RealStreamDisconnect)(nMedia);
}

int OnEvent(void*, unsigned long, unsigned long, unsigned long, unsigned long, unsigned long)
{
    Delivered();
    int nLogin = -1;
    tagUserLoginPara tLogin{};
    API(UserLogin)(&nLogin, eProtocolRTSP, &tLogin);
    API(UserLogout)(nLogin);
    return API(SubscribeEvent)(g_nLogin, 1, &OnEvent, 0);
}

void StartDelivering()
{
    tagUserLoginPara tLogin{};
    tagRealStreamPara tStream{};
    API(Start)(1);
    API(UserLogin)(&g_nLogin, eProtocolVTQ, &tLogin);
    int nMedia = -1;
    API(RealStreamConnect)(&nMedia, g_nLogin, &tStream);
    const auto dwMedia = static_cast<unsigned long>(nMedia);
    const auto dwLogin = static_cast<unsigned long>(g_nLogin);
    API(StreamMediaCB)(nMedia, &OnFrame, 0);
    API(SubscribeEvent)(g_nLogin, 1, &OnEvent, 0);
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
