#include "tools/onvif_device/Fault.h"

#include "tools/onvif_device/Xml.h"

#include "protocol/interface/Results.h"

namespace onvif_device
{
void CFault::Write(CXml& tXml) const
{
    constexpr char const* aszCodes[] = {"s:Sender", "s:Receiver", "s:MustUnderstand", "s:VersionMismatch"};
    tXml.In("s:Fault",
            [&]
            {
                tXml.In("s:Code",
                        [&]
                        {
                            tXml.Put("s:Value", tXml.Name(aszCodes[static_cast<std::size_t>(m_eWhose)]));
                            if (m_strCode.empty())
                            {
                                return;
                            }
                            tXml.In("s:Subcode",
                                    [&]
                                    {
                                        tXml.Put("s:Value", tXml.Name(m_strCode));
                                        if (!m_strDetail.empty())
                                        {
                                            tXml.In("s:Subcode", [&] { tXml.Put("s:Value", tXml.Name(m_strDetail)); });
                                        }
                                    });
                        });
                tXml.In("s:Reason", [&] { tXml.Put("s:Text", m_strReason, {{"xml:lang", "en"}}); });
            });
}

unsigned CFault::Status() const
{
    return m_eWhose == eBlame::Sender ? 400 : 500;
}

void FailValue(std::string strDetail, std::string strReason)
{
    throw CFault(eBlame::Sender, "ter:InvalidArgVal", std::move(strDetail), std::move(strReason));
}

void FailAction(std::string strDetail, std::string strReason)
{
    throw CFault(eBlame::Receiver, strDetail == "ter:ActionNotSupported" ? strDetail : "ter:Action",
                 strDetail == "ter:ActionNotSupported" ? "" : strDetail, std::move(strReason));
}

void FailNotAuthorized(std::string strReason)
{
    throw CFault(eBlame::Sender, "ter:NotAuthorized", {}, std::move(strReason));
}

void Require(int nResult, std::string const& strDetail)
{
    switch (nResult)
    {
    case eResultOk:
        return;
    case eResultWrongLogin:
    case eResultLocked:
        FailNotAuthorized("the sender may not do this");
    case eResultNotSupported:
        FailAction("ter:ActionNotSupported", "this device has no such function");
    case eResultBusy:
        FailAction("ter:MovingPTZ", "a user of a higher level does something else");
    case eResultDeviceFull:
        FailAction("ter:MaxRecordings", "there is no room left");
    case eResultRefused:
        FailAction({}, "it can't be done now");
    case eResultNoChannel:
    case eResultNotFound:
        FailValue(strDetail, "there is no such thing");
    default:
        FailValue("ter:ConfigModify", "a value is out of its range");
    }
}
} // namespace onvif_device
