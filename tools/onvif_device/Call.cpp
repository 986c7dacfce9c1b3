#include "tools/onvif_device/Call.h"

#include "tools/onvif_device/Exchange.h"
#include "tools/onvif_device/RtspSide.h"

#include <algorithm>

namespace onvif_device
{
namespace
{
std::string HostOnly(std::string const& strHostAndPort)
{
    const auto nColon = strHostAndPort.rfind(':');
    const bool bPort = nColon != std::string::npos && strHostAndPort.find(']', nColon) == std::string::npos;
    return bPort ? strHostAndPort.substr(0, nColon) : strHostAndPort;
}

[[noreturn]] void FailText(pugi::xml_node tNode, char const* szWhat)
{
    throw CFault(eBlame::Sender, "ter:InvalidArgs", {}, std::string(tNode.name()) + " is no " + szWhat);
}

template <class Value, class Parse>
Value Parsed(pugi::xml_node tNode, Value tElse, char const* szWhat, Parse fnParse)
{
    Value tValue = tElse;
    if (tNode && !fnParse(TextOf(tNode), tValue))
    {
        FailText(tNode, szWhat);
    }
    return tValue;
}
} // namespace

device::tagCaller const& CCall::Caller() const
{
    return m_tExchange.tCaller;
}

bool CCall::Flag(Path astrPath, bool bElse) const
{
    return Parsed(At(astrPath), bElse, "boolean", ParseBoolean);
}

int64_t CCall::Integer(Path astrPath, int64_t llLeast, int64_t llMost, int64_t llElse) const
{
    const int64_t llValue = Parsed(At(astrPath), llElse, "integer",
                                   [](std::string const& strText, int64_t& ll) { return ParseNumber(strText, ll); });
    if (Has(astrPath) && (llValue < llLeast || llValue > llMost))
    {
        FailValue("ter:ConfigModify", std::string(At(astrPath).name()) + " is out of its range");
    }
    return llValue;
}

double CCall::Number(Path astrPath, double fElse) const
{
    return Parsed(At(astrPath), fElse, "number",
                  [](std::string const& strText, double& f) { return ParseNumber(strText, f); });
}

int64_t CCall::DurationUs(Path astrPath, int64_t llElse) const
{
    return Parsed(At(astrPath), llElse, "duration", ParseDuration);
}

int64_t CCall::TimeUs(Path astrPath, int64_t llElse) const
{
    return Parsed(At(astrPath), llElse, "time", ParseDateTime);
}

uint32_t CCall::Word(Path astrPath, std::initializer_list<std::string_view> astrWords, uint32_t dwElse) const
{
    if (!Has(astrPath))
    {
        return dwElse;
    }
    auto const* const it = std::ranges::find(astrWords, Text(astrPath));
    if (it == astrWords.end())
    {
        FailText(At(astrPath), "value that there is");
    }
    return static_cast<uint32_t>(it - astrWords.begin());
}

uint32_t CCall::Index(Path astrPath, std::string_view strKind, uint32_t dwCount, std::string const& strDetail) const
{
    uint32_t dwIndex = 0;
    if (!ParseToken(Text(astrPath), strKind, {&dwIndex}) || dwIndex >= dwCount)
    {
        FailValue(strDetail, "there is nothing of the token " + Text(astrPath));
    }
    return dwIndex;
}

std::string CCall::Address(std::string_view strPath) const
{
    std::string const& strHost = m_tQuirks.strHost.empty() ? m_tExchange.strHost : m_tQuirks.strHost;
    return (m_tExchange.bTls ? "https://" : "http://") + strHost + std::string(strPath);
}

std::string CCall::ServiceAddress(eService eWhich) const
{
    return Address(PathOf(ServiceOf(eWhich), m_tQuirks));
}

std::string CCall::RtspAddress(std::string const& strPath) const
{
    const std::string strPort = ':' + std::to_string(m_tFace.Rtsp().Port(m_tFace.Index()));
    const std::string strHost = !m_tQuirks.strRtspHost.empty() ? m_tQuirks.strRtspHost
                                : !m_tQuirks.strHost.empty()   ? HostOnly(m_tQuirks.strHost) + strPort
                                                               : HostOnly(m_tExchange.strHost) + strPort;
    return "rtsp://" + strHost + strPath;
}

std::string CCall::StreamAddress(uint32_t dwChannel, uint32_t dwStreamKind) const
{
    return RtspAddress(m_tFace.Rtsp().StreamPath(m_tFace.Index(), dwChannel, dwStreamKind));
}

std::string CCall::ReplayAddress(uint32_t dwChannel) const
{
    return RtspAddress(m_tFace.Rtsp().ReplayPath(m_tFace.Index(), dwChannel));
}

void ServeNothing(CCall&) {}
} // namespace onvif_device
