#pragma once

#include "onvif/Xml.h"

#include <memory>
#include <string>
#include <string_view>

namespace onvif
{
/// The services of a device.
enum class eService
{
    Device,
    Media,
    Media2,
    PTZ,
    Imaging,
    Events,
    DeviceIO,
    Recording,
    Search,
    Replay,
    Receiver,
    Display,
    Analytics,
};
inline constexpr std::size_t g_nServices = 13;

/// What is known of a service. Every request declares all these prefixes, and besides: tt (the schema), wsnt, wsa,
/// wstop, tns1 (topics), ter, xsd, xsi.
struct tagServiceName
{
    eService eWhich;
    char const* szPrefix;         ///< "trt"
    char const* szNamespace;      ///< as GetServices names it
    char const* szInCapabilities; ///< its element in GetCapabilities' answer, a path; null: only GetServices has it
};
tagServiceName const& NameOf(eService eWhich);
/// Null: none of these.
tagServiceName const* FindService(std::string_view strNamespace);

/// A request as it goes over the wire.
/// strElement: "trt:GetProfiles", and in strBody what stands inside; strHeader: blocks of the header.
std::string Envelope(std::string_view strElement, std::string_view strBody, std::string_view strHeader);

/// An answer: a response element, or why there is none.
class CAnswer
{
public:
    CAnswer() = default;
    /// For failures that no device told of: an ePluginResult.
    static CAnswer Failed(int nResult, std::string strReason = {});
    /// What a device sent with this HTTP status.
    static CAnswer Read(int nStatus, std::string strBody);

    int Result() const { return m_nResult; }
    explicit operator bool() const { return m_nResult == 0; }
    /// The response element, null where there is none; valid as long as this or a copy.
    pugi::xml_node Body() const { return m_tBody; }
    /// The innermost subcode of a fault without its prefix: "NotAuthorized"; empty: no fault.
    std::string const& Subcode() const { return m_strSubcode; }
    /// For a line in a log.
    std::string const& Reason() const { return m_strReason; }
    /// The device has answered, if only with a fault.
    bool Answered() const { return m_bAnswered; }
    int HttpStatus() const { return m_nStatus; }
    /// The Date header; empty: there was none.
    std::string const& Date() const { return m_strDate; }
    void SetDate(std::string strDate) { m_strDate = std::move(strDate); }

private:
    void TakeFault(pugi::xml_node tFault, int nStatus);

    std::shared_ptr<pugi::xml_document const> m_pDocument;
    pugi::xml_node m_tBody;
    int m_nResult = 0;
    int m_nStatus = 0;
    bool m_bAnswered = false;
    std::string m_strDate;
    std::string m_strSubcode;
    std::string m_strReason;
};
} // namespace onvif
