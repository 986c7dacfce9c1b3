#include "onvif/Listener.h"

#include "onvif/Incoming.h"
#include "onvif/Subscription.h"

#include <algorithm>
#include <arpa/inet.h>
#include <cerrno>
#include <fcntl.h>
#include <netdb.h>
#include <netinet/in.h>
#include <random>
#include <sys/socket.h>
#include <unistd.h>
#include <utility>

namespace onvif
{
namespace
{
using namespace std::chrono_literals;

constexpr auto g_tPatience = 10s; // for a whole request
constexpr auto g_tNoFiles = 1s;   // until connections are taken again
constexpr int g_nBacklog = 64;

// A socket that listens on every address, and its port; -1: none is to be had.
int Listen(std::uint16_t& wPort)
{
    for (const int nFamily : {AF_INET6, AF_INET})
    {
        const int nFile = socket(nFamily, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0);
        if (nFile < 0)
        {
            continue;
        }
        const int nOff = 0;
        sockaddr_storage tAddress{};
        tAddress.ss_family = static_cast<sa_family_t>(nFamily);
        socklen_t nLength = nFamily == AF_INET6 ? sizeof(sockaddr_in6) : sizeof(sockaddr_in);
        if ((nFamily == AF_INET || setsockopt(nFile, IPPROTO_IPV6, IPV6_V6ONLY, &nOff, sizeof nOff) == 0) &&
            bind(nFile, reinterpret_cast<sockaddr const*>(&tAddress), nLength) == 0 && listen(nFile, g_nBacklog) == 0 &&
            getsockname(nFile, reinterpret_cast<sockaddr*>(&tAddress), &nLength) == 0)
        {
            // The port stands at the same place in both.
            wPort = ntohs(reinterpret_cast<sockaddr_in const*>(&tAddress)->sin_port);
            return nFile;
        }
        close(nFile);
    }
    return -1;
}

std::string RandomPath()
{
    constexpr char szDigits[] = "0123456789abcdef";
    std::random_device tRandom;
    std::string strPath = "/";
    for (int i = 0; i < 4; ++i)
    {
        for (std::uint32_t dw = tRandom(), n = 0; n < 8; ++n, dw >>= 4)
        {
            strPath += szDigits[dw & 15U];
        }
    }
    return strPath;
}

} // namespace

// --- connections -----------------------------------------------------------------------------------------------------

/// One connection: one request, then it is closed.
class CListener::CVisitor final : public rtsp::ILoopClient
{
public:
    CVisitor(std::shared_ptr<CListener> pListener, int nFile)
        : m_pListener(std::move(pListener)), m_tAlarm(m_pListener->m_tLoop)
    {
        m_pDescriptor = std::make_unique<rtsp::CDescriptor>(m_pListener->m_tLoop, nFile, 0);
    }
    void Begin()
    {
        const std::lock_guard tLock(m_tMutex);
        m_tAlarm.Set(rtsp::Clock::now() + g_tPatience, *this);
        m_pDescriptor->AwaitReadable(*this);
    }

    void OnReadable(std::uint32_t) override
    {
        std::string strPath;
        std::string strBody;
        {
            const std::lock_guard tLock(m_tMutex);
            if (!m_pDescriptor || !Read())
            {
                return;
            }
            strPath = m_tIncoming.Path();
            strBody = m_tIncoming.Body();
        }
        m_pListener->Take(strPath, strBody);
    }
    void OnWritable(std::uint32_t) override {}
    void OnWake() override
    {
        const std::lock_guard tLock(m_tMutex);
        m_pDescriptor.reset();
    }

private:
    void Answer(std::string_view strAnswer) const
    {
        // Too short to block; who doesn't read it goes without.
        (void)!send(m_pDescriptor->File(), strAnswer.data(), strAnswer.size(), MSG_NOSIGNAL);
    }
    void Finish(std::string_view strAnswer)
    {
        Answer(strAnswer);
        m_pDescriptor.reset();
        m_tAlarm.Cancel();
    }

    // True: the request is whole.
    bool Read()
    {
        char szBuffer[8192];
        const ssize_t nRead = recv(m_pDescriptor->File(), szBuffer, sizeof szBuffer, 0);
        if (nRead == 0 || (nRead < 0 && errno != EAGAIN && errno != EINTR))
        {
            Finish({});
            return false;
        }
        switch (m_tIncoming.Take({szBuffer, nRead < 0 ? 0 : static_cast<std::size_t>(nRead)}))
        {
        case CIncoming::eState::Whole:
            Finish("HTTP/1.1 202 Accepted\r\nContent-Length: 0\r\nConnection: close\r\n\r\n");
            return true;
        case CIncoming::eState::Bad:
            Finish("HTTP/1.1 400 Bad Request\r\nContent-Length: 0\r\nConnection: close\r\n\r\n");
            return false;
        case CIncoming::eState::Partial:
            if (m_tIncoming.Expects() && !std::exchange(m_bContinued, true))
            {
                Answer("HTTP/1.1 100 Continue\r\n\r\n");
            }
            m_pDescriptor->AwaitReadable(*this);
            break;
        }
        return false;
    }

