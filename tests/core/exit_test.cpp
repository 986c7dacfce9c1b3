// A process that ends without ClientAdapter_Stop, while a plug-in still delivers and its callbacks still call back in:
// many times over, without a crash.

#include "adapter/ClientAdapter.h"
#include "tests/recorder/Journal.h"

#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

namespace
{
std::atomic<int> g_nDelivered;

int OnFrame(void*, tagStreamMediaFrame const*, unsigned long dwMedia)
{
    ++g_nDelivered;
    return ClientAdapter_StreamMediaControl(static_cast<int>(dwMedia), eTaskPlay);
}

int OnEvent(void*, unsigned long, unsigned long, unsigned long, unsigned long, unsigned long dwLogin)
{
    ++g_nDelivered;
    return ClientAdapter_SubscribeEvent(static_cast<int>(dwLogin), 1, &OnEvent, dwLogin);
}

void Child()
{
    int nLogin = -1;
    int nMedia = -1;
    tagUserLoginPara tLogin{};
    tagRealStreamPara tStream{};
    ClientAdapter_Start(1);
    ClientAdapter_UserLogin(&nLogin, eProtocolVTQ, &tLogin);
    ClientAdapter_RealStreamConnect(&nMedia, nLogin, &tStream);
    const auto dwMedia = static_cast<unsigned long>(nMedia);
    const auto dwLogin = static_cast<unsigned long>(nLogin);
    ClientAdapter_StreamMediaCB(nMedia, &OnFrame, dwMedia);
    ClientAdapter_SubscribeEvent(nLogin, 1, &OnEvent, dwLogin);
    const auto atCalls = CJournal::Instance().Take(); // the last two: what the plug-in was given to call
    const auto pfnFrame = reinterpret_cast<StreamMediaCallback>(atCalls.end()[-2].auArguments.at(1));
    const auto pfnEvent = reinterpret_cast<DeviceEventCallback>(atCalls.end()[-1].auArguments.at(2));
    std::thread(
        [=]
        {
            for (;;)
            {
                pfnFrame(nullptr, nullptr, dwMedia);
                pfnEvent(nullptr, 0, 0, 0, 0, dwLogin);
                CJournal::Instance().Take();
            }
        })
        .detach();
    while (g_nDelivered < 100)
    {
        std::this_thread::yield();
    }
}
} // namespace

int main()
{
    constexpr int nRuns = 40;
    for (int i = 0; i < nRuns; ++i)
    {
        std::fflush(nullptr);
        const pid_t nChild = fork();
        if (nChild == 0)
        {
            if (!std::freopen("/dev/null", "w", stdout))
            {
                return 2;
            }
            Child();
            return 0; // the static objects are destroyed under the running thread
        }
        int nStatus = -1;
        if (waitpid(nChild, &nStatus, 0) != nChild || nStatus != 0)
        {
            std::printf("run %d ended with status %#x\n", i, static_cast<unsigned>(nStatus));
            return EXIT_FAILURE;
        }
    }
    std::printf("%d processes ended with a plug-in delivering\n", nRuns);
    return EXIT_SUCCESS;
}
