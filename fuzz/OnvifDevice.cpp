#include "fuzz/OnvifDevice.h"

#include "fuzz/Input.h"
#include "onvif/HttpCallers.h"
#include "onvif/Soap.h"
#include "protocol/interface/Results.h"

// --- the device ------------------------------------------------------------------------------------------------------

namespace
{
constexpr std::size_t g_nPatience = 500;  // requests; then the device is gone
constexpr std::size_t g_nEndless = 10000; // nobody may ask a device that is gone so often

constexpr char g_szLacking[] = "<s:Fault><s:Code><s:Value>s:Receiver</s:Value><s:Subcode><s:Value>"
                               "ter:ActionNotSupported</s:Value></s:Subcode></s:Code></s:Fault>";
constexpr std::string_view g_strResponse = "Response";

// The local name of the first element.
std::string_view NameOf(std::string_view strElement)
{
    strElement.remove_prefix(std::min(strElement.find('<') + 1, strElement.size())); // npos + 1 is 0
    strElement = strElement.substr(0, strElement.find_first_of(" />"));
    return onvif::WithoutPrefix(strElement);
}

std::string Services()
{
    std::string strServices;
    for (std::size_t i = 0; i < onvif::g_nServices; ++i)
    {
        strServices.append("<tds:Service><tds:Namespace>")
            .append(onvif::NameOf(static_cast<onvif::eService>(i)).szNamespace)
            .append("</tds:Namespace><tds:XAddr>http://192.0.2.1/onvif</tds:XAddr></tds:Service>");
    }
    return strServices;
}
} // namespace

CFuzzDevice& FuzzDevice()
{
    static CFuzzDevice s_tDevice;
    return s_tDevice;
}

void CFuzzDevice::SetAnswers(std::string_view strAnswers)
{
    m_tAnswers.clear();
    m_nRequests = 0;
    while (!strAnswers.empty())
    {
        const std::string_view strLine = strAnswers.substr(0, strAnswers.find('\n'));
        strAnswers.remove_prefix(std::min(strLine.size() + 1, strAnswers.size()));
        std::string_view strName = NameOf(strLine);
        strName.remove_suffix(strName.ends_with(g_strResponse) ? g_strResponse.size() : 0);
        m_tAnswers[strName].astrElements.push_back(strLine);
    }
}

std::string CFuzzDevice::Answer(std::string_view strRequest)
{
    REQUIRE(++m_nRequests < g_nEndless);
    if (m_nRequests > g_nPatience)
    {
        return {};
    }
    const bool bFile = strRequest.empty();
    const std::string_view strName = bFile ? "Get" : NameOf(strRequest.substr(strRequest.find("<s:Body>") + 1));
    const std::string strAnswer = Element(strName);
    return bFile ? strAnswer
                 : R"(<s:Envelope xmlns:tt="http://www.onvif.org/ver10/schema"><s:Body>)" + strAnswer +
                       "</s:Body></s:Envelope>";
}

std::string CFuzzDevice::Element(std::string_view strName)
{
    if (const auto it = m_tAnswers.find(strName); it != m_tAnswers.end())
    {
        tagAnswers& t = it->second;
        const std::string_view strElement = t.astrElements[t.nNext];
        t.nNext += t.nNext + 1 < t.astrElements.size() ? 1 : 0;
        return std::string(strElement);
    }
    if (strName == "GetServices")
    {
        return "<tds:GetServicesResponse>" + Services() + "</tds:GetServicesResponse>";
    }
    return strName.starts_with("Get") ? g_szLacking : "<r:" + std::string(strName) + "Response/>";
}

// --- in place of onvif/Http.cpp --------------------------------------------------------------------------------------

namespace onvif
{
class CHttp::CImpl
{
};

CHttp::CHttp() : m_pCallers(std::make_unique<CHttpCallers>()) {}
CHttp::~CHttp() = default;
void CHttp::Begin(rtsp::CTask<>) {} // what goes on by itself doesn't
void CHttp::Stop() {}
void CHttp::Start() {}
void CHttp::End(std::shared_ptr<CHttpGroup> const& pGroup, int nResult)
{
    pGroup->End(nResult);
}
bool CHttp::IsThisThread() const
{
    return false;
}

CHttp::CInside::CInside(CHttp& tHttp) : m_ptCallers(tHttp.m_pCallers.get()) {}
CHttp::CInside::~CInside() = default;

CHttp::CSend CHttp::Send(std::shared_ptr<CHttpGroup> pGroup, tagHttpRequest const& tRequest)
{
    return {*this, std::move(pGroup), tRequest};
}
bool CHttp::CSend::await_ready()
{
    m_tAnswer.strBody = FuzzDevice().Answer(m_tRequest.strBody);
    m_tAnswer.nStatus = 200;
    m_tAnswer.nResult = m_tAnswer.strBody.empty() ? int{eResultTimeOut} : int{eResultOk};
    return true;
}
bool CHttp::CSend::await_suspend(std::coroutine_handle<>)
{
    return false;
}

CHttp::CPause CHttp::Until(std::shared_ptr<CHttpGroup> pGroup, Clock::time_point tWhen)
{
    return {*m_pImpl, std::move(pGroup), tWhen};
}
bool CHttp::CPause::await_suspend(std::coroutine_handle<>)
{
    return false;
}
CHttp::CReadable CHttp::Readable(std::shared_ptr<CHttpGroup> pGroup, int nFile)
{
    return {*m_pImpl, std::move(pGroup), nFile};
}
bool CHttp::CReadable::await_suspend(std::coroutine_handle<>)
{
    return false;
}
} // namespace onvif
