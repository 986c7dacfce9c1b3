#pragma once

#include "tools/onvif_device/Decoder.h"
#include "tools/onvif_device/Quirks.h"
#include "tools/onvif_device/Searches.h"
#include "tools/onvif_device/Subscriptions.h"

#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <set>
#include <string>
#include <utility>
#include <vector>

namespace device
{
class CDevice;
}

namespace onvif_device
{
class IRtspSide;

/// One stop of a tour, and a tour of presets: see PtzTours.cpp.
struct tagTourStop
{
    uint32_t dwPreset = 0;
    uint32_t dwSeconds = 0;
    uint32_t dwSpeed = 0; ///< ten-thousandths; 0: full
};
struct tagTour
{
    std::string strName;
    std::vector<tagTourStop> atStops;
    uint32_t dwRounds = 0; ///< 0: for ever
};

/// What one device is beside its model: how it misbehaves, who hears of its events, and which nonces it has seen.
class CFace
{
public:
    using Devices = std::vector<std::shared_ptr<device::CDevice>>;

    /// apFleet: all devices, of which this is the one at nIndex; stays as long as the face.
    CFace(Devices const& apFleet, std::size_t nIndex, IRtspSide& tRtsp, tagQuirks tQuirks)
        : m_apFleet(apFleet), m_nIndex(nIndex), m_pDevice(apFleet[nIndex]), m_tRtsp(tRtsp),
          m_tQuirks(std::move(tQuirks))
    {
    }

    Devices const& Fleet() const { return m_apFleet; }
    std::size_t Index() const { return m_nIndex; }
    device::CDevice& Device() const { return *m_pDevice; }
    std::shared_ptr<device::CDevice> const& SharedDevice() const { return m_pDevice; }
    IRtspSide& Rtsp() const { return m_tRtsp; }
    CSubscriptions& Subscriptions() { return m_tSubscriptions; }
    CSearches& Searches() { return m_tSearches; }
    CDecoder& Decoder() { return m_tDecoder; }

    /// The tours of a channel, by their numbers.
    std::map<uint32_t, tagTour> Tours(uint32_t dwChannel) const
    {
        const std::lock_guard tLock(m_tMutex);
        const auto it = m_tTours.find(dwChannel);
        return it == m_tTours.end() ? std::map<uint32_t, tagTour>{} : it->second;
    }
    void SetTours(uint32_t dwChannel, std::map<uint32_t, tagTour> tTours)
    {
        const std::lock_guard tLock(m_tMutex);
        m_tTours[dwChannel] = std::move(tTours);
    }

    tagQuirks Quirks() const
    {
        const std::lock_guard tLock(m_tMutex);
        return m_tQuirks;
    }
    void SetQuirks(tagQuirks const& tQuirks)
    {
        const std::lock_guard tLock(m_tMutex);
        m_tQuirks = tQuirks;
    }
    /// Whether this answer is one of those that a quirk counts, such as &tagQuirks::llHalf.
    bool TakeOne(int64_t tagQuirks::*pllCount)
    {
        const std::lock_guard tLock(m_tMutex);
        const bool bTaken = m_tQuirks.*pllCount > 0;
        m_tQuirks.*pllCount -= bTaken ? 1 : 0;
        return bTaken;
    }
    /// False: this nonce has come before. Those that were created before llOldestUs are forgotten.
    bool TakeNonce(std::string const& strNonce, int64_t llCreatedUs, int64_t llOldestUs)
    {
        const std::lock_guard tLock(m_tMutex);
        std::erase_if(m_tNonces, [&](auto const& t) { return t.first < llOldestUs; });
        return m_tNonces.emplace(llCreatedUs, strNonce).second;
    }

private:
    Devices const& m_apFleet;
    const std::size_t m_nIndex;
    const std::shared_ptr<device::CDevice> m_pDevice;
    IRtspSide& m_tRtsp;
    mutable std::mutex m_tMutex;
    tagQuirks m_tQuirks;
    std::map<uint32_t, std::map<uint32_t, tagTour>> m_tTours;
    std::set<std::pair<int64_t, std::string>> m_tNonces; // with their Created
    CSubscriptions m_tSubscriptions{*m_pDevice};
    CSearches m_tSearches;
    CDecoder m_tDecoder;
};
} // namespace onvif_device
