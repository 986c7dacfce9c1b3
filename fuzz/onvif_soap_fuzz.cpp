// What a device sends in answer to a call, by HTTP status and body; and the events in it.

#include "fuzz/Input.h"
#include "onvif/Notification.h"
#include "onvif/Soap.h"
#include "protocol/interface/Results.h"

#include <string>

namespace
{
// Reads all of it in every way that there is.
void Read(pugi::xml_node tNode, int nDepth)
{
    REQUIRE(nDepth < 1000);
    REQUIRE(onvif::LocalName(tNode).size() <= std::strlen(tNode.name()));
    (void)onvif::Number(tNode);
    (void)onvif::Integer(tNode);
    (void)onvif::Truth(tNode);
    if (const auto tTime = onvif::Time(tNode))
    {
        // A time of ours is read again as it was.
        REQUIRE(onvif::ParseTime(onvif::TimeText(*tTime)) == tTime);
    }
    if (const auto tDuration = onvif::ParseDuration(onvif::Text(tNode)))
    {
        REQUIRE(onvif::ParseDuration(onvif::DurationText(*tDuration)) == tDuration);
    }
    const auto tEvent = onvif::ReadNotification(tNode);
    REQUIRE(tEvent.PlainTopic().size() <= tEvent.strTopic.size());
    REQUIRE(tEvent.Key().starts_with(tEvent.PlainTopic()));
    for (pugi::xml_node const& tChild : tNode.children())
    {
        Read(tChild, nDepth + 1);
    }
}
} // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* pbyData, std::size_t nLength)
{
    CInput tInput(pbyData, nLength);
    const int nStatus = tInput.Number<std::uint16_t>() % 600;
    const onvif::CAnswer tAnswer = onvif::CAnswer::Read(nStatus, std::string(tInput.Rest()));
    REQUIRE(static_cast<bool>(tAnswer) == (tAnswer.Result() == 0));
    REQUIRE(tAnswer.Result() == 0 ||
            (tAnswer.Result() >= eResultNotSupported && tAnswer.Result() <= eResultStillRunning));
    REQUIRE(!tAnswer || tAnswer.Subcode().empty());
    if (tAnswer.Body())
    {
        Read(tAnswer.Body(), 0);
        REQUIRE(onvif::ReadNotifications(tAnswer.Body()).size() <= 2000);
        // A part that goes back to the device is whole by itself.
        REQUIRE(onvif::ParseXml(onvif::Serialized(tAnswer.Body())) != nullptr);
    }
    const std::string strText(tInput.Rest());
    const auto pAgain = onvif::ParseXml("<a b=\"" + onvif::Escaped(strText) + "\">" + onvif::Escaped(strText) + "</a>");
    REQUIRE(pAgain != nullptr);
    return 0;
}
