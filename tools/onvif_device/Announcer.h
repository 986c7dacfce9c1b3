#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <thread>
#include <vector>

namespace onvif_device
{
class CFace;

/// A device that can be found.
struct tagAnnounced
{
    std::shared_ptr<CFace> pFace;
    uint32_t dwPort = 0;
    bool bTls = false;
};

/// Lets devices be found: WS-Discovery on every network interface, IPv4 and IPv6. Says hello for each at the begin and
/// when it has come up, and bye at the end and when it goes down; one that is down answers nobody.
class CAnnouncer
{
public:
    /// strListen: where the devices listen; "0.0.0.0" or "::": everywhere. Throws std::system_error.
    CAnnouncer(std::vector<tagAnnounced> atDevices, std::string strListen);
    ~CAnnouncer();
    CAnnouncer(CAnnouncer const&) = delete;
    CAnnouncer& operator=(CAnnouncer const&) = delete;
    /// Any thread.
    void SayHello(std::size_t nDevice, bool bHello) const;

private:
    struct tagSocket;
    void Listen();
    void Answer(tagSocket const& tSocket) const;

    const std::vector<tagAnnounced> m_atDevices;
    const std::string m_strListen;
    std::vector<tagSocket> m_atSockets;
    int m_anStop[2] = {-1, -1}; // a pipe: what is written there ends the thread
    std::thread m_tThread;
};
} // namespace onvif_device
