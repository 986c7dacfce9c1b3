#pragma once

#include "onvif/Address.h"

#include "rtsp/Loop.h"

#include <map>
#include <memory>
#include <mutex>
#include <string>

namespace onvif
{
class ISubscriber;

/// A small HTTP server for the events of devices that send them by themselves. It listens from the first address that
/// is opened until the last one is closed. Any thread.
class CListener : public std::enable_shared_from_this<CListener>
{
public:
    /// tLoop: must outlive it, and be stopped first.
    explicit CListener(rtsp::CLoop& tLoop) : m_tLoop(tLoop) {}
    CListener(CListener const&) = delete;
    CListener& operator=(CListener const&) = delete;

    /// An address for one device, which nobody can guess: what is sent there goes to pSubscriber. strLocalHost: this
    /// machine as the device reaches it. Empty: no port is to be had.
    std::string Open(std::string const& strLocalHost, std::shared_ptr<ISubscriber> pSubscriber);
    void Close(std::string const& strAddress);

    /// The address of this machine that packets to the device come from; empty: there is no way. Blocks where a name
    /// is to be looked up.
    static std::string LocalHostTowards(tagAddress const& tDevice);

private:
    class CDoor;
    class CVisitor;
    void Take(std::string const& strPath, std::string_view strBody);

    rtsp::CLoop& m_tLoop;
    std::mutex m_tMutex;
    std::shared_ptr<CDoor> m_pDoor;
    std::map<std::string, std::shared_ptr<ISubscriber>> m_apSubscribers; ///< by path
};
} // namespace onvif
