#include "onvif/Security.h"

#include "onvif/Xml.h"

#include <array>

#include <openssl/evp.h>
#include <openssl/rand.h>

namespace onvif
{
namespace
{
constexpr std::string_view g_strSecurity =
    "http://docs.oasis-open.org/wss/2004/01/oasis-200401-wss-wssecurity-secext-1.0.xsd";
constexpr std::string_view g_strUtility =
    "http://docs.oasis-open.org/wss/2004/01/oasis-200401-wss-wssecurity-utility-1.0.xsd";
constexpr std::string_view g_strDigestType =
    "http://docs.oasis-open.org/wss/2004/01/oasis-200401-wss-username-token-profile-1.0#PasswordDigest";
constexpr std::string_view g_strBase64Type =
    "http://docs.oasis-open.org/wss/2004/01/oasis-200401-wss-soap-message-security-1.0#Base64Binary";

std::string Base64(std::string_view strBytes)
{
    std::string strText(4 * ((strBytes.size() + 2) / 3) + 1, '\0');
    EVP_EncodeBlock(reinterpret_cast<unsigned char*>(strText.data()),
                    reinterpret_cast<unsigned char const*>(strBytes.data()), static_cast<int>(strBytes.size()));
    strText.pop_back();
    return strText;
}
} // namespace

std::string PasswordDigest(std::string_view strNonce, std::string_view strCreated, std::string_view strPassword)
{
    std::string strAll;
    strAll.append(strNonce).append(strCreated).append(strPassword);
    std::array<unsigned char, EVP_MAX_MD_SIZE> abyDigest{};
    std::size_t nLength = 0;
    const bool bDone =
        EVP_Q_digest(nullptr, "SHA1", nullptr, strAll.data(), strAll.size(), abyDigest.data(), &nLength) == 1;
    return bDone ? Base64({reinterpret_cast<char const*>(abyDigest.data()), nLength}) : std::string();
}

std::string UsernameToken(std::string_view strUser, std::string_view strPassword, std::int64_t llDeviceTimeUs)
{
    std::array<char, 16> acNonce{};
    if (RAND_bytes(reinterpret_cast<unsigned char*>(acNonce.data()), static_cast<int>(acNonce.size())) != 1)
    {
        return {};
    }
    const std::string_view strNonce(acNonce.data(), acNonce.size());
    // Whole seconds: some devices read no more.
    const std::string strTime = TimeText(llDeviceTimeUs - llDeviceTimeUs % 1000000);
    CXmlWriter tXml;
    tXml.Open("wsse:Security").Attribute("xmlns:wsse", g_strSecurity).Attribute("xmlns:wsu", g_strUtility);
    tXml.Attribute("s:mustUnderstand", "1").Open("wsse:UsernameToken").Add("wsse:Username", strUser);
    tXml.Open("wsse:Password").Attribute("Type", g_strDigestType);
    tXml.Text(PasswordDigest(strNonce, strTime, strPassword)).Close();
    tXml.Open("wsse:Nonce").Attribute("EncodingType", g_strBase64Type).Text(Base64(strNonce)).Close();
    tXml.Add("wsu:Created", strTime);
    return tXml.Take();
}
} // namespace onvif
