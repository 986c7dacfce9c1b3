// download: a file of the device, or a channel's recordings as one file. One that broke off goes on where it was.

#include "tools/tessaro/Command.h"
#include "tools/tessaro/Failure.h"
#include "tools/tessaro/Interrupt.h"
#include "tools/tessaro/Session.h"
#include "tools/tessaro/Times.h"

#include <RecordTables.h>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <memory>
#include <mutex>
#include <optional>

namespace tessaro
{
namespace
{
constexpr int g_nTries = 5;

struct tagDownloadOptions
{
    std::string strAddress;
    std::string strOut;
    tagSpan tSpan;
    std::string strFile;
    std::string strKind = "recording";
    std::string strFormat = "mp4";
    bool bList = false;
};

// What has come; blocks come on a thread of the plug-in.
struct tagProgress
{
    std::mutex tMutex;
    std::FILE* pFile = nullptr;
    std::uint64_t ullBytes = 0;
    std::optional<unsigned int> tResult; // 0: all of it has come
    int nError = 0;                      // errno of the file

    int Take(tagBuffer const& tBuffer)
    {
        const std::lock_guard tLock(tMutex);
        if (!tBuffer.pData)
        {
            tResult = tBuffer.dwLength;
        }
        else if (std::fwrite(tBuffer.pData, 1, tBuffer.dwLength, pFile) != tBuffer.dwLength)
        {
            nError = errno;
            tResult = eResultNoResources;
        }
        else
        {
            ullBytes += tBuffer.dwLength;
        }
        if (tResult)
        {
            CInterrupt::Instance().Wake();
        }
        return 0;
    }
};

tagFileDownloadPara Wanted(tagDownloadOptions const& tOptions, std::uint64_t ullOffset)
{
    auto tPara = Sized<tagFileDownloadPara>();
    tPara.dwKind = static_cast<std::uint32_t>(*NamesOf<eFileKind>().Find(tOptions.strKind));
    tPara.dwChannel = tOptions.tSpan.dwChannel;
    tPara.dwTypes = tOptions.tSpan.Types();
    tPara.dwStreamKind = tOptions.tSpan.Kind();
    tPara.dwFormat = static_cast<std::uint32_t>(*NamesOf<eFileFormat>().Find(tOptions.strFormat));
    tPara.llStartUs = tOptions.tSpan.FromUs();
    tPara.llEndUs = tOptions.tSpan.ToUs();
    tPara.ullOffset = ullOffset;
    tOptions.strFile.copy(tPara.szFile, sizeof tPara.szFile - 1);
    return tPara;
}

std::string ProgressText(std::uint64_t ullBytes, std::uint64_t ullLength, double dRate)
{
    const double dShare = ullLength == 0 ? 0 : static_cast<double>(ullBytes) / static_cast<double>(ullLength);
    const std::string strHow = ullLength == 0 ? "" : fmt::format("{} {:3.0f}%  ", BarText(dShare, 40), dShare * 100);
    return fmt::format("{}{}{}  {}/s", strHow, SizeText(static_cast<double>(ullBytes)),
                       ullLength == 0 ? "" : " of " + SizeText(static_cast<double>(ullLength)), SizeText(dRate));
}

// One connection's part of the download. What ended it: 0 all of it is there; nothing: Ctrl-C.
std::optional<int> Transfer(COutput& tOut, CSession const& tSession, tagDownloadOptions const& tOptions,
                            tagProgress& tProgress, std::uint64_t& ullLength)
{
    tagFileDownloadPara tPara = Wanted(tOptions, tProgress.ullBytes);
    CMedia tMedia(&ClientAdapter_FileDownloadDisconnect);
    const int nOpened = ClientAdapter_FileDownloadConnect(tMedia.Target(), tSession.Login(), &tPara);
    if (nOpened != eResultOk)
    {
        return nOpened;
    }
    ullLength = tPara.ullLength;
    tProgress.tResult.reset();
    Check(ClientAdapter_FileDownloadCB(
              tMedia.Id(),
              [](void*, tagBuffer tBuffer, unsigned long dwUser)
              { return reinterpret_cast<tagProgress*>(dwUser)->Take(tBuffer); },
              reinterpret_cast<unsigned long>(&tProgress)),
          "asking for the file's blocks");
    Check(ClientAdapter_FileDownloadControl(tMedia.Id(), eTransferStart), "starting the download");
    const long long llBegin = NowMs();
    const std::uint64_t ullBegin = tProgress.ullBytes;
    for (bool bEnded = false; !bEnded && !CInterrupt::Instance().Asked();)
    {
        bEnded = WaitUntil(
            [&]
            {
                const std::lock_guard tLock(tProgress.tMutex);
                return tProgress.tResult.has_value();
            },
            250);
        const std::lock_guard tLock(tProgress.tMutex);
        const double dSeconds = std::max(0.001, static_cast<double>(NowMs() - llBegin) / 1e3);
        tOut.Status(
            ProgressText(tProgress.ullBytes, ullLength, static_cast<double>(tProgress.ullBytes - ullBegin) / dSeconds));
    }
    if (!tProgress.tResult)
    {
        ClientAdapter_FileDownloadControl(tMedia.Id(), eTransferPause); // the part stays for the next time
    }
    tMedia.Shut();
    return tProgress.tResult ? std::optional(static_cast<int>(*tProgress.tResult)) : std::nullopt;
}

bool GoesOnAfter(int nResult)
{
    return nResult == eResultConnectionLost || nResult == eResultTimeOut || nResult == eResultUnreachable ||
           nResult == eResultBusy;
}

[[noreturn]] void CantWrite(std::string const& strFile, int nError)
{
    throw CFailure(eExitFailed, fmt::format("{} can't be written: {}", strFile, strerror(nError)));
}

int Fetch(tagContext& tContext, CSession const& tSession, tagDownloadOptions const& tOptions)
{
    const std::string strPart = tOptions.strOut + ".part";
    tagProgress tProgress;
    std::error_code tError;
    const auto nKept = std::filesystem::file_size(strPart, tError);
    tProgress.ullBytes = tError ? 0 : nKept;
    const std::uint64_t ullResumed = tProgress.ullBytes;
    tProgress.pFile = std::fopen(strPart.c_str(), "ab");
    if (!tProgress.pFile)
    {
        CantWrite(strPart, errno);
    }
    std::uint64_t ullLength = 0;
    std::optional<int> nResult = eResultOk;
    for (int nTry = 1; nTry <= g_nTries; ++nTry)
    {
        nResult = Transfer(tContext.tOut, tSession, tOptions, tProgress, ullLength);
        if (!nResult || !GoesOnAfter(*nResult) || !CInterrupt::Instance().Wait(1000 * nTry))
        {
            break;
        }
        tContext.tOut.Status("the connection broke; going on", true);
    }
    const bool bClosed = std::fclose(tProgress.pFile) == 0;
    tContext.tOut.EndStatus();
    if (tProgress.nError != 0 || !bClosed)
    {
        CantWrite(strPart, tProgress.nError != 0 ? tProgress.nError : errno);
    }
    if (tProgress.ullBytes == 0)
    {
        std::filesystem::remove(strPart, tError);
    }
    if (!nResult)
    {
        throw CFailure(eExitFailed, "the download was stopped; the same command goes on with it");
    }
    Check(*nResult, "downloading");
    std::filesystem::rename(strPart, tOptions.strOut);
    tContext.tOut.Say("{}: {}{}", tOptions.strOut, SizeText(static_cast<double>(tProgress.ullBytes)),
                      ullResumed > 0 ? ", of which " + SizeText(static_cast<double>(ullResumed)) + " were there before"
                                     : "");
    tContext.tOut.Result({{"file", tOptions.strOut}, {"bytes", tProgress.ullBytes}, {"resumed_at", ullResumed}});
    return eExitDone;
}

// The files of a kind that the device has. Asked under a media connection, whichever.
int List(tagContext& tContext, CSession const& tSession, tagDownloadOptions const& tOptions)
{
    CMedia tParent(&ClientAdapter_RealStreamDisconnect);
    tagRealStreamPara tStream{};
    tStream.dwStreamKind = eStreamMain;
    Check(ClientAdapter_RealStreamConnect(tParent.Target(), tSession.Login(), &tStream), "opening a connection");
    auto tFactor = Sized<tagFileQueryFactor>();
    tFactor.dwKind = static_cast<std::uint32_t>(*NamesOf<eFileKind>().Find(tOptions.strKind));
    tFactor.dwChannel = tOptions.tSpan.dwChannel;
    tFactor.dwTypes = tOptions.tSpan.Types();
    tFactor.llStartUs = tOptions.tSpan.FromUs();
    tFactor.llEndUs = tOptions.tSpan.ToUs();
    CMedia tQuery(&ClientAdapter_FileQueryDisconnect);
    Check(ClientAdapter_FileQueryConnect(tQuery.Target(), tParent.Id(), &tFactor), "searching for files");
    json tRows = json::array();
    auto t = Sized<tagFileQueryResult>();
    int nResult = eResultOk;
    while ((nResult = ClientAdapter_FileQueryNext(tQuery.Id(), &t)) == eResultOk)
    {
        tRows.push_back(ToJson(t));
    }
    if (nResult != eResultNoMoreEntries)
    {
        throw CFailure(nResult, "reading the files found");
    }
    tContext.tOut.Table(
        {{"START", "start"}, {"KIND", "kind"}, {"BYTES", "length"}, {"LOCKED", "locked"}, {"FILE", "file"}}, tRows);
    tContext.tOut.Result({{"files", tRows}});
    return eExitDone;
}

int Run(tagContext& tContext, tagDownloadOptions const& tOptions)
{
    if (!tOptions.bList && tOptions.strOut.empty())
    {
        throw CFailure(eExitUsage, "a file to write to is missing: tessaro download ADDRESS FILE");
    }
    const CSession tSession(tContext, tOptions.strAddress);
    tSession.NeedsDevice("files");
    return tOptions.bList ? List(tContext, tSession, tOptions) : Fetch(tContext, tSession, tOptions);
}
} // namespace

void DeclareDownload(CLine& tLine)
{
    auto pt = std::make_shared<tagDownloadOptions>();
    tLine.Option("address", pt->strAddress, g_szAddressHelp).Needed();
    tLine.Option("out", pt->strOut, "the file to write; until it is complete its name ends in .part");
    AddSpanOptions(tLine, pt->tSpan);
    tLine.Option("--file", pt->strFile, "a file by its name on the device; else the channel's recordings of the time")
        .Value("NAME");
    tLine.Option("--kind", pt->strKind, "what it is: " + NamesOf<eFileKind>().List())
        .OneOf({"any", "recording", "picture", "configuration", "firmware", "log", "support", "audio"})
        .Value("KIND");
    tLine
        .Option("--format", pt->strFormat,
                "how recordings are packed: mp4, mpeg_ts, or native as they lie on the device")
        .OneOf({"native", "mp4", "mpeg_ts"})
        .Value("KIND");
    tLine.Flag("--list", pt->bList, "show the files of the kind instead");
    tLine.Does([pt](tagContext& tContext) { return Run(tContext, *pt); });
}
} // namespace tessaro
