#include "plugins/onvif/Upload.h"

#include "plugins/onvif/Operations.h"

#include "plugins/common/Text.h"

#include <algorithm>
#include <fstream>
#include <iterator>

namespace onvifclient
{
namespace
{
using namespace onvif;

constexpr auto g_tLimit = std::chrono::minutes(30); // of the file, on a slow line
constexpr auto g_tMostDelay = std::chrono::minutes(5);
constexpr uint64_t g_ullStep = 256 << 10;

int ResultOf(tagHttpAnswer const& tAnswer)
{
    return tAnswer.nResult != eResultOk                       ? tAnswer.nResult
           : tAnswer.nStatus / 100 == 2                       ? int{eResultOk}
           : tAnswer.nStatus == 401 || tAnswer.nStatus == 403 ? int{eResultWrongLogin}
           : tAnswer.nStatus == 413                           ? int{eResultDeviceFull}
                                                              : int{eResultRefused};
}
} // namespace

bool CUpload::Close()
{
    Control(eTransferStop);
    return m_tCallback.Close();
}

int CUpload::Control(eFileTransferControl eControl)
{
    if (eControl < eTransferStart || eControl > eTransferStop)
    {
        return eResultBadArgument;
    }
    std::string strFile;
    {
        const std::lock_guard tLock(m_tMutex);
        if (m_eState == eState::Over)
        {
            return eControl == eTransferStop ? int{eResultOk} : int{eResultRefused};
        }
        if (eControl == eTransferPause)
        {
            // A device takes the file in one piece.
            return m_eState == eState::Waiting ? int{eResultOk} : int{eResultNotSupported};
        }
        const bool bRuns = m_eState == eState::Running;
        m_eState = eControl == eTransferStart ? eState::Running : eState::Over;
        if (eControl == eTransferStop || bRuns)
        {
            strFile = {};
        }
        else
        {
            const auto pEngine = Engine();
            m_pDelivery = pEngine ? std::make_shared<CDelivery>(pEngine) : nullptr;
            strFile.swap(m_strFile);
        }
    }
    if (eControl == eTransferStop)
    {
        Http().End(m_pGroup, eResultRefused);
    }
    else if (!strFile.empty())
    {
        Http().Begin(Run(shared_from_this(), std::move(strFile)));
    }
    return eResultOk;
}

// On the HTTP thread. Over with its first word that isn't about progress.
void CUpload::Report(uint32_t dwState, int nResult, uint64_t ullSent)
{
    const std::lock_guard tLock(m_tMutex);
    if (m_eState != eState::Running || !m_pDelivery)
    {
        return;
    }
    m_eState = dwState == eUploadRunning ? eState::Running : eState::Over;
    m_pDelivery->Add([pSelf = shared_from_this(),
                      tState = tagFileUploadState{dwState, static_cast<uint32_t>(nResult), ullSent, m_ullLength}]
                     { pSelf->m_tCallback.Call(pSelf->m_hUpload.load(), tState); });
}

// The device is asked where the file goes, and how long it needs to get ready for it.
rtsp::CTask<> CUpload::Run(std::shared_ptr<CUpload> pSelf, std::string strFile)
{
    CClient& tClient = pSelf->Login().Client();
    tagRequest tRequest{eService::Device, pSelf->m_bFirmware ? "StartFirmwareUpgrade" : "StartSystemRestore"};
    const CAnswer tAnswer = co_await tClient.CallAsync(std::move(tRequest));
    const std::string strTo(onvif::Text(tAnswer.Body(), "UploadUri"));
    if (strTo.empty())
    {
        pSelf->Report(eUploadFailed, tAnswer ? int{eResultRefused} : tAnswer.Result(), 0);
        co_return;
    }
    const std::chrono::milliseconds tDelay(ParseDuration(onvif::Text(tAnswer.Body(), "UploadDelay")).value_or(0));
    co_await tClient.Http().Until(pSelf->m_pGroup,
                                  Clock::now() + std::clamp<std::chrono::milliseconds>(tDelay, {}, g_tMostDelay));
    const std::function<void(uint64_t)> fnSent = [pSelf](uint64_t ullSent)
    {
        if (ullSent >= pSelf->m_ullTold + g_ullStep)
        {
            pSelf->m_ullTold = ullSent;
            pSelf->Report(eUploadRunning, eResultOk, std::min(ullSent, pSelf->m_ullLength));
        }
    };
    const std::string strType = "application/octet-stream";
    const tagHttpAnswer tTaken =
        co_await tClient.PutAsync(strTo, std::move(strFile), strType, g_tLimit, pSelf->m_pGroup, fnSent);
    const int nResult = ResultOf(tTaken);
    pSelf->Report(nResult == eResultOk ? eUploadFinished : eUploadFailed, nResult,
                  nResult == eResultOk ? pSelf->m_ullLength : pSelf->m_ullTold);
}

// --- entry points ----------------------------------------------------------------------------------------------------

namespace
{
int ReadFile(tagFileUploadPara const& tPara, std::string& strFile)
{
    const std::string strPath = plugin::Text(tPara.szPath);
    if (!strPath.empty())
    {
        std::ifstream tFile(strPath, std::ios::binary);
        if (!tFile)
        {
            return eResultNotFound;
        }
        strFile.assign(std::istreambuf_iterator<char>(tFile), {});
    }
    else if (tPara.pbyData && tPara.ullLength <= SIZE_MAX / 2)
    {
        strFile.assign(reinterpret_cast<char const*>(tPara.pbyData), static_cast<std::size_t>(tPara.ullLength));
    }
    return strFile.empty() ? int{eResultBadArgument} : int{eResultOk};
}
} // namespace

int Serve(tagCall<&CClientProtocolBase::FileUploadConnect>, void** phUpload, void* hLogin, tagFileUploadPara* ptPara)
{
    return With<CLogin>(hLogin,
                        [&](CLogin& tLogin) -> int
                        {
                            tagFileUploadPara tPara{};
                            if (!phUpload || Adapter_ProtocolSet::ReadRecord(tPara, ptPara) != eResultOk)
                            {
                                return eResultBadArgument;
                            }
                            if (tPara.dwKind != eFileFirmware && tPara.dwKind != eFileConfiguration)
                            {
                                return tPara.dwKind == eFileAny || tPara.dwKind > eFileAudio ? int{eResultBadArgument}
                                                                                             : int{eResultNotSupported};
                            }
                            std::string strFile;
                            if (const int nResult = ReadFile(tPara, strFile))
                            {
                                return nResult;
                            }
                            const auto pUpload = std::make_shared<CUpload>(
                                tLogin.shared_from_this(), tPara.dwKind == eFileFirmware, std::move(strFile));
                            *phUpload = Face().tHandles.Add(pUpload);
                            pUpload->m_hUpload = *phUpload;
                            return eResultOk;
                        });
}

int Serve(tagCall<&CClientProtocolBase::FileUploadControl>, void* hUpload, eFileTransferControl eControl)
{
    return With<CUpload>(hUpload, [&](CUpload& tUpload) { return tUpload.Control(eControl); });
}

int Serve(tagCall<&CClientProtocolBase::FileUploadCB>, void* hUpload, FileUploadCallback pfnState, unsigned long dwUser)
{
    return With<CUpload>(hUpload, [&](CUpload& tUpload) { return Ended(tUpload.m_tCallback.Set(pfnState, dwUser)); });
}
} // namespace onvifclient
