#pragma once

#include <cstdint>
#include <map>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

namespace onvif_device
{
/// What a receiver is to fetch.
struct tagReceiver
{
    std::string strMode = "AutoConnect"; ///< AutoConnect, AlwaysConnect, NeverConnect
    std::string strUri;
    std::string strStream = "RTP-Unicast";
    std::string strProtocol = "RTSP";
};

/// What a pane shows, and where it lies on its screen: edges from -1 to 1, left to right and bottom to top.
struct tagPane
{
    uint32_t dwScreen = 0;
    std::string strName;
    std::string strReceiver; ///< token; empty: none
    bool bAudio = false;
    bool bShown = false; ///< it is part of the screen's layout, at the place that follows
    double fLeft = -1;
    double fRight = 1;
    double fTop = 1;
    double fBottom = -1;
};

/// The receivers and panes of a device, by the numbers of their tokens. What they amount to on the model's wall is set
/// by ShowPanes. Any thread.
class CDecoder
{
public:
    std::map<uint32_t, tagReceiver> Receivers() const
    {
        const std::lock_guard tLock(m_tMutex);
        return m_tReceivers;
    }
    std::map<uint32_t, tagPane> Panes() const
    {
        const std::lock_guard tLock(m_tMutex);
        return m_tPanes;
    }
    void SetReceivers(std::map<uint32_t, tagReceiver> tReceivers)
    {
        const std::lock_guard tLock(m_tMutex);
        m_tReceivers = std::move(tReceivers);
    }
    void SetPanes(std::map<uint32_t, tagPane> tPanes)
    {
        const std::lock_guard tLock(m_tMutex);
        m_tPanes = std::move(tPanes);
    }

private:
    mutable std::mutex m_tMutex;
    std::map<uint32_t, tagReceiver> m_tReceivers;
    std::map<uint32_t, tagPane> m_tPanes; // pane n of screen s: s * eWindowsOfScreen + n, as the model's windows
};

class CCall;
/// Lays the windows of the model's wall as the panes say, each bound to its receiver's stream.
void ShowPanes(CCall& tCall);
} // namespace onvif_device
