#include "plugins/device/Fleet.h"

#include "plugins/device/Device.h"
#include "plugins/device/Text.h"

namespace device
{
namespace
{
std::string Key(std::string const& strAddress, uint32_t dwPort)
{
    return LowerCase(strAddress) + (dwPort ? ':' + std::to_string(dwPort) : "");
}

template <class Matches>
std::shared_ptr<CDevice> FirstOf(std::vector<std::shared_ptr<CDevice>> const& apDevices, Matches fnMatches)
{
    for (auto const& pDevice : apDevices)
    {
        const CDevice::CLock tLock(*pDevice);
        if (fnMatches(pDevice->Part<CConfiguration>()))
        {
            return pDevice;
        }
    }
    return nullptr;
}
} // namespace

CFleet& Fleet()
{
    static CFleet& s_tFleet = *new CFleet; // threads that go on at the end of the process look at it
    return s_tFleet;
}

tagDeviceBlueprint DefaultBlueprint()
{
    tagDeviceBlueprint tBlueprint;
    tBlueprint.atChannels.resize(4);
    tBlueprint.atChannels[0].bPTZ = true;
    tBlueprint.atChannels[1].bPTZ = true;
    tBlueprint.atChannels[3].atStreams[0].dwCodec = eCodecH265;
    return tBlueprint;
}

void CFleet::Load(std::string const& strPath)
{
    tagFleetFile tFile = ReadFleetFile(strPath);
    std::vector<std::shared_ptr<CDevice>> apReplaced;
    std::map<std::string, std::shared_ptr<CDevice>> tNew;
    for (tagDeviceBlueprint& tBlueprint : tFile.atDevices)
    {
        const std::string strKey = Key(tBlueprint.strAddress, tBlueprint.dwPort);
        Save(strKey); // what the one before remembers is the new one's
        tNew[strKey] = std::make_shared<CDevice>(std::move(tBlueprint));
    }
    {
        const std::lock_guard tLock(m_tMutex);
        m_bDefault = tFile.bDefault;
        m_strFile = strPath;
        for (auto const& [strKey, pDevice] : tNew)
        {
            auto& pSlot = m_tDevices[strKey];
            if (pSlot)
            {
                apReplaced.push_back(pSlot);
            }
            pSlot = pDevice;
        }
    }
    for (auto const& pDevice : apReplaced)
    {
        const CDevice::CLock tLock(*pDevice);
        pDevice->EndSessions({});
        pDevice->Drop(0);
    }
    for (auto const& [strKey, pDevice] : tNew)
    {
        pDevice->Tick();
    }
}

std::string CFleet::File() const
{
    const std::lock_guard tLock(m_tMutex);
    return m_strFile;
}

std::shared_ptr<CDevice> CFleet::Find(std::string const& strAddress, uint32_t dwPort)
{
    const std::lock_guard tLock(m_tMutex);
    for (std::string const& strKey : {Key(strAddress, dwPort), Key(strAddress, 0)})
    {
        if (const auto it = m_tDevices.find(strKey); it != m_tDevices.end())
        {
            return it->second;
        }
    }
    // One that listens at a port of its own is the only one at its address; 0 asks for it too.
    const std::string strPrefix = Key(strAddress, 0) + ':';
    if (const auto it = m_tDevices.lower_bound(strPrefix); it != m_tDevices.end() && it->first.starts_with(strPrefix))
    {
        return dwPort == 0 ? it->second : nullptr;
    }
    const bool bNobody = strAddress.empty() || LowerCase(strAddress).ends_with(".invalid");
    if (!m_bDefault || bNobody)
    {
        return nullptr;
    }
    tagDeviceBlueprint tBlueprint = DefaultBlueprint();
    tBlueprint.strAddress = strAddress;
    return m_tDevices[Key(strAddress, 0)] = std::make_shared<CDevice>(std::move(tBlueprint));
}

void CFleet::Save(std::string const& strKey)
{
    const std::lock_guard tLock(m_tMutex);
    if (const auto it = m_tDevices.find(strKey); it != m_tDevices.end())
    {
        const CDevice::CLock tDeviceLock(*it->second);
        it->second->Store().Save();
    }
}

std::vector<std::shared_ptr<CDevice>> CFleet::All() const
{
    std::vector<std::shared_ptr<CDevice>> apAll;
    const std::lock_guard tLock(m_tMutex);
    for (auto const& [strKey, pDevice] : m_tDevices)
    {
        apAll.push_back(pDevice);
    }
    return apAll;
}

std::vector<std::shared_ptr<CDevice>> CFleet::Neighbours()
{
    if (All().empty())
    {
        Find("192.0.2.1");
    }
    return All();
}

std::shared_ptr<CDevice> CFleet::BySerialNumber(std::string const& strSerialNumber) const
{
    return FirstOf(All(), [&](CConfiguration const& t) { return t.SerialNumber() == strSerialNumber; });
}

std::shared_ptr<CDevice> CFleet::ByMac(std::string const& strMac) const
{
    return FirstOf(All(), [&](CConfiguration const& t) { return t.Mac() == strMac; });
}
} // namespace device
