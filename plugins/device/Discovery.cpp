#include "plugins/device/Discovery.h"

#include "plugins/device/Device.h"
#include "plugins/device/Fleet.h"
#include "plugins/device/Text.h"

#include <cstring>

namespace device
{
CDiscovery& Discovery()
{
    static CDiscovery& s_tDiscovery = *new CDiscovery;
    return s_tDiscovery;
}

void CDiscovery::Stop()
{
    StopProbe();
    const std::lock_guard tLock(m_tMutex);
    m_bListening = false;
    m_fnRegistered = nullptr;
}

tagDeviceProbeConfig CDiscovery::Describe(CDevice& tDevice) const
{
    CConfiguration const& tConfiguration = tDevice.Part<CConfiguration>();
    const auto tIdentity = tConfiguration.Get<tagConfigIdentity>();
    const auto tNetwork = tConfiguration.Get<tagConfigNetwork>();
    tagDeviceProbeConfig t{};
    t.dwSize = sizeof t;
    t.dwProtocol = m_eProtocol;
    t.dwPort = tNetwork.dwDevicePort;
    t.dwChannels = tIdentity.dwChannels;
    t.dwFlags = tNetwork.bDhcp ? eProbeDhcp : 0;
    CopyText(t.szAddress, Text(tNetwork.szAddress));
    CopyText(t.szSubnetMask, "255.255.255.0");
    CopyText(t.szGateway, tNetwork.szGateway);
    CopyText(t.szMac, tNetwork.szMac);
    CopyText(t.szName, tIdentity.szName);
    CopyText(t.szManufacturer, tIdentity.szManufacturer);
    CopyText(t.szModel, tIdentity.szModel);
    CopyText(t.szSerialNumber, tIdentity.szSerialNumber);
    CopyText(t.szFirmware, tIdentity.szFirmware);
    CopyText(t.szLocation, tIdentity.szLocation);
    return t;
}

// --- probing ---------------------------------------------------------------------------------------------------------

void CDiscovery::Probe(tagDeviceProbeParameter const& tPara, Found fnFound)
{
    uint64_t ullProbe = 0;
    {
        const std::lock_guard tLock(m_tMutex);
        m_tPara = tPara;
        m_fnFound = std::move(fnFound);
        m_tKnown.clear();
        m_llUntilUs = SteadyUs() + int64_t{tPara.dwSeconds ? tPara.dwSeconds : 5} * 1000000;
        ullProbe = m_ullProbe = ++m_ullLast;
    }
    // An address is asked directly, and a device that nobody has asked before may stand there.
    if (tPara.szAddress[0] != '\0')
    {
        Fleet().Find(Text(tPara.szAddress), tPara.dwPort);
    }
    DeliveryWorker().Post([this, ullProbe] { Look(ullProbe); });
}

bool CDiscovery::Again(tagDeviceProbeParameter const& tPara)
{
    Found fnFound;
    {
        const std::lock_guard tLock(m_tMutex);
        if (m_ullProbe == 0)
        {
            return false;
        }
        fnFound = m_fnFound;
    }
    Probe(tPara, std::move(fnFound));
    return true;
}

void CDiscovery::StopProbe()
{
    const std::lock_guard tLock(m_tMutex);
    m_ullProbe = 0;
    m_fnFound = nullptr;
}

// One round: whoever answers and is new, or has changed. Asks again twice a second as long as the probe runs.
void CDiscovery::Look(uint64_t ullProbe)
{
    std::unique_lock tLock(m_tMutex);
    const tagDeviceProbeParameter tPara = m_tPara;
    const bool bRuns = m_ullProbe == ullProbe;
    tLock.unlock();
    if (!bRuns)
    {
        return;
    }
    const std::string strOnly = Text(tPara.szAddress);
    const auto apDevices = strOnly.empty() ? Fleet().Neighbours()
                                           : std::vector<std::shared_ptr<CDevice>>{Fleet().Find(strOnly, tPara.dwPort)};
    for (auto const& pDevice : apDevices)
    {
        tagDeviceProbeConfig tConfig{};
        if (!pDevice)
        {
            continue;
        }
        {
            const bool bUp = pDevice->IsUp();
            const CDevice::CLock tDeviceLock(*pDevice);
            tConfig = Describe(*pDevice);
            tConfig.dwFlags |= bUp ? 0 : static_cast<uint32_t>(eProbeGone);
        }
        tLock.lock();
        const auto it = m_tKnown.find(tConfig.szMac);
        const bool bKnown = it != m_tKnown.end();
        // One that was never there can't be gone.
        const bool bReport = m_ullProbe == ullProbe && (bKnown ? std::memcmp(&it->second, &tConfig, sizeof tConfig) != 0
                                                               : (tConfig.dwFlags & eProbeGone) == 0);
        const Found fnFound = bReport ? m_fnFound : nullptr;
        if (bReport)
        {
            m_tKnown[tConfig.szMac] = tConfig;
        }
        tLock.unlock();
        if (fnFound)
        {
            fnFound(tConfig);
        }
    }
    DeliveryWorker().At(SteadyUs() + 500000, [this, ullProbe] { Look(ullProbe); });
}

// --- devices that register themselves --------------------------------------------------------------------------------

void CDiscovery::Listen(bool bListen, std::string const&, uint32_t)
{
    const std::lock_guard tLock(m_tMutex);
    m_bListening = bListen;
}

void CDiscovery::OnRegister(Registered fnRegistered)
{
    const std::lock_guard tLock(m_tMutex);
    m_fnRegistered = std::move(fnRegistered);
}

void CDiscovery::Register(CDevice& tDevice) const
{
    const tagDeviceProbeConfig tFound = Describe(tDevice);
    tagDeviceRegisterInfo tInfo{};
    tInfo.dwSize = sizeof tInfo;
    tInfo.dwProtocol = tFound.dwProtocol;
    tInfo.dwPort = tFound.dwPort;
    tInfo.dwChannels = tFound.dwChannels;
    CopyText(tInfo.szAddress, tFound.szAddress);
    CopyText(tInfo.szMac, tFound.szMac);
    CopyText(tInfo.szName, tFound.szName);
    CopyText(tInfo.szModel, tFound.szModel);
    CopyText(tInfo.szSerialNumber, tFound.szSerialNumber);
    CopyText(tInfo.szFirmware, tFound.szFirmware);
    DeliveryWorker().Post(
        [this, tInfo]
        {
            Registered fnRegistered;
            {
                const std::lock_guard tLock(m_tMutex);
                fnRegistered = m_bListening ? m_fnRegistered : nullptr;
            }
            if (fnRegistered)
            {
                fnRegistered(tInfo);
            }
        });
}
} // namespace device
