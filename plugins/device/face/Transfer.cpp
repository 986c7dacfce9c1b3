// Transparent channels, files to the device, frames to its windows.

#include "plugins/device/Fleet.h"
#include "plugins/device/Text.h"
#include "plugins/device/face/Operations.h"

#include <fstream>
#include <iterator>

namespace device
{
namespace
{
using Adapter_ProtocolSet::ReadRecord;

constexpr std::size_t g_nUploadBlock = 256 << 10;
constexpr int64_t g_llUploadStepUs = 20000;
} // namespace

// --- transparent channels --------------------------------------------------------------------------------------------

bool CSerialChannel::Close()
{
    {
        const CDevice::CLock tLock(Device());
        Device().Part<CSerial>().Close(m_dwPort);
    }
    return m_tCallback.Close();
}

int Serve(tagCall<&CClientProtocolBase::TransparentChannelConnect>, void** phChannel, void* hParent,
          tagTransparentChannelPara* ptPara)
{
    return AskWith<CMedia>(hParent, eUserOperator,
                           [&](CMedia const& tParent)
                           {
                               tagTransparentChannelPara tPara{};
                               int nResult = ReadRecord(tPara, ptPara);
                               if (nResult == eResultOk && phChannel)
                               {
                                   const CDevice::CLock tLock(tParent.Device());
                                   nResult = tParent.Device().Part<CSerial>().Open(tPara);
                               }
                               if (nResult == eResultOk && phChannel)
                               {
                                   const auto pChannel = std::make_shared<CSerialChannel>(tParent, tPara.dwPort);
                                   *phChannel = Face().tHandles.Add(pChannel);
                                   pChannel->m_hChannel = *phChannel;
                               }
                               return phChannel ? nResult : int{eResultBadArgument};
                           });
}

int Serve(tagCall<&CClientProtocolBase::TransparentChannelWrite>, void* hChannel, tagBuffer* ptBuffer)
{
    const auto pChannel = Face().tHandles.Find<CSerialChannel>(hChannel);
    if (!pChannel)
    {
        return eResultBadHandle;
    }
    if (!ptBuffer || (!ptBuffer->pData && ptBuffer->dwLength != 0))
    {
        return eResultBadArgument;
    }
    return Ask(*pChannel, eUserOperator,
               [&]() -> int
               {
                   std::string strAnswer;
                   {
                       const CDevice::CLock tLock(pChannel->Device());
                       strAnswer = pChannel->Device().Part<CSerial>().Write(
                           pChannel->m_dwPort, {reinterpret_cast<char const*>(ptBuffer->pData), ptBuffer->dwLength});
                   }
                   if (!strAnswer.empty())
                   {
                       DeliveryWorker().Post(
                           [pChannel, strAnswer]
                           {
                               std::string strBytes = strAnswer;
                               tagBuffer tBuffer{reinterpret_cast<unsigned char*>(strBytes.data()),
                                                 static_cast<uint32_t>(strBytes.size())};
                               pChannel->m_tCallback.Call(pChannel->m_hChannel.load(), &tBuffer);
                           });
                   }
                   return eResultOk;
               });
}

int Serve(tagCall<&CClientProtocolBase::TransparentChannelCB>, void* hChannel, TransparentChannelCallback pfnData,
          unsigned long dwUser)
{
    return With<CSerialChannel>(hChannel, [&](CSerialChannel& tChannel)
                                { return Ended(tChannel.m_tCallback.Set(pfnData, dwUser)); });
}

// --- uploads ---------------------------------------------------------------------------------------------------------

int Serve(tagCall<&CClientProtocolBase::FileUploadConnect>, void** phUpload, void* hLogin, tagFileUploadPara* ptPara)
{
    return AskWith<CLogin>(
        hLogin, eUserAdministrator,
        [&](CLogin const& tLogin) -> int
        {
            tagFileUploadPara tPara{};
            if (!phUpload || ReadRecord(tPara, ptPara) != eResultOk || tPara.ullLength > SIZE_MAX / 2)
            {
                return eResultBadArgument;
            }
            if (!CFiles::CanReceive(tPara.dwKind))
            {
                return tPara.dwKind == eFileAny || tPara.dwKind > eFileAudio ? int{eResultBadArgument}
                                                                             : int{eResultNotSupported};
            }
            std::vector<unsigned char> abyFile;
            const std::string strPath = Text(tPara.szPath);
            if (!strPath.empty())
            {
                std::ifstream tFile(strPath, std::ios::binary);
                if (!tFile)
                {
                    return eResultNotFound;
                }
                abyFile.assign(std::istreambuf_iterator<char>(tFile), {});
            }
            else if (tPara.pbyData)
            {
                abyFile.assign(tPara.pbyData, tPara.pbyData + tPara.ullLength);
            }
            else
            {
                return eResultBadArgument;
            }
            const auto pUpload =
                std::make_shared<CUpload>(tLogin, tPara.dwKind, Text(tPara.szFile),
                                          std::make_shared<std::vector<unsigned char> const>(std::move(abyFile)));
            *phUpload = Face().tHandles.Add(pUpload);
            pUpload->m_hUpload = *phUpload;
            return eResultOk;
        });
}

bool CUpload::Close()
{
    Control(eTransferStop);
    return m_tCallback.Close();
}

int CUpload::Control(eFileTransferControl eControl)
{
    const std::lock_guard tLock(m_tMutex);
    if (eControl < eTransferStart || eControl > eTransferStop)
    {
        return eResultBadArgument;
    }
    if (m_eState == eState::Over)
    {
        return eControl == eTransferStop ? int{eResultOk} : int{eResultRefused};
    }
    const bool bStart = eControl == eTransferStart && m_eState == eState::Waiting;
    m_eState = eControl == eTransferStart   ? eState::Running
               : eControl == eTransferPause ? eState::Waiting
                                            : eState::Over;
    m_dwRun += bStart ? 0 : 1;
    if (bStart)
    {
        DeliveryWorker().Post([pSelf = shared_from_this()] { pSelf->Step(); });
    }
    return eResultOk;
}

// False when it has been ended in between.
bool CUpload::Report(uint32_t dwState, int nResult)
{
    {
        const std::lock_guard tLock(m_tMutex);
        if (m_eState != eState::Running)
        {
            return false;
        }
        m_eState = dwState == eUploadRunning ? eState::Running : eState::Over;
    }
    m_tCallback.Call(m_hUpload.load(),
                     tagFileUploadState{dwState, static_cast<uint32_t>(nResult), m_nSent, m_pData->size()});
    return true;
}

// One block; the last one is followed by the device's word on the whole.
void CUpload::Step()
{
    if (!Device().IsUp())
    {
        Report(eUploadFailed, eResultConnectionLost);
        return;
    }
    {
        const std::lock_guard tLock(m_tMutex);
        if (m_eState != eState::Running)
        {
            return;
        }
        m_nSent = std::min(m_nSent + g_nUploadBlock, m_pData->size());
    }
    if (m_nSent < m_pData->size())
    {
        if (Report(eUploadRunning, eResultOk))
        {
            DeliveryWorker().At(SteadyUs() + g_llUploadStepUs, [pSelf = shared_from_this()] { pSelf->Step(); });
        }
        return;
    }
    if (Report(eUploadRunning, eResultOk))
    {
        int nResult = eResultOk;
        {
            const CDevice::CLock tLock(Device());
            nResult = Device().Part<CFiles>().Receive(CallerOf(Session()), m_dwKind, m_strName, m_pData);
        }
        Report(nResult == eResultOk ? eUploadFinished : eUploadFailed, nResult);
    }
}

int Serve(tagCall<&CClientProtocolBase::FileUploadControl>, void* hUpload, eFileTransferControl eControl)
{
    return AskWith<CUpload>(hUpload, 0, [&](CUpload& tUpload) { return tUpload.Control(eControl); });
}

int Serve(tagCall<&CClientProtocolBase::FileUploadCB>, void* hUpload, FileUploadCallback pfnState, unsigned long dwUser)
{
    return With<CUpload>(hUpload, [&](CUpload& tUpload) { return Ended(tUpload.m_tCallback.Set(pfnState, dwUser)); });
}

// --- downloads -------------------------------------------------------------------------------------------------------

bool CFetch::Close()
{
    m_pDownload->Close();
    return m_pSink->m_tCallback.Close();
}

int Serve(tagCall<&CClientProtocolBase::FileDownloadConnect>, void** phDownload, void* hLogin,
          tagFileDownloadPara* ptPara)
{
    return AskWith<CLogin>(hLogin, eUserViewer,
                           [&](CLogin const& tLogin) -> int
                           {
                               tagFileDownloadPara tPara{};
                               if (!phDownload || ReadRecord(tPara, ptPara) != eResultOk)
                               {
                                   return eResultBadArgument;
                               }
                               const bool bSecret = tPara.dwKind == eFileConfiguration || tPara.dwKind == eFileSupport;
                               if (bSecret && tLogin.Session().Level() < eUserAdministrator)
                               {
                                   return eResultWrongLogin;
                               }
                               const auto pSink = std::make_shared<CBlockSink>();
                               std::shared_ptr<CDownload> pDownload;
                               const int nResult = CDownload::Open(tLogin.DevicePointer(), tPara, pSink, pDownload);
                               if (nResult == eResultOk)
                               {
                                   Adapter_ProtocolSet::WriteRecord(ptPara, tPara);
                                   *phDownload =
                                       Face().tHandles.Add(std::make_shared<CFetch>(tLogin, pSink, pDownload));
                                   pSink->m_hDownload = *phDownload;
                               }
                               return nResult;
                           });
}

int Serve(tagCall<&CClientProtocolBase::FileDownloadControl>, void* hDownload, eFileTransferControl eControl)
{
    return AskWith<CFetch>(hDownload, eUserViewer,
                           [&](CFetch const& tFetch) { return tFetch.Download().Control(eControl); });
}

int Serve(tagCall<&CClientProtocolBase::FileDownloadCB>, void* hDownload, FileDownloadCallback pfnData,
          unsigned long dwUser)
{
    return With<CFetch>(hDownload,
                        [&](CFetch const& tFetch) { return Ended(tFetch.Sink().m_tCallback.Set(pfnData, dwUser)); });
}

// --- frames to a window ----------------------------------------------------------------------------------------------

bool CWindowTransfer::Close()
{
    const CDevice::CLock tLock(Device());
    Device().Part<CWall>().CloseTransfer(m_dwWindow);
    return true;
}

int Serve(tagCall<&CClientProtocolBase::StreamTransferConnect>, void** phTransfer, void* hLogin,
          unsigned long dwChannel, tagStreamTransferPara* ptPara)
{
    return AskWith<CLogin>(
        hLogin, eUserOperator,
        [&](CLogin const& tLogin)
        {
            tagStreamTransferPara tPara{};
            int nResult = ReadRecord(tPara, ptPara);
            if (nResult == eResultOk && phTransfer)
            {
                const CDevice::CLock tLock(tLogin.Device());
                nResult = tLogin.Device().Part<CWall>().OpenTransfer(static_cast<uint32_t>(dwChannel), tPara);
            }
            if (nResult == eResultOk && phTransfer)
            {
                *phTransfer =
                    Face().tHandles.Add(std::make_shared<CWindowTransfer>(tLogin, static_cast<uint32_t>(dwChannel)));
            }
            return phTransfer ? nResult : int{eResultBadArgument};
        });
}

int Serve(tagCall<&CClientProtocolBase::StreamTransferSend>, void* hTransfer, tagStreamTransferFrame* ptFrame)
{
    return AskWith<CWindowTransfer>(
        hTransfer, eUserOperator,
        [&](CWindowTransfer const& tTransfer)
        {
            tagStreamTransferFrame tFrame{};
            const int nResult = ReadRecord(tFrame, ptFrame);
            const CDevice::CLock tLock(tTransfer.Device());
            return nResult ? nResult : tTransfer.Device().Part<CWall>().Transfer(tTransfer.m_dwWindow, tFrame);
        });
}

// --- recordings of another device ------------------------------------------------------------------------------------

int Serve(tagCall<&CClientProtocolBase::TransmitHistoryStreamQueryConnect>, void** phQuery, void* hLogin,
          tagTransmitHistoryStreamQueryFactor* ptFactor)
{
    return AskWith<CLogin>(
        hLogin, eUserViewer,
        [&](CLogin const& tLogin) -> int
        {
            tagTransmitHistoryStreamQueryFactor t{};
            if (!phQuery || ReadRecord(t, ptFactor) != eResultOk || t.dwChannel >= 64)
            {
                return eResultBadArgument;
            }
            const auto pOther = Fleet().Find(Text(t.szAddress), t.dwPort);
            if (!pOther || !pOther->IsUp())
            {
                return eResultUnreachable;
            }
            const CDevice::CLock tLock(*pOther);
            uint32_t dwLevel = 0;
            if (const int nResult = pOther->Part<CUsers>().Check(Text(t.szUserName), Text(t.szPassword), dwLevel))
            {
                return nResult;
            }
            tagHistoryStreamMultiTypeQueryFactor tFactor{};
            tFactor.dwTypes = t.dwTypes;
            tFactor.ullChannels = uint64_t{1} << t.dwChannel;
            tFactor.dwStreamKind = t.dwStreamKind;
            tFactor.llStartUs = t.llStartUs;
            tFactor.llEndUs = t.llEndUs;
            std::vector<tagHistoryStreamMultiTypeQueryResult> atFound;
            const int nResult = pOther->Part<CStorage>().QueryTypes(tFactor, atFound);
            if (nResult == eResultOk)
            {
                *phQuery = Face().tHandles.Add(
                    std::make_shared<CQuery<tagHistoryStreamMultiTypeQueryResult>>(tLogin, std::move(atFound)));
            }
            return nResult;
        });
}
} // namespace device
