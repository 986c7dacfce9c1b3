// What needs no login: devices that are found or register themselves, versions, fonts.

#include "plugins/device/Discovery.h"
#include "plugins/device/Fleet.h"
#include "plugins/device/Text.h"
#include "plugins/device/face/Operations.h"
#include "plugins/device/media/Lattice.h"

#include <cstring>

namespace device
{
namespace
{
using Adapter_ProtocolSet::ReadRecord;

// Where to look; null: everywhere.
int ReadWhere(tagDeviceProbeParameter const* ptPara, tagDeviceProbeParameter& tWhere)
{
    tWhere = {};
    tWhere.dwSize = sizeof tWhere;
    return ptPara ? ReadRecord(tWhere, ptPara) : int{eResultOk};
}

// fnAnswer with a device that was asked for by its address, and let the call in.
template <class F>
int AskAddress(char const* szAddress, unsigned long dwPort, unsigned long dwTimeoutMs, F fnAnswer)
{
    if (!szAddress || !*szAddress)
    {
        return eResultBadArgument;
    }
    const auto pDevice = Fleet().Find(szAddress, static_cast<uint32_t>(dwPort));
    if (!pDevice)
    {
        return eResultUnreachable;
    }
    const int nResult = pDevice->Admit(nullptr, dwTimeoutMs ? static_cast<uint32_t>(dwTimeoutMs) : 5000);
    return nResult ? nResult : fnAnswer(*pDevice);
}

// The same by hardware address, and with a user's name and password, of an administrator.
template <class F>
int AskMac(unsigned char const* pbyMac, tagDeviceProbeUserLoginPara const* ptLogin, F fnAnswer)
{
    tagDeviceProbeUserLoginPara tLogin{};
    if (!pbyMac || (ptLogin && ReadRecord(tLogin, ptLogin) != eResultOk))
    {
        return eResultBadArgument;
    }
    char szMac[18];
    std::snprintf(szMac, sizeof szMac, "%02x:%02x:%02x:%02x:%02x:%02x", pbyMac[0], pbyMac[1], pbyMac[2], pbyMac[3],
                  pbyMac[4], pbyMac[5]);
    const auto pDevice = Fleet().ByMac(szMac);
    if (!pDevice)
    {
        return eResultNotFound;
    }
    if (const int nResult = pDevice->Admit(nullptr, 5000))
    {
        return nResult;
    }
    const CDevice::CLock tLock(*pDevice);
    tagCaller tCaller{Text(tLogin.szUserName)};
    const int nResult = ptLogin
                            ? pDevice->Part<CUsers>().Check(tCaller.strUser, Text(tLogin.szPassword), tCaller.dwLevel)
                            : int{eResultOk};
    return nResult                                ? nResult
           : tCaller.dwLevel < eUserAdministrator ? int{eResultWrongLogin}
                                                  : fnAnswer(*pDevice, tCaller);
}

// What can be changed of a device that was found: its address and names.
int Configure(CDevice& tDevice, tagCaller const& tCaller, tagDeviceProbeConfig const& tWanted)
{
    CConfiguration& tConfiguration = tDevice.Part<CConfiguration>();
    auto tNetwork = tConfiguration.Get<tagConfigNetwork>();
    auto tIdentity = tConfiguration.Get<tagConfigIdentity>();
    const auto fnTake = [](auto& szTo, auto const& szFrom)
    {
        if (szFrom[0] != '\0')
        {
            CopyText(szTo, Text(szFrom));
        }
    };
    fnTake(tNetwork.szAddress, tWanted.szAddress);
    fnTake(tNetwork.szGateway, tWanted.szGateway);
    fnTake(tIdentity.szName, tWanted.szName);
    fnTake(tIdentity.szLocation, tWanted.szLocation);
    tNetwork.dwDevicePort = tWanted.dwPort ? tWanted.dwPort : tNetwork.dwDevicePort;
    tNetwork.bDhcp = tWanted.dwFlags & eProbeDhcp ? 1 : 0;
    const auto fnWrite = [&](uint32_t dwType, auto const& tRecord)
    {
        return tConfiguration.Write(tCaller, dwType, 0, 0, reinterpret_cast<unsigned char const*>(&tRecord),
                                    sizeof tRecord);
    };
    const int nResult = fnWrite(eConfigNetwork, tNetwork);
    return nResult ? nResult : fnWrite(eConfigIdentity, tIdentity);
}
} // namespace

// --- probing ---------------------------------------------------------------------------------------------------------

int Serve(tagCall<&CClientProtocolBase::DeviceProbeStart>, tagDeviceProbeParameter* ptPara,
          DeviceProbeCallback pfnProbe)
{
    tagDeviceProbeParameter tWhere;
    if (!pfnProbe || ReadWhere(ptPara, tWhere) != eResultOk)
    {
        return eResultBadArgument;
    }
    Face().tProbe.Set(pfnProbe);
    Discovery().Probe(tWhere,
                      [](tagDeviceProbeConfig const& tFound)
                      {
                          tagDeviceProbeConfig tConfig = tFound;
                          Face().tProbe.Call(&tConfig);
                      });
    return eResultOk;
}

int Serve(tagCall<&CClientProtocolBase::DeviceProbeStop>)
{
    Discovery().StopProbe();
    return Ended(Face().tProbe.Set(nullptr));
}

int Serve(tagCall<&CClientProtocolBase::DeviceProbeResearch>, tagDeviceProbeParameter* ptPara)
{
    tagDeviceProbeParameter tWhere;
    return ReadWhere(ptPara, tWhere) != eResultOk ? int{eResultBadArgument}
           : Discovery().Again(tWhere)            ? int{eResultOk}
                                                  : int{eResultNotFound};
}

int Serve(tagCall<&CClientProtocolBase::DeviceProbeSetDeviceConfig>, unsigned char const* pbyMac, unsigned short,
          tagDeviceProbeConfig* ptConfig)
{
    tagDeviceProbeConfig tWanted{};
    return ReadRecord(tWanted, ptConfig) != eResultOk ? int{eResultBadArgument}
                                                      : AskMac(pbyMac, nullptr,
                                                               [&](CDevice& tDevice, tagCaller const& tCaller)
                                                               { return Configure(tDevice, tCaller, tWanted); });
}

int Serve(tagCall<&CClientProtocolBase::DeviceProbeSetAllDeviceConfig>, tagDeviceProbeParameter* ptPara,
          tagDeviceProbeConfig* ptConfig)
{
    tagDeviceProbeParameter tWhere;
    tagDeviceProbeConfig tWanted{};
    if (ReadWhere(ptPara, tWhere) != eResultOk || ReadRecord(tWanted, ptConfig) != eResultOk)
    {
        return eResultBadArgument;
    }
    tWanted.szAddress[0] = '\0'; // all can't have the same one
    int nResult = eResultOk;
    for (auto const& pDevice : Fleet().Neighbours())
    {
        int nThis = pDevice->Admit(nullptr, 5000);
        if (nThis == eResultOk)
        {
            const CDevice::CLock tLock(*pDevice);
            nThis = Configure(*pDevice, {}, tWanted);
        }
        nResult = nResult ? nResult : nThis;
    }
    return nResult;
}

int Serve(tagCall<&CClientProtocolBase::DeviceProbeSetConfig>, unsigned char const* pbyMac, unsigned short,
          tagDeviceProbeUserLoginPara* ptLogin, tagDeviceProbeConfigInformation* ptConfig)
{
    tagDeviceProbeConfigInformation t{};
    if (!ptLogin || ReadRecord(t, ptConfig) != eResultOk || !t.pbyData || t.dwLength < sizeof(uint32_t))
    {
        return eResultBadArgument;
    }
    return AskMac(
        pbyMac, ptLogin,
        [&](CDevice& tDevice, tagCaller const& tCaller)
        { return tDevice.Part<CConfiguration>().Write(tCaller, t.dwType, t.dwIndex, 0, t.pbyData, t.dwLength); });
}

int Serve(tagCall<&CClientProtocolBase::DeviceProbeGetConfig>, unsigned char const* pbyMac, unsigned short,
          tagDeviceProbeUserLoginPara* ptLogin, tagDeviceProbeConfigInformation* ptConfig)
{
    tagDeviceProbeConfigInformation t{};
    if (!ptLogin || ReadRecord(t, ptConfig) != eResultOk || (!t.pbyData && t.dwCapacity))
    {
        return eResultBadArgument;
    }
    return AskMac(pbyMac, ptLogin,
                  [&](CDevice& tDevice, tagCaller const& tCaller)
                  {
                      alignas(8) unsigned char abyRecord[4096] = {};
                      const int nResult =
                          tDevice.Part<CConfiguration>().Read(tCaller, t.dwType, t.dwIndex, 0, abyRecord, t.dwLength);
                      if (nResult != eResultOk)
                      {
                          return nResult;
                      }
                      const bool bFits = t.dwLength <= t.dwCapacity;
                      if (bFits)
                      {
                          std::memcpy(t.pbyData, abyRecord, t.dwLength);
                      }
                      Adapter_ProtocolSet::WriteRecord(ptConfig, t);
                      return static_cast<int>(bFits ? int{eResultOk} : int{eResultNoResources});
                  });
}

// --- devices that register themselves --------------------------------------------------------------------------------

int Serve(tagCall<&CClientProtocolBase::DeviceRegisterListenStart>, char* szAddress, unsigned long dwPort)
{
    if (dwPort > 65535)
    {
        return eResultBadArgument;
    }
    Discovery().Listen(true, szAddress ? szAddress : "", static_cast<uint32_t>(dwPort));
    return eResultOk;
}

int Serve(tagCall<&CClientProtocolBase::DeviceRegisterListenStop>)
{
    Discovery().Listen(false, "", 0);
    return eResultOk;
}

int Serve(tagCall<&CClientProtocolBase::DeviceRegisterCB>, DeviceRegisterCallback pfnRegister)
{
    Discovery().OnRegister(
        [](tagDeviceRegisterInfo const& tFound)
        {
            tagDeviceRegisterInfo tInfo = tFound;
            Face().tRegister.Call(&tInfo);
        });
    return Ended(Face().tRegister.Set(pfnRegister));
}

// --- one device ------------------------------------------------------------------------------------------------------

int Serve(tagCall<&CClientProtocolBase::DeviceIsOnline>, char const* szAddress, unsigned long dwPort,
          unsigned long dwTimeout)
{
    return AskAddress(szAddress, dwPort, dwTimeout, [](CDevice&) { return static_cast<int>(eResultOk); });
}

int Serve(tagCall<&CClientProtocolBase::GetSDKVersion>, char const* szAddress, unsigned long dwPort,
          unsigned long dwTimeout, eNetworkSDKVersion* peVersion)
{
    return !peVersion ? int{eResultBadArgument}
                      : AskAddress(szAddress, dwPort, dwTimeout,
                                   [&](CDevice const& tDevice) { return tDevice.SDKVersion(*peVersion); });
}

int Serve(tagCall<&CClientProtocolBase::GetDeviceConfigFromHttp>, char const* szAddress,
          tagDeviceConfigFromHttp* ptConfig)
{
    tagDeviceConfigFromHttp t{};
    if (ReadRecord(t, ptConfig) != eResultOk)
    {
        return eResultBadArgument;
    }
    return AskAddress(szAddress, 0, t.dwTimeoutMs,
                      [&](CDevice& tDevice) -> int
                      {
                          const CDevice::CLock tLock(tDevice);
                          const auto tNetwork = tDevice.Part<CConfiguration>().Get<tagConfigNetwork>();
                          if (tNetwork.dwHttpPort == 0 || (t.dwPort ? t.dwPort : 80) != tNetwork.dwHttpPort)
                          {
                              return eResultUnreachable;
                          }
                          uint32_t dwLevel = 0;
                          int nResult = eResultOk;
                          if (t.szUserName[0] != '\0')
                          {
                              nResult = tDevice.Part<CUsers>().Check(Text(t.szUserName), Text(t.szPassword), dwLevel);
                          }
                          t.dwHttpStatus = nResult == eResultOk ? 200 : 401;
                          if (nResult == eResultOk)
                          {
                              const tagDeviceProbeConfig tFound = Discovery().Describe(tDevice);
                              t.dwProtocol = tFound.dwProtocol;
                              t.dwDevicePort = tFound.dwPort;
                              t.dwRtspPort = tNetwork.dwRtspPort;
                              t.dwChannels = tFound.dwChannels;
                              CopyText(t.szName, tFound.szName);
                              CopyText(t.szModel, tFound.szModel);
                              CopyText(t.szSerialNumber, tFound.szSerialNumber);
                              CopyText(t.szFirmware, tFound.szFirmware);
                              CopyText(t.szMac, tFound.szMac);
                          }
                          std::memset(t.szPassword, 0, sizeof t.szPassword);
                          Adapter_ProtocolSet::WriteRecord(ptConfig, t);
                          return nResult;
                      });
}

// --- files and fonts -------------------------------------------------------------------------------------------------

int Serve(tagCall<&CClientProtocolBase::GetFileHeader>, unsigned long dwType, char* pbyHeader, unsigned long* pdwLength)
{
    return pdwLength ? FileHeader(static_cast<uint32_t>(dwType), pbyHeader, *pdwLength)
                     : static_cast<int>(eResultBadArgument);
}

int Serve(tagCall<&CClientProtocolBase::StringToLattice>, char const* szText, tagFontPara* ptFont, void* pLattice,
          unsigned long* pdwWidth, unsigned long* pdwHeight, unsigned long* pdwLength)
{
    tagFontPara tFont{};
    return !szText || !pdwWidth || !pdwHeight || !pdwLength || ReadRecord(tFont, ptFont) != eResultOk
               ? static_cast<int>(eResultBadArgument)
               : Lattice(szText, tFont, pLattice, *pdwWidth, *pdwHeight, *pdwLength);
}
} // namespace device
