#pragma once

#include "protocol/interface/Callbacks.h"
#include "protocol/interface/Results.h"

#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <string>

namespace device
{
class CDevice;

/// What is known of devices before a login: those that are found, and those that register themselves. Any thread.
class CDiscovery
{
public:
    using Found = std::function<void(tagDeviceProbeConfig const&)>;
    using Registered = std::function<void(tagDeviceRegisterInfo const&)>;

    void Start(eProtocolType eProtocol) { m_eProtocol = eProtocol; }
    void Stop();

    /// Devices go to fnFound, on the delivery thread: each once, and again when something changed. An empty parameter
    /// record: all that there are for 5 s; with an address: that device.
    void Probe(tagDeviceProbeParameter const& tPara, Found fnFound);
    /// All of them once more. False: nobody is looking.
    bool Again(tagDeviceProbeParameter const& tPara);
    void StopProbe();

    void Listen(bool bListen, std::string const& strAddress, uint32_t dwPort);
    void OnRegister(Registered fnRegistered);
    /// The device calls home. Needs its lock.
    void Register(CDevice& tDevice) const;

    /// Needs the device's lock.
    tagDeviceProbeConfig Describe(CDevice& tDevice) const;

private:
    void Look(uint64_t ullProbe);

    mutable std::mutex m_tMutex;
    eProtocolType m_eProtocol = eProtocolVTQ;
    uint64_t m_ullProbe = 0; // the probe that runs has this number; 0: none
    uint64_t m_ullLast = 0;
    int64_t m_llUntilUs = 0;
    tagDeviceProbeParameter m_tPara{};
    Found m_fnFound;
    std::map<std::string, tagDeviceProbeConfig> m_tKnown; // by hardware address
    bool m_bListening = false;
    Registered m_fnRegistered;
};

CDiscovery& Discovery();
} // namespace device
