#pragma once

#include "rtsp/Bytes.h"
#include "rtsp/Resolver.h"

#include <cstdint>
#include <span>
#include <string>
#include <utility>

namespace rtsp
{
/// A socket that is closed with its object. None of ours blocks, and none is inherited by programs that are started.
class CSocket
{
public:
    CSocket() = default;
    explicit CSocket(int nFile) : m_nFile(nFile) {}
    ~CSocket();
    CSocket(CSocket&& tOther) noexcept : m_nFile(tOther.Release()) {}
    CSocket& operator=(CSocket&& tOther) noexcept
    {
        std::swap(m_nFile, tOther.m_nFile);
        return *this;
    }

    explicit operator bool() const { return m_nFile >= 0; }
    int File() const { return m_nFile; }
    int Release() { return std::exchange(m_nFile, -1); }

private:
    int m_nFile = -1;
};

/// Begins to connect. EINPROGRESS: its end shows as writability, see ConnectResult; 0, or another errno.
int BeginConnect(tagEndpoint const& tPeer, CSocket& tSocket);
int ConnectResult(int nFile);
tagEndpoint LocalEndpoint(int nFile);

/// What RTP and RTCP of one track come in on.
struct tagUdpPair
{
    CSocket tRtp;
    CSocket tRtcp;
    std::uint16_t wPort = 0; ///< of RTP; RTCP has the next one
};

/// Two ports of this address, an even one and the next. 0, or an errno.
int OpenUdpPair(tagEndpoint const& tLocal, tagUdpPair& tPair);
/// Joins a multicast group on the interface that has the address tLocal; tSource: the only sender, nLength 0: any.
/// The ports are shared with other receivers of this machine. 0, or an errno.
int JoinGroup(tagEndpoint const& tGroup, std::uint16_t wRtcpPort, tagEndpoint const& tLocal, tagEndpoint const& tSource,
              tagUdpPair& tPair);

/// Room to receive into, of the calling thread.
constexpr std::size_t g_nReceiveBytes = std::size_t{64} << 10;
std::span<unsigned char> ReceiveBuffer();

/// A datagram, in room of the calling thread: valid until the thread receives again.
struct tagDatagram
{
    Bytes abyData;
    tagEndpoint tFrom;
};
/// Datagrams that are there, at most g_nMostDatagrams. Fewer: these were all.
constexpr unsigned g_nMostDatagrams = 16;
std::span<tagDatagram const> ReceiveDatagrams(int nFile);
} // namespace rtsp
