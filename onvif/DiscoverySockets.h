#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <sys/socket.h>
#include <vector>

namespace onvif
{
/// A datagram's other end.
struct tagPeer
{
    sockaddr_storage tAddress{};
    socklen_t nSize = 0;

    /// Without the port; IPv6 with its zone.
    std::string Text() const;
};

/// A UDP socket of WS-Discovery. Moves.
class CProbeSocket
{
public:
    /// Owns nFile. tTo: where its probes go; without a size: it only listens.
    CProbeSocket(int nFile, tagPeer const& tTo) : m_nFile(nFile), m_tTo(tTo) {}
    CProbeSocket(CProbeSocket&& tOther) noexcept;
    CProbeSocket& operator=(CProbeSocket&&) = delete;
    ~CProbeSocket();

    int File() const { return m_nFile; }
    bool Asks() const { return m_tTo.nSize != 0; }
    void Send(std::string_view strMessage) const { SendTo(strMessage, m_tTo); }
    void SendTo(std::string_view strMessage, tagPeer const& tPeer) const;
    /// The next datagram that has come, in acRoom; nothing: there is none.
    std::optional<std::string_view> Receive(tagPeer& tFrom, std::span<char> acRoom) const;

private:
    int m_nFile;
    tagPeer m_tTo;
};

/// On every address of every interface that knows multicast (or of the one named): one that asks; and for each group
/// one that hears who comes and goes. Those that can't be had are left out.
std::vector<CProbeSocket> OpenMulticast(std::string const& strInterface, bool bIPv4, bool bIPv6);
/// To each address of one host. A name is looked up, which may take long.
std::vector<CProbeSocket> OpenUnicast(std::string const& strHost, bool bIPv4, bool bIPv6);
/// A peer at the same address, at discovery's port.
tagPeer AtDiscoveryPort(tagPeer tPeer);
} // namespace onvif
