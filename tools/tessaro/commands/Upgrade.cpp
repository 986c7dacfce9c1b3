// upgrade: new firmware, and whether the device came back with it.

#include "tools/tessaro/Command.h"
#include "tools/tessaro/Failure.h"
#include "tools/tessaro/Interrupt.h"
#include "tools/tessaro/Session.h"

#include <RecordTables.h>
#include <atomic>
#include <filesystem>
#include <iostream>
#include <memory>
#include <mutex>
#include <unistd.h>

namespace tessaro
{
namespace
{
struct tagUpgradeOptions
{
    std::string strAddress;
    std::string strFile;
    bool bYes = false;
    double dWait = 300;
};

struct tagUpload
{
    std::mutex tMutex;
    tagFileUploadState tState{};
    std::atomic<bool> bRestarted = false;
};

std::string Firmware(CSession const& tSession)
{
    tagConfigIdentity tIdentity{};
    return tSession.Read(eConfigIdentity, 0, tIdentity) == eResultOk ? Text(tIdentity.szFirmware) : "";
}

void Agree(tagUpgradeOptions const& tOptions, std::string const& strFirmware)
{
    if (tOptions.bYes)
    {
        return;
    }
    if (isatty(STDIN_FILENO) != 1)
    {
        throw CFailure(eExitUsage, "an upgrade restarts the device: give --yes");
    }
    fmt::print(stderr, "{} runs {}. Send {} to it, and let it restart? [y/N] ", tOptions.strAddress, strFirmware,
               tOptions.strFile);
    std::string strAnswer;
    std::getline(std::cin, strAnswer);
    if (strAnswer != "y" && strAnswer != "yes")
    {
        throw CFailure(eExitFailed, "nothing was sent");
    }
}

void Upload(COutput& tOut, CSession const& tSession, tagUpgradeOptions const& tOptions, tagUpload& tUpload)
{
    auto tPara = Sized<tagFileUploadPara>();
    tPara.dwKind = eFileFirmware;
    tOptions.strFile.copy(tPara.szPath, sizeof tPara.szPath - 1);
    CMedia tMedia(&ClientAdapter_FileUploadDisconnect);
    Check(ClientAdapter_FileUploadConnect(tMedia.Target(), tSession.Login(), &tPara), "opening the upload");
    Check(ClientAdapter_FileUploadCB(
              tMedia.Id(),
              [](void*, tagFileUploadState tState, unsigned long dwUser)
              {
                  auto& t = *reinterpret_cast<tagUpload*>(dwUser);
                  const std::lock_guard tLock(t.tMutex);
                  t.tState = tState;
                  CInterrupt::Instance().Wake();
                  return 0;
              },
              reinterpret_cast<unsigned long>(&tUpload)),
          "asking for progress");
    Check(ClientAdapter_FileUploadControl(tMedia.Id(), eTransferStart), "starting the upload");
    tagFileUploadState tState{};
    const auto Step = [&]
    {
        const std::lock_guard tLock(tUpload.tMutex);
        tState = tUpload.tState;
        const double dShare =
            tState.ullLength == 0 ? 0 : static_cast<double>(tState.ullSent) / static_cast<double>(tState.ullLength);
        tOut.Status(fmt::format("{} {:3.0f}%", BarText(dShare, 40), dShare * 100));
        return tState.dwState != eUploadRunning;
    };
    if (!WaitUntil(Step, -1))
    {
        ClientAdapter_FileUploadControl(tMedia.Id(), eTransferStop);
        throw CFailure(eExitFailed, "the upload was stopped; the device keeps what it runs");
    }
    tOut.EndStatus();
    if (tState.dwState == eUploadFailed)
    {
        throw CFailure(static_cast<int>(tState.dwResult), "the device didn't take the firmware");
    }
}

int Run(tagContext& tContext, tagUpgradeOptions const& tOptions)
{
    if (tOptions.strFile.size() >= sizeof tagFileUploadPara::szPath ||
        !std::filesystem::is_regular_file(tOptions.strFile))
    {
        throw CFailure(eExitUsage, tOptions.strFile + " is no file that can be sent");
    }
    tagUpload tUpload;
    const CSession tSession(tContext, tOptions.strAddress);
    tSession.NeedsDevice("firmware");
    const std::string strBefore = Firmware(tSession);
    Agree(tOptions, strBefore);
    const CEventSubscription tEvents(tSession.Login(), TESSARO_EVENT(eEventDeviceRestarted),
                                     [&](unsigned long dwEvent, unsigned long, unsigned long, unsigned long)
                                     {
                                         tUpload.bRestarted = tUpload.bRestarted || dwEvent == eEventDeviceRestarted;
                                         CInterrupt::Instance().Wake();
                                     });
    Upload(tContext.tOut, tSession, tOptions, tUpload);
    tContext.tOut.Say("the device has taken it, and restarts");
    const long long llEnd = NowMs() + static_cast<long long>(tOptions.dWait * 1000);
    std::string strAfter;
    // A device that tells of its restart, or one that answers with something new.
    for (bool bBack = false; !bBack && NowMs() < llEnd && !CInterrupt::Instance().Asked();)
    {
        WaitUntil([&] { return tUpload.bRestarted.load(); }, 1000);
        strAfter = Firmware(tSession);
        bBack = !strAfter.empty() && (tUpload.bRestarted || strAfter != strBefore);
    }
    if (strAfter.empty())
    {
        throw CFailure(eExitUnreachable, "the device took the firmware and hasn't come back yet",
                       "give it more time, then ask: tessaro info " + tOptions.strAddress);
    }
    tContext.tOut.Say("firmware {} -> {}", strBefore, strAfter);
    tContext.tOut.Result({{"before", strBefore}, {"now", strAfter}, {"restarted", tUpload.bRestarted.load()}});
    return eExitDone;
}
} // namespace

void DeclareUpgrade(CLine& tLine)
{
    auto pt = std::make_shared<tagUpgradeOptions>();
    tLine.Option("address", pt->strAddress, g_szAddressHelp).Needed();
    tLine.Option("file", pt->strFile, "the firmware, as its maker gives it out").Needed();
    tLine.Flag("--yes", pt->bYes, "don't ask");
    tLine.Option("--wait", pt->dWait, "wait so many seconds for the device to come back").Positive().Value("N");
    tLine.Does([pt](tagContext& tContext) { return Run(tContext, *pt); });
}
} // namespace tessaro
