#pragma once

#include <atomic>
#include <cstdint>
#include <memory>
#include <string>
#include <sys/socket.h>
#include <vector>

namespace rtsp
{
/// An address and a port.
struct tagEndpoint
{
    sockaddr_storage tAddress{};
    socklen_t nLength = 0;

    sockaddr const* Address() const { return reinterpret_cast<sockaddr const*>(&tAddress); }
    sockaddr* Address() { return reinterpret_cast<sockaddr*>(&tAddress); }
    int Family() const { return tAddress.ss_family; }
    std::uint16_t Port() const;
    void SetPort(std::uint16_t wPort);
    bool IsSameHost(tagEndpoint const& tOther) const; ///< whatever the ports
};

/// The endpoint of a numeric address; nLength 0: it isn't one.
tagEndpoint ParseEndpoint(std::string const& strAddress, std::uint16_t wPort);

/// Who asks for a name.
class IAsker
{
public:
    /// It is looked up. Runs on the resolver's thread, which must not be held up.
    virtual void OnLookedUp() = 0;

protected:
    ~IAsker() = default;
};

/// A name that is being looked up.
class CLookup
{
public:
    bool IsDone() const { return m_bDone.load(std::memory_order_acquire); }
    /// Once done: an errno (EHOSTUNREACH: there is no such name), or 0 and at least one address without port.
    int Error() const { return m_nError; }
    std::vector<tagEndpoint> const& Found() const { return m_atFound; }

private:
    friend class CResolver;

    std::atomic<bool> m_bDone{false};
    int m_nError = 0;
    std::vector<tagEndpoint> m_atFound;
    std::vector<std::weak_ptr<IAsker>> m_apAskers; ///< under the resolver's lock
};

/// Looks names up on threads of its own, which begin when they are needed and end when they aren't. A look-up can't be
/// interrupted, so names whose servers don't answer must not hold up others:
/// - there are at most eight threads;
/// - a name that many ask for is looked up once at a time;
/// - a name that took more than a second the last time goes behind the others, and such names leave two threads free;
/// - the newest question is answered first, and one that nobody waits for any more not at all.
/// Who waits bounds the time; dropping the look-up costs nothing.
class CResolver
{
public:
    CResolver();
    ~CResolver(); ///< threads inside a look-up end by themselves
    CResolver(CResolver const&) = delete;
    CResolver& operator=(CResolver const&) = delete;

    /// pAsker hears when it is done. Throws when no memory or thread is left.
    std::shared_ptr<CLookup const> Ask(std::string const& strName, std::weak_ptr<IAsker> pAsker);

private:
    class CImpl;
    const std::shared_ptr<CImpl> m_pImpl;
};
} // namespace rtsp
