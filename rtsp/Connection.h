#pragma once

#include "rtsp/Loop.h"
#include "rtsp/Socket.h"

#include <cstddef>
#include <span>
#include <string>
#include <string_view>

using SSL = struct ssl_st;

namespace rtsp
{
/// A TCP connection, encrypted or not. Nothing of it blocks. One thread at a time.
class CConnection
{
public:
    CConnection(CLoop& tLoop, CSocket tSocket, std::uint32_t dwTag);
    ~CConnection();
    CConnection(CConnection const&) = delete;
    CConnection& operator=(CConnection const&) = delete;

    std::uint32_t Tag() const { return m_tDescriptor.Tag(); }
    int File() const { return m_tDescriptor.File(); }
    bool IsTls() const { return m_ptTls != nullptr; }

    /// From here on encrypted. bTrusted: strHost must prove who it is. Throws std::bad_alloc.
    void BeginTls(std::string const& strHost, bool bTrusted);
    /// Goes on with agreeing on keys. 0: done; EAGAIN: go on when tClient hears that the socket is ready; another
    /// errno, EACCES: it didn't prove who it is.
    int Handshake(ILoopClient& tClient);

    /// The number of bytes that were there, 0: the end; or a negative errno, -EAGAIN: nothing is there.
    std::ptrdiff_t Read(std::span<unsigned char> abyRoom);
    /// Decrypted bytes wait that no readability tells of.
    bool HasMore() const;
    /// Sends, or keeps for later. 0, or an errno; ENOBUFS: the peer doesn't read, and too much waits already.
    int Write(std::string_view strBytes, ILoopClient& tClient);
    /// After OnWritable: sends what was kept.
    int Flush(ILoopClient& tClient);

    /// It is connected, and keys are agreed on: from here on it is read.
    void BeginReading(ILoopClient& tClient);
    void AwaitReadable(ILoopClient& tClient) { m_tDescriptor.AwaitReadable(tClient); }
    void AwaitWritable(ILoopClient& tClient);

private:
    std::ptrdiff_t Send(std::string_view strBytes);
    std::ptrdiff_t TlsResult(int nResult);

    CDescriptor m_tDescriptor;
    SSL* m_ptTls = nullptr;
    std::string m_strKept; ///< to be sent
    bool m_bAwaitsWritable = false;
};
} // namespace rtsp
