#include "rtsp/Connection.h"

#include <algorithm>
#include <cerrno>
#include <climits>
#include <new>
#include <openssl/err.h>
#include <openssl/ssl.h>
#include <openssl/x509v3.h>
#include <sys/socket.h>

namespace rtsp
{
namespace
{
constexpr std::size_t g_nMostKept = std::size_t{256} << 10;

// OpenSSL's own way to a socket raises SIGPIPE.
int SendOnSocket(BIO* ptBio, char const* pData, int nLength)
{
    BIO_clear_retry_flags(ptBio);
    const auto nFile = static_cast<int>(reinterpret_cast<std::intptr_t>(BIO_get_data(ptBio)));
    const auto nSent = send(nFile, pData, static_cast<std::size_t>(nLength), MSG_NOSIGNAL);
    if (nSent < 0 && (errno == EAGAIN || errno == EINTR))
    {
        BIO_set_retry_write(ptBio);
    }
    return static_cast<int>(nSent);
}

int ReceiveFromSocket(BIO* ptBio, char* pRoom, int nLength)
{
    BIO_clear_retry_flags(ptBio);
    const auto nFile = static_cast<int>(reinterpret_cast<std::intptr_t>(BIO_get_data(ptBio)));
    const auto nReceived = recv(nFile, pRoom, static_cast<std::size_t>(nLength), 0);
    if (nReceived < 0 && (errno == EAGAIN || errno == EINTR))
    {
        BIO_set_retry_read(ptBio);
    }
    return static_cast<int>(nReceived);
}

long ControlSocket(BIO*, int nCommand, long, void*)
{
    return nCommand == BIO_CTRL_FLUSH ? 1 : 0;
}

BIO_METHOD* SocketMethod()
{
    static BIO_METHOD* const g_ptMethod = []
    {
        BIO_METHOD* ptMethod = BIO_meth_new(BIO_get_new_index() | BIO_TYPE_SOURCE_SINK, "socket");
        if (!ptMethod)
        {
            throw std::bad_alloc();
        }
        BIO_meth_set_write(ptMethod, &SendOnSocket);
        BIO_meth_set_read(ptMethod, &ReceiveFromSocket);
        BIO_meth_set_ctrl(ptMethod, &ControlSocket);
        return ptMethod;
    }();
    return g_ptMethod;
}

SSL_CTX* MakeContext(bool bTrusted)
{
    SSL_CTX* ptContext = SSL_CTX_new(TLS_client_method());
    if (!ptContext)
    {
        throw std::bad_alloc();
    }
    SSL_CTX_set_mode(ptContext,
                     SSL_MODE_ENABLE_PARTIAL_WRITE | SSL_MODE_ACCEPT_MOVING_WRITE_BUFFER | SSL_MODE_RELEASE_BUFFERS);
    SSL_CTX_set_options(ptContext, SSL_OP_IGNORE_UNEXPECTED_EOF); // devices close without a word
    if (bTrusted)
    {
        SSL_CTX_set_default_verify_paths(ptContext);
        SSL_CTX_set_verify(ptContext, SSL_VERIFY_PEER, nullptr);
    }
    return ptContext;
}

// Never freed: connections may outlive statics.
SSL_CTX* Context(bool bTrusted)
{
    if (bTrusted)
    {
        static SSL_CTX* const g_ptTrusted = MakeContext(true);
        return g_ptTrusted;
    }
    static SSL_CTX* const g_ptAny = MakeContext(false);
    return g_ptAny;
}

bool ExpectHost(SSL* ptTls, std::string const& strHost)
{
    if (ParseEndpoint(strHost, 0).nLength != 0)
    {
        return X509_VERIFY_PARAM_set1_ip_asc(SSL_get0_param(ptTls), strHost.c_str()) == 1;
    }
    return SSL_set1_host(ptTls, strHost.c_str()) == 1;
}
} // namespace

CConnection::CConnection(CLoop& tLoop, CSocket tSocket, std::uint32_t dwTag)
    : m_tDescriptor(tLoop, tSocket.Release(), dwTag)
{
}

CConnection::~CConnection()
{
    SSL_free(m_ptTls);
}

void CConnection::BeginTls(std::string const& strHost, bool bTrusted)
{
    ERR_clear_error();
    m_ptTls = SSL_new(Context(bTrusted));
    BIO* const ptBio = m_ptTls ? BIO_new(SocketMethod()) : nullptr;
    if (!ptBio)
    {
        throw std::bad_alloc();
    }
    BIO_set_data(ptBio, reinterpret_cast<void*>(static_cast<std::intptr_t>(File())));
    BIO_set_init(ptBio, 1);
    SSL_set_bio(m_ptTls, ptBio, ptBio);
    SSL_set_connect_state(m_ptTls);
    if (ParseEndpoint(strHost, 0).nLength == 0)
    {
        SSL_set_tlsext_host_name(m_ptTls, strHost.c_str());
    }
    if (bTrusted && !ExpectHost(m_ptTls, strHost))
    {
        throw std::bad_alloc();
    }
}

// What OpenSSL returned, as Read and Send do.
std::ptrdiff_t CConnection::TlsResult(int nResult)
{
    const int nErrno = errno;
    switch (SSL_get_error(m_ptTls, nResult))
    {
    case SSL_ERROR_NONE:
        return nResult;
    case SSL_ERROR_WANT_READ:
    case SSL_ERROR_WANT_WRITE:
        return -EAGAIN;
    case SSL_ERROR_ZERO_RETURN:
        return 0;
    case SSL_ERROR_SYSCALL:
        return nErrno != 0 && nErrno != EAGAIN ? -nErrno : -ECONNRESET;
    default:
        return SSL_get_verify_result(m_ptTls) != X509_V_OK && SSL_get_verify_mode(m_ptTls) != SSL_VERIFY_NONE ? -EACCES
                                                                                                              : -EPROTO;
    }
}

int CConnection::Handshake(ILoopClient& tClient)
{
    m_bAwaitsWritable = false;
    ERR_clear_error();
    errno = 0;
    const int nResult = SSL_do_handshake(m_ptTls);
    if (nResult == 1)
    {
        return 0;
    }
    const std::ptrdiff_t nError = TlsResult(nResult);
    if (nError == -EAGAIN)
    {
        if (SSL_want_write(m_ptTls))
        {
            AwaitWritable(tClient);
        }
        else
        {
            AwaitReadable(tClient);
        }
    }
    return nError == 0 ? ECONNRESET : static_cast<int>(-nError);
}

std::ptrdiff_t CConnection::Read(std::span<unsigned char> abyRoom)
{
    if (m_ptTls)
    {
        ERR_clear_error();
        errno = 0;
        return TlsResult(SSL_read(m_ptTls, abyRoom.data(), static_cast<int>(abyRoom.size())));
    }
    const auto nReceived = recv(File(), abyRoom.data(), abyRoom.size(), 0);
    return nReceived >= 0 ? nReceived : errno == EINTR ? -EAGAIN : -errno;
}

bool CConnection::HasMore() const
{
    return m_ptTls && SSL_has_pending(m_ptTls) == 1;
}

std::ptrdiff_t CConnection::Send(std::string_view strBytes)
{
    if (m_ptTls)
    {
        ERR_clear_error();
        errno = 0;
        return TlsResult(
            SSL_write(m_ptTls, strBytes.data(), static_cast<int>(std::min<std::size_t>(strBytes.size(), INT_MAX))));
    }
    const auto nSent = send(File(), strBytes.data(), strBytes.size(), MSG_NOSIGNAL);
    return nSent >= 0 ? nSent : errno == EINTR ? -EAGAIN : -errno;
}

int CConnection::Write(std::string_view strBytes, ILoopClient& tClient)
{
    if (m_strKept.size() + strBytes.size() > g_nMostKept)
    {
        return ENOBUFS;
    }
    m_strKept += strBytes;
    return m_bAwaitsWritable ? 0 : Flush(tClient);
}

int CConnection::Flush(ILoopClient& tClient)
{
    m_bAwaitsWritable = false;
    while (!m_strKept.empty())
    {
        const std::ptrdiff_t nSent = Send(m_strKept);
        if (nSent == -EAGAIN)
        {
            AwaitWritable(tClient);
            return 0;
        }
        if (nSent <= 0)
        {
            return nSent == 0 ? EPIPE : static_cast<int>(-nSent);
        }
        m_strKept.erase(0, static_cast<std::size_t>(nSent));
    }
    m_strKept.shrink_to_fit();
    return 0;
}

void CConnection::BeginReading(ILoopClient& tClient)
{
    m_bAwaitsWritable = false;
    m_tDescriptor.ForgetWritable();
    AwaitReadable(tClient);
}

void CConnection::AwaitWritable(ILoopClient& tClient)
{
    m_bAwaitsWritable = true;
    m_tDescriptor.AwaitWritable(tClient);
}
} // namespace rtsp
