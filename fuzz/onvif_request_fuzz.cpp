// What comes at the listener: a request in pieces, and the events in it.

#include "fuzz/Input.h"
#include "onvif/Incoming.h"
#include "onvif/Notification.h"

#include <algorithm>

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* pbyData, std::size_t nLength)
{
    CInput tInput(pbyData, nLength);
    const std::size_t nPiece = 1 + tInput.Number<std::uint8_t>();
    const std::string_view strAll = tInput.Rest();
    onvif::CIncoming tWhole;
    const auto eWhole = tWhole.Take(strAll);
    // In pieces it comes to the same, but that it may be over earlier.
    onvif::CIncoming tPieces;
    auto eState = onvif::CIncoming::eState::Partial;
    for (std::size_t n = 0; n < strAll.size() && eState == onvif::CIncoming::eState::Partial; n += nPiece)
    {
        eState = tPieces.Take(strAll.substr(n, nPiece));
    }
    REQUIRE(eWhole != onvif::CIncoming::eState::Partial || eState == eWhole || strAll.empty());
    if (eState == onvif::CIncoming::eState::Whole)
    {
        REQUIRE(tPieces.Body().size() <= strAll.size());
        REQUIRE(eWhole == eState ? tPieces.Path() == tWhole.Path() : true);
        if (const auto pDocument = onvif::ParseXml(tPieces.Body()))
        {
            (void)onvif::ReadNotifications(onvif::Find(*pDocument, "Envelope/Body/Notify"));
        }
    }
    return 0;
}
