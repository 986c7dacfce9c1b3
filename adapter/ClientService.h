#pragma once

/// @file
/// The service classes.

#include "../protocol/CProtocolSet.h"
#include "../system/Export.h"

#include <cstdint>

// Service classes for applications that were written against them. The exported C functions don't use them: starting
// one of these starts no protocol.

/// Platform services as an object; holds nothing. Every operation answers 0.
/// @ingroup classes
class TESSARO_API CAdapta_PlatformResource
{
public:
    CAdapta_PlatformResource();
    CAdapta_PlatformResource(CAdapta_PlatformResource const& tOther); ///< nothing to copy
    virtual ~CAdapta_PlatformResource();
    virtual CAdapta_PlatformResource& operator=(CAdapta_PlatformResource const& tOther); ///< changes nothing

    int Initialize(); ///< does nothing
    int Start();      ///< does nothing
    int Stop();       ///< does nothing
    int Destroy();    ///< does nothing
};

/// A service's state: 2 initialised, 4 started, 5 stopped. One thread at a time.
/// @ingroup classes
class TESSARO_API CAdapta_ClientService
{
public:
    CAdapta_ClientService();
    CAdapta_ClientService(CAdapta_ClientService const& tOther); ///< initialised, whatever tOther is
    ~CAdapta_ClientService();
    virtual CAdapta_ClientService& operator=(CAdapta_ClientService const& tOther); ///< changes nothing

    int Initialize();   ///< 0
    int Start();        ///< 0; 1 with a line, the state unchanged, when the platform resource doesn't start
    int Stop();         ///< 0
    int Destroy();      ///< 0
    int Status() const; ///< 0 when started, else 1

private:
    std::int32_t m_nState;
};

/// One object of each service class, and a protocol set apart from g_cProtocolSet.
/// @ingroup classes
class TESSARO_API CAdapter_GlobalObject
{
public:
    CAdapter_GlobalObject();
    ~CAdapter_GlobalObject();
    CAdapter_GlobalObject(CAdapter_GlobalObject const&) = delete;
    virtual CAdapter_GlobalObject& operator=(CAdapter_GlobalObject const& tOther); ///< changes nothing

    /// @name The object's own members
    /// @{

    /// Valid as long as the object.
    CAdapta_PlatformResource* PlatformResource();
    CAdapta_ClientService* ClientService();
    Adapter_ProtocolSet::CClientProtocolSet* ProtocolResource();
    /// @}

private:
    CAdapta_PlatformResource m_tPlatformResource;
    CAdapta_ClientService m_tClientService;
    Adapter_ProtocolSet::CClientProtocolSet m_tProtocolResource;
};

/// What services share.
namespace Adapter_CommonKit
{
/// The one T of the process: built by the first call, also when several threads make it at once, destroyed at exit.
/// @ingroup classes
template <class T>
class TSingletons
{
public:
    /// The object; any thread may ask.
    static T& Instance()
    {
        static T g_Instance;
        return g_Instance;
    }
};

extern template class TESSARO_API TSingletons<CAdapter_GlobalObject>;
} // namespace Adapter_CommonKit
