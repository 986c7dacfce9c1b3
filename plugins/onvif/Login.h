#pragma once

#include "plugins/onvif/Face.h"

#include <map>
#include <mutex>
#include <typeindex>

namespace onvifclient
{
/// What one subject keeps of a login: profiles, presets, a subscription. Made at its first use, by P(CLogin&).
class CPart
{
public:
    CPart() = default;
    virtual ~CPart() = default;
    CPart(CPart const&) = delete;
    CPart& operator=(CPart const&) = delete;

    /// The login ends: as CObject::Close.
    virtual bool Close() { return true; }
    /// The device may be another than before: it has restarted, or its configuration was changed by somebody else.
    virtual void Forget() {}
};

/// A login.
class CLogin : public CObject, public std::enable_shared_from_this<CLogin>
{
public:
    explicit CLogin(std::shared_ptr<onvif::CClient> pClient) : CObject(nullptr), m_pClient(std::move(pClient)) {}

    bool Close() override;

    onvif::CClient& Client() const { return *m_pClient; }
    std::shared_ptr<onvif::CClient> const& ClientPointer() const { return m_pClient; }
    onvif::CAnswer Call(onvif::tagRequest tRequest) const { return m_pClient->Call(std::move(tRequest)); }

    /// The application's handle of it.
    std::atomic<void*> m_hLogin{nullptr};

    /// The part of this class. It lives as long as the login.
    template <class P>
    P& Part()
    {
        const std::lock_guard tLock(m_tMutex);
        std::shared_ptr<CPart>& pPart = m_apParts[typeid(P)];
        if (!pPart)
        {
            pPart = std::make_shared<P>(*this);
        }
        return static_cast<P&>(*pPart);
    }
    /// Forgets what parts know of the device.
    void Forget();

private:
    const std::shared_ptr<onvif::CClient> m_pClient;
    std::mutex m_tMutex;
    std::map<std::type_index, std::shared_ptr<CPart>> m_apParts;
};
} // namespace onvifclient
