// Datagrams that anybody on the network may send.

#include "fuzz/Input.h"
#include "onvif/DiscoveryMessage.h"

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* pbyData, std::size_t nLength)
{
    const std::string_view strMessage(reinterpret_cast<char const*>(pbyData), nLength);
    for (onvif::tagAnnouncement const& t : onvif::ParseAnnouncements(strMessage))
    {
        REQUIRE(!t.strEndpoint.empty() && t.strEndpoint.size() <= nLength);
        REQUIRE(t.strName.size() <= nLength && t.strHardware.size() <= nLength && t.strLocation.size() <= nLength);
        for (char const* const szSender : {"192.0.2.1", "fe80::1%eth0"})
        {
            if (const auto tAddress = onvif::Choose(t, szSender))
            {
                REQUIRE(!t.astrAddresses.empty() && !tAddress->strHost.empty() && tAddress->wPort != 0);
                REQUIRE(onvif::ParseAddress(tAddress->Text()).has_value());
            }
        }
    }
    onvif::tagAnnouncement tAnnouncement;
    onvif::TakeScope(tAnnouncement, strMessage);
    return 0;
}