    const std::shared_ptr<CListener> m_pListener;
    std::mutex m_tMutex;
    rtsp::CAlarm m_tAlarm;
    std::unique_ptr<rtsp::CDescriptor> m_pDescriptor; // null: it is over
    CIncoming m_tIncoming;
    bool m_bContinued = false;
};

/// The socket that connections come in at.
class CListener::CDoor final : public rtsp::ILoopClient
{
public:
    CDoor(std::shared_ptr<CListener> const& pListener, int nFile, std::uint16_t wPort)
        : m_pListener(pListener), m_wPort(wPort),
          m_pDescriptor(std::make_unique<rtsp::CDescriptor>(pListener->m_tLoop, nFile, 0)), m_tAlarm(pListener->m_tLoop)
    {
    }
    std::uint16_t Port() const { return m_wPort; }
    void Begin()
    {
        const std::lock_guard tLock(m_tMutex);
        m_pDescriptor->AwaitReadable(*this);
    }
    void End()
    {
        const std::lock_guard tLock(m_tMutex);
        m_pDescriptor.reset();
        m_tAlarm.Cancel();
    }

    void OnReadable(std::uint32_t) override
    {
        const std::lock_guard tLock(m_tMutex);
        const auto pListener = m_pListener.lock();
        if (!m_pDescriptor || !pListener)
        {
            return;
        }
        const int nFile = accept4(m_pDescriptor->File(), nullptr, nullptr, SOCK_NONBLOCK | SOCK_CLOEXEC);
        if (nFile < 0 && errno != EAGAIN && errno != ECONNABORTED)
        {
            m_tAlarm.Set(rtsp::Clock::now() + g_tNoFiles, *this); // no files are left: it would only be told so again
            return;
        }
        try
        {
            if (nFile >= 0)
            {
                std::make_shared<CVisitor>(pListener, nFile)->Begin();
            }
        }
        catch (...) // no memory for it: the device sends again, or its events are missed
        {
        }
        m_pDescriptor->AwaitReadable(*this);
    }
    void OnWritable(std::uint32_t) override {}
    void OnWake() override
    {
        const std::lock_guard tLock(m_tMutex);
        if (m_pDescriptor)
        {
            m_pDescriptor->AwaitReadable(*this);
        }
    }

private:
    const std::weak_ptr<CListener> m_pListener;
    const std::uint16_t m_wPort;
    std::mutex m_tMutex;
    std::unique_ptr<rtsp::CDescriptor> m_pDescriptor; // null: it is over
    rtsp::CAlarm m_tAlarm;
};

// --- addresses -------------------------------------------------------------------------------------------------------

std::string CListener::Open(std::string const& strLocalHost, std::shared_ptr<ISubscriber> pSubscriber)
{
    const std::lock_guard tLock(m_tMutex);
    if (!m_pDoor)
    {
        std::uint16_t wPort = 0;
        const int nFile = Listen(wPort);
        if (nFile < 0)
        {
            return {};
        }
        m_pDoor = std::make_shared<CDoor>(shared_from_this(), nFile, wPort);
        m_pDoor->Begin();
    }
    const std::string strPath = RandomPath();
    m_apSubscribers[strPath] = std::move(pSubscriber);
    tagAddress tAddress;
    tAddress.strHost = strLocalHost;
    tAddress.wPort = m_pDoor->Port();
    tAddress.strPath = strPath;
    return tAddress.Text();
}

void CListener::Close(std::string const& strAddress)
{
    const std::lock_guard tLock(m_tMutex);
    m_apSubscribers.erase(strAddress.substr(std::min(strAddress.rfind('/'), strAddress.size())));
    if (m_apSubscribers.empty() && m_pDoor)
    {
        m_pDoor->End();
        m_pDoor.reset();
    }
}

void CListener::Take(std::string const& strPath, std::string_view strBody)
{
    std::shared_ptr<ISubscriber> pSubscriber;
    {
        const std::lock_guard tLock(m_tMutex);
        const auto it = m_apSubscribers.find(strPath);
        pSubscriber = it == m_apSubscribers.end() ? nullptr : it->second;
    }
    const auto pDocument = pSubscriber ? ParseXml(std::string(strBody)) : nullptr;
    if (pDocument)
    {
        auto atEvents = ReadNotifications(Find(*pDocument, "Envelope/Body/Notify"));
        if (!atEvents.empty())
        {
            pSubscriber->OnEvents(std::move(atEvents));
        }
    }
}

std::string CListener::LocalHostTowards(tagAddress const& tDevice)
{
    addrinfo tHints{};
    tHints.ai_socktype = SOCK_DGRAM;
    addrinfo* ptFound = nullptr;
    if (getaddrinfo(tDevice.strHost.c_str(), std::to_string(tDevice.wPort).c_str(), &tHints, &ptFound) != 0)
    {
        return {};
    }
    std::string strHost;
    for (addrinfo const* pt = ptFound; pt && strHost.empty(); pt = pt->ai_next)
    {
        // Connecting a datagram socket sends nothing, but finds the way.
        const int nFile = socket(pt->ai_family, SOCK_DGRAM | SOCK_CLOEXEC, 0);
        sockaddr_storage tLocal{};
        socklen_t nLength = sizeof tLocal;
        char szHost[NI_MAXHOST] = {};
        if (nFile >= 0 && connect(nFile, pt->ai_addr, pt->ai_addrlen) == 0 &&
            getsockname(nFile, reinterpret_cast<sockaddr*>(&tLocal), &nLength) == 0 &&
            getnameinfo(reinterpret_cast<sockaddr const*>(&tLocal), nLength, szHost, sizeof szHost, nullptr, 0,
                        NI_NUMERICHOST) == 0)
        {
            strHost = szHost;
        }
        if (nFile >= 0)
        {
            close(nFile);
        }
    }
    freeaddrinfo(ptFound);
    return strHost.substr(0, strHost.find('%')); // a zone is this machine's own
}
} // namespace onvif
