// Configuration blocks, and the parameters of the plug-in itself.

#include "plugins/device/Fleet.h"
#include "plugins/device/Text.h"
#include "plugins/device/face/Operations.h"

#include <cstring>
#include <stdexcept>

namespace device
{
namespace
{
int Write(CDevice& tDevice, tagCaller const& tCaller, uint32_t dwType, uint32_t dwIndex, uint32_t const* pdwExtra,
          unsigned char const* pData, std::size_t nLength)
{
    uint32_t dwSize = 0;
    std::memcpy(&dwSize, pData, sizeof dwSize);
    if (pdwExtra[0] != 0 && pdwExtra[0] != dwSize)
    {
        return eResultBadArgument;
    }
    const CDevice::CLock tLock(tDevice);
    return tDevice.Part<CConfiguration>().Write(tCaller, dwType, dwIndex, pdwExtra[1], pData, nLength);
}

// Either envelope: both have the same members.
template <class Envelope>
int WriteBlock(void* hLogin, Envelope* ptConfig)
{
    if (!ptConfig)
    {
        return Face().tHandles.Find<CLogin>(hLogin) ? int{eResultBadArgument} : int{eResultBadHandle};
    }
    return AskWith<CLogin>(hLogin, eUserAdministrator,
                           [&](CLogin const& tLogin)
                           {
                               return Write(tLogin.Device(), CallerOf(tLogin.Session()), ptConfig->type,
                                            ptConfig->index, ptConfig->extra, ptConfig->data, sizeof ptConfig->data);
                           });
}

template <class Envelope>
int ReadBlock(void* hLogin, Envelope* ptConfig)
{
    if (!ptConfig)
    {
        return Face().tHandles.Find<CLogin>(hLogin) ? int{eResultBadArgument} : int{eResultBadHandle};
    }
    return AskWith<CLogin>(hLogin, eUserViewer,
                           [&](CLogin const& tLogin)
                           {
                               alignas(8) unsigned char abyRecord[4096] = {};
                               uint32_t dwLength = 0;
                               const CDevice::CLock tLock(tLogin.Device());
                               const int nResult = tLogin.Device().Part<CConfiguration>().Read(
                                   CallerOf(tLogin.Session()), ptConfig->type, ptConfig->index, ptConfig->extra[1],
                                   abyRecord, dwLength);
                               if (nResult == eResultOk)
                               {
                                   std::memcpy(ptConfig->data, abyRecord, dwLength);
                                   std::memset(ptConfig->data + dwLength, 0, sizeof ptConfig->data - dwLength);
                                   ptConfig->extra[0] = dwLength;
                               }
                               return nResult;
                           });
}

int ReadFault(void const* pPara, unsigned long dwLength, tagDeviceFault& tFault)
{
    auto const* const ptFault = static_cast<tagDeviceFault const*>(pPara);
    return dwLength < sizeof ptFault->dwSize || !ptFault || ptFault->dwSize > dwLength
               ? int{eResultBadArgument}
               : Adapter_ProtocolSet::ReadRecord(tFault, ptFault);
}

int SetFault(void const* pPara, unsigned long dwLength)
{
    tagDeviceFault tFault{};
    if (const int nResult = ReadFault(pPara, dwLength, tFault))
    {
        return nResult;
    }
    const std::string strAddress = Text(tFault.szAddress);
    std::vector<std::shared_ptr<CDevice>> apDevices = Fleet().All();
    if (!strAddress.empty())
    {
        apDevices = {Fleet().Find(strAddress)};
    }
    int nResult = eResultOk;
    for (auto const& pDevice : apDevices)
    {
        if (!pDevice)
        {
            return eResultUnreachable;
        }
        const CDevice::CLock tLock(*pDevice);
        const int nThis = pDevice->Part<CFaults>().Set(tFault);
        nResult = nResult == eResultOk ? nThis : nResult;
    }
    return nResult;
}

int GetFault(void* pPara, unsigned long dwLength)
{
    tagDeviceFault tFault{};
    if (const int nResult = ReadFault(pPara, dwLength, tFault))
    {
        return nResult;
    }
    const std::string strAddress = Text(tFault.szAddress);
    const auto pDevice = Fleet().Find(strAddress);
    if (!pDevice)
    {
        return eResultUnreachable;
    }
    const CDevice::CLock tLock(*pDevice);
    const int nResult = pDevice->Part<CFaults>().Get(tFault);
    CopyText(tFault.szAddress, strAddress);
    return nResult ? nResult : Adapter_ProtocolSet::WriteRecord(static_cast<tagDeviceFault*>(pPara), tFault);
}

int GetFleet(void* pPara, unsigned long dwLength)
{
    const std::string strFile = Fleet().File();
    if (!pPara || strFile.empty())
    {
        return pPara ? int{eResultNotFound} : int{eResultBadArgument};
    }
    if (strFile.size() >= dwLength)
    {
        return eResultNoResources;
    }
    std::memcpy(pPara, strFile.c_str(), strFile.size() + 1);
    return eResultOk;
}

int ReadFleet(void const* pPara, unsigned long dwLength)
{
    if (!pPara || dwLength == 0)
    {
        return eResultBadArgument;
    }
    try
    {
        auto const* const szPath = static_cast<char const*>(pPara);
        Fleet().Load(std::string(szPath, strnlen(szPath, dwLength)));
    }
    catch (std::runtime_error const& tError)
    {
        Log(3, tError.what());
        return eResultBadArgument;
    }
    return eResultOk;
}
} // namespace

int Serve(tagCall<&CClientProtocolBase::SetConfig>, void* hLogin, tagConfigInformation* ptConfig)
{
    return WriteBlock(hLogin, ptConfig);
}

int Serve(tagCall<&CClientProtocolBase::SetConfigV2>, void* hLogin, tagConfigInformationV2* ptConfig)
{
    return WriteBlock(hLogin, ptConfig);
}

int Serve(tagCall<&CClientProtocolBase::GetConfig>, void* hLogin, tagConfigInformation* ptConfig)
{
    return ReadBlock(hLogin, ptConfig);
}

int Serve(tagCall<&CClientProtocolBase::GetConfigV2>, void* hLogin, tagConfigInformationV2* ptConfig)
{
    return ReadBlock(hLogin, ptConfig);
}

int Serve(tagCall<&CClientProtocolBase::SetConfigBySn>, char const* szSerial, tagConfigInformationV2* ptConfig)
{
    if (!szSerial || !ptConfig)
    {
        return eResultBadArgument;
    }
    const auto pDevice = Fleet().BySerialNumber(szSerial);
    if (!pDevice)
    {
        return eResultNotFound;
    }
    const int nResult = pDevice->Admit(nullptr, 5000);
    return nResult ? nResult
                   : Write(*pDevice, {}, ptConfig->type, ptConfig->index, ptConfig->extra, ptConfig->data,
                           sizeof ptConfig->data);
}

int Serve(tagCall<&CClientProtocolBase::SetMiscPara>, int, unsigned long dwType, void* pPara, unsigned long dwLength)
{
    switch (dwType)
    {
    case eMiscFault:
        return SetFault(pPara, dwLength);
    case eMiscFleet:
        return ReadFleet(pPara, dwLength);
    default:
        return eResultNotSupported;
    }
}

int Serve(tagCall<&CClientProtocolBase::GetMiscPara>, int, unsigned long dwType, void* pPara, unsigned long dwLength)
{
    switch (dwType)
    {
    case eMiscFault:
        return GetFault(pPara, dwLength);
    case eMiscFleet:
        return GetFleet(pPara, dwLength);
    default:
        return eResultNotSupported;
    }
}
} // namespace device
