#pragma once

#include "onvif/DiscoveryMessage.h"
#include "onvif/Http.h"

#include <functional>
#include <memory>
#include <mutex>
#include <string>

namespace onvif
{
/// Where to look for devices.
struct tagWhere
{
    std::string strInterface; ///< by name; empty: all
    std::string strAddress;   ///< this device alone; empty: all, by multicast
    std::uint16_t wPort = 0;  ///< of strAddress' HTTP server; 0: the usual one
    bool bIPv4 = true;
    bool bIPv6 = true;
    std::chrono::seconds tFor{5}; ///< ask for so long, then only listen
};

/// A device, or one that has gone.
struct tagFound
{
    tagAnnouncement tSaid;
    tagAddress tAddress; ///< of its device service, as it can be reached from here
    bool bGone = false;
};

/// Looks for devices, and hears of those that come and go. Each is reported once, however often and however it answers,
/// and again when something of it has changed. Any thread.
class CDiscovery
{
public:
    /// fnFound runs on the HTTP thread, and mustn't block.
    CDiscovery(CHttp& tHttp, std::function<void(tagFound const&)> fnFound);
    ~CDiscovery(); ///< stops
    CDiscovery(CDiscovery const&) = delete;
    CDiscovery& operator=(CDiscovery const&) = delete;

    /// Instead of what was looked for before. False: there is no such interface, or no network at all.
    bool Start(tagWhere const& tWhere);
    /// Reports all once more, and asks again; who doesn't answer by the end is reported as gone. False: wasn't started.
    bool Again(tagWhere const& tWhere);
    void Stop();

private:
    class CSearch;

    CHttp& m_tHttp;
    const std::function<void(tagFound const&)> m_fnFound;
    std::mutex m_tMutex;
    std::shared_ptr<CSearch> m_pSearch;
};
} // namespace onvif
