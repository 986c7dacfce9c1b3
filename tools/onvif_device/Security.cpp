#include "tools/onvif_device/Security.h"

#include "tools/onvif_device/Exchange.h"
#include "tools/onvif_device/Face.h"
#include "tools/onvif_device/Fault.h"
#include "tools/onvif_device/Names.h"
#include "tools/onvif_device/Schema.h"
#include "tools/onvif_device/Values.h"

#include "plugins/device/Device.h"

#include <cstdlib>
#include <openssl/evp.h>
#include <string>
#include <vector>

namespace onvif_device
{
namespace
{
constexpr char const* g_szDigestType =
    "http://docs.oasis-open.org/wss/2004/01/oasis-200401-wss-username-token-profile-1.0#PasswordDigest";

// Empty: it is no Base64.
std::string FromBase64(std::string const& strText)
{
    if (strText.empty() || strText.size() % 4 != 0 || strText.size() > 4096)
    {
        return {};
    }
    std::string strBytes(strText.size() / 4 * 3, '\0');
    const int nLength =
        EVP_DecodeBlock(reinterpret_cast<unsigned char*>(strBytes.data()),
                        reinterpret_cast<unsigned char const*>(strText.data()), static_cast<int>(strText.size()));
    const std::size_t nPadding = strText.ends_with("==") ? 2 : strText.ends_with('=') ? 1 : 0;
    strBytes.resize(nLength < 0 ? 0 : static_cast<std::size_t>(nLength) - nPadding);
    return strBytes;
}

std::string Sha1Base64(std::string const& strText)
{
    unsigned char abyDigest[EVP_MAX_MD_SIZE];
    unsigned nLength = 0;
    EVP_Digest(strText.data(), strText.size(), abyDigest, &nLength, EVP_sha1(), nullptr);
    unsigned char abyText[EVP_MAX_MD_SIZE * 2];
    const int nText = EVP_EncodeBlock(abyText, abyDigest, static_cast<int>(nLength));
    return {reinterpret_cast<char const*>(abyText), static_cast<std::size_t>(nText)};
}

// Whether it is a user of the device's whose password fnIsRight takes.
void CheckUser(CFace& tFace, tagExchange& tExchange, std::string const& strUser,
               std::function<bool(std::string const&)> const& fnIsRight)
{
    device::CDevice& tDevice = tFace.Device();
    const device::CDevice::CLock tLock(tDevice);
    uint32_t dwLevel = 0;
    device::CUsers& tUsers = tDevice.Part<device::CUsers>();
    tExchange.tCaller.strUser = strUser;
    const int nResult = tUsers.Check(strUser, fnIsRight, dwLevel);
    if (nResult != eResultOk)
    {
        tDevice.Raise(eEventUserLogin, tUsers.Level(strUser), 2, &tExchange.tCaller);
        throw CFault(eBlame::Sender, "ter:NotAuthorized", nResult == eResultLocked ? "ter:AccountLocked" : "",
                     nResult == eResultLocked ? "the account is locked" : "the sender is not authorized");
    }
    tExchange.tCaller.dwLevel = dwLevel;
}

void CheckToken(CFace& tFace, tagExchange& tExchange, pugi::xml_node tToken)
{
    CheckElements(tToken, "wsse:Username wsse:Password[Type] wsse:Nonce wsu:Created", "wsse");
    const std::string strNonce = FromBase64(ChildText(tToken, "Nonce"));
    const std::string strCreated = ChildText(tToken, "Created");
    const std::string strDigest = ChildText(tToken, "Password");
    const int64_t llNowUs = tFace.Device().NowUs();
    const int64_t llWindowUs = tFace.Quirks().llWindow * 1000000;
    int64_t llCreatedUs = 0;
    if (std::string_view(Child(tToken, "Password").attribute("Type").value()) != g_szDigestType)
    {
        FailNotAuthorized("a password must come as a digest");
    }
    if (strNonce.empty() || !ParseDateTime(strCreated, llCreatedUs))
    {
        FailNotAuthorized("the nonce or the time of the token is none");
    }
    if (std::abs(llCreatedUs - llNowUs) > llWindowUs)
    {
        FailNotAuthorized("the token was not created now");
    }
    // Taken before the digest is looked at: one that was seen on the wire is worth nothing afterwards.
    if (!tFace.Quirks().bReuseNonces && !tFace.TakeNonce(strNonce, llCreatedUs, llNowUs - 2 * llWindowUs))
    {
        FailNotAuthorized("the nonce was used before");
    }
    CheckUser(tFace, tExchange, ChildText(tToken, "Username"),
              [&](std::string const& strPassword)
              { return Sha1Base64(strNonce + strCreated + strPassword) == strDigest; });
}
} // namespace

void Authenticate(CFace& tFace, tagExchange& tExchange, pugi::xml_node tHeader)
{
    const std::string strAuth = tFace.Quirks().strAuth;
    tExchange.tCaller.dwLevel = 0;
    const pugi::xml_node tToken = Child(tHeader, {"Security", "UsernameToken"});
    if (strAuth == "none")
    {
        tExchange.tCaller.dwLevel = eUserAdministrator;
        return;
    }
    if (strAuth == "both" && (!tToken || tExchange.strDigestUser.empty()))
    {
        return;
    }
    if (tToken && strAuth != "digest")
    {
        CheckToken(tFace, tExchange, tToken);
    }
    if (!tExchange.strDigestUser.empty() && strAuth != "wsse")
    {
        AuthenticateDigest(tFace, tExchange);
    }
}

void AuthenticateDigest(CFace& tFace, tagExchange& tExchange)
{
    tExchange.bChallenge = true;
    CheckUser(tFace, tExchange, tExchange.strDigestUser, tExchange.fnDigest);
    tExchange.bChallenge = false;
}

void RequireLevel(CFace& tFace, tagExchange& tExchange, uint32_t dwLevel)
{
    if (tExchange.tCaller.dwLevel >= dwLevel)
    {
        return;
    }
    tExchange.bChallenge = tExchange.tCaller.dwLevel == 0 && tFace.Quirks().strAuth != "wsse";
    FailNotAuthorized(tExchange.tCaller.dwLevel == 0 ? "the sender has not said who it is"
                                                     : "the sender's level is too low");
}
} // namespace onvif_device
