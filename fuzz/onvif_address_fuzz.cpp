// Addresses: a device as its user names it, and what the device announces.

#include "fuzz/Input.h"
#include "onvif/Address.h"

#include <string>

namespace
{
// What is written is read again, and from then on as it was: an odd way to write an address is gone by then.
void RequireSteady(onvif::tagAddress const& tAddress)
{
    const auto tAgain = onvif::ParseAddress(tAddress.Text());
    REQUIRE(tAgain && onvif::ParseAddress(tAgain->Text()) == tAgain);
}
} // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* pbyData, std::size_t nLength)
{
    CInput tInput(pbyData, nLength);
    const auto wPort = tInput.Number<std::uint16_t>();
    const std::string strText(tInput.Rest());
    if (const auto tAddress = onvif::ParseDevice(strText, wPort))
    {
        REQUIRE(!tAddress->strHost.empty() && tAddress->strHost.find('@') == std::string::npos);
        RequireSteady(*tAddress);
        REQUIRE(wPort == 0 || tAddress->wPort != 0);
    }
    if (const auto tAddress = onvif::ParseAddress(strText))
    {
        RequireSteady(*tAddress);
    }
    const onvif::tagAddress tReached{false, "198.51.100.7", 8080, "/onvif/device_service"};
    const std::string strReachable = onvif::Reachable(strText, tReached, wPort);
    REQUIRE(strReachable.size() <= strText.size() + 64);
    return 0;
}
