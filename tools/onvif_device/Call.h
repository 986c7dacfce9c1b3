#pragma once

#include "tools/onvif_device/Face.h"
#include "tools/onvif_device/Fault.h"
#include "tools/onvif_device/Names.h"
#include "tools/onvif_device/Services.h"
#include "tools/onvif_device/Values.h"
#include "tools/onvif_device/Xml.h"

#include "plugins/device/Device.h"
#include "plugins/device/Text.h"

#include <initializer_list>
#include <string>
#include <string_view>

namespace onvif_device
{
struct tagExchange;

/// One call of an operation: what was asked, and where the answer goes.
class CCall
{
public:
    using Path = std::initializer_list<std::string_view>;

    CCall(CFace& tFace, tagExchange& tExchange, eService eTo, pugi::xml_node tHeader, pugi::xml_node tRequest,
          CXml& tAnswer)
        : m_tFace(tFace), m_tExchange(tExchange), m_eTo(eTo), m_tQuirks(tFace.Quirks()), m_tHeader(tHeader),
          m_tRequest(tRequest), m_tAnswer(tAnswer)
    {
    }

    CFace& Face() const { return m_tFace; }
    tagQuirks const& Quirks() const { return m_tQuirks; }
    /// Where the inside of the response's element is written.
    CXml& Xml() const { return m_tAnswer; }
    tagExchange& Exchange() const { return m_tExchange; }
    /// A name in the namespace of the service that was asked: for what several services have alike.
    std::string Name(char const* szLocal) const { return ServiceOf(m_eTo).szPrefix + std::string(":") + szLocal; }
    device::tagCaller const& Caller() const;

    /// @name The device
    /// @{
    device::CDevice& Device() const { return m_tFace.Device(); }
    /// Held by who uses Part.
    device::CDevice::CLock Lock() const { return device::CDevice::CLock(Device()); }
    template <class P>
    P& Part() const
    {
        return Device().Part<P>();
    }
    /// A configuration block as it is. Needs the lock.
    template <class Record>
    Record Get(uint32_t dwIndex = 0, uint32_t dwStreamKind = 0) const
    {
        return Part<device::CConfiguration>().Get<Record>(dwIndex, dwStreamKind);
    }
    /// Writes one. Needs the lock.
    template <class Record>
    void Set(uint32_t dwType, Record const& tRecord, uint32_t dwIndex = 0, uint32_t dwStreamKind = 0) const
    {
        Require(Part<device::CConfiguration>().Write(Caller(), dwType, dwIndex, dwStreamKind,
                                                     reinterpret_cast<unsigned char const*>(&tRecord), sizeof tRecord));
    }
    /// @}

    /// @name What was asked. Throw CFault for what isn't of its type.
    /// @{
    pugi::xml_node Request() const { return m_tRequest; }
    pugi::xml_node Header() const { return m_tHeader; }
    pugi::xml_node At(Path astrPath) const { return Child(m_tRequest, astrPath); }
    bool Has(Path astrPath) const { return !At(astrPath).empty(); }
    std::string Text(Path astrPath) const { return TextOf(At(astrPath)); }
    bool Flag(Path astrPath, bool bElse = false) const;
    int64_t Integer(Path astrPath, int64_t llLeast, int64_t llMost, int64_t llElse = 0) const;
    double Number(Path astrPath, double fElse = 0) const;
    /// Microseconds.
    int64_t DurationUs(Path astrPath, int64_t llElse) const;
    int64_t TimeUs(Path astrPath, int64_t llElse) const;
    /// The index of a text among the words.
    uint32_t Word(Path astrPath, std::initializer_list<std::string_view> astrWords, uint32_t dwElse = 0) const;
    /// The number in a token of this kind; throws when it isn't below dwCount.
    uint32_t Index(Path astrPath, std::string_view strKind, uint32_t dwCount,
                   std::string const& strDetail = "ter:NoEntity") const;
    /// @}

    /// @name Addresses that the answer names
    /// @{
    std::string Address(std::string_view strPath) const;
    std::string ServiceAddress(eService eWhich) const;
    std::string StreamAddress(uint32_t dwChannel, uint32_t dwStreamKind) const;
    std::string ReplayAddress(uint32_t dwChannel) const;
    /// @}

private:
    std::string RtspAddress(std::string const& strPath) const;

    CFace& m_tFace;
    tagExchange& m_tExchange;
    const eService m_eTo;
    const tagQuirks m_tQuirks;
    pugi::xml_node m_tHeader;
    pugi::xml_node m_tRequest;
    CXml& m_tAnswer;
};

/// Thrown by an operation that can't answer yet: it is called again when something has happened to the device, or at
/// llUntilUs (device::SteadyUs).
struct tagNotYet
{
    int64_t llUntilUs;
};

/// What a service's GetServiceCapabilities answers, also within Device's GetServices: a Capabilities element.
void WriteCapabilities(CCall& tCall, eService eWhich);
/// An operation that answers nothing but that it is done.
void ServeNothing(CCall& tCall);
/// GetServiceCapabilities.
template <eService eWhich>
void ServeCapabilities(CCall& tCall)
{
    WriteCapabilities(tCall, eWhich);
}
} // namespace onvif_device
