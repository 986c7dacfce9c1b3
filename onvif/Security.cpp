#include "onvif/Security.h"

#include "onvif/Xml.h"

#include <array>
#include <mutex>

#include <openssl/evp.h>
#include <openssl/rand.h>

namespace onvif
{
namespace
{
// The block in its parts, between which stand the user, the digest, the nonce and the time. Every call builds one.
constexpr std::string_view g_strBeforeUser =
    R"(<wsse:Security xmlns:wsse="http://docs.oasis-open.org/wss/2004/01/oasis-200401-wss-wssecurity-secext-1.0.xsd")"
    R"( xmlns:wsu="http://docs.oasis-open.org/wss/2004/01/oasis-200401-wss-wssecurity-utility-1.0.xsd")"
    R"( s:mustUnderstand="1"><wsse:UsernameToken><wsse:Username>)";
constexpr std::string_view g_strBeforeDigest =
    R"(</wsse:Username><wsse:Password Type="http://docs.oasis-open.org/wss/2004/01/)"
    R"(oasis-200401-wss-username-token-profile-1.0#PasswordDigest">)";
constexpr std::string_view g_strBeforeNonce =
    R"(</wsse:Password><wsse:Nonce EncodingType="http://docs.oasis-open.org/wss/2004/01/)"
    R"(oasis-200401-wss-soap-message-security-1.0#Base64Binary">)";
constexpr std::string_view g_strBeforeTime = "</wsse:Nonce><wsu:Created>";
constexpr std::string_view g_strEnd = "</wsu:Created></wsse:UsernameToken></wsse:Security>";

using Nonce = std::array<char, 16>;

// Random numbers come in stores of many: OpenSSL takes as long for one as for a hundred. False: there are none.
bool TakeNonce(Nonce& acNonce)
{
    static std::mutex s_tMutex;
    static std::array<Nonce, 64> s_aacStore;
    static std::size_t s_nLeft = 0;
    const std::lock_guard tLock(s_tMutex);
    if (s_nLeft == 0)
    {
        if (RAND_bytes(reinterpret_cast<unsigned char*>(s_aacStore.data()), sizeof s_aacStore) != 1)
        {
            return false;
        }
        s_nLeft = s_aacStore.size();
    }
    acNonce = s_aacStore[--s_nLeft];
    return true;
}

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
    static EVP_MD* const s_pSha1 = EVP_MD_fetch(nullptr, "SHA1", nullptr); // never freed
    std::string strAll;
    strAll.append(strNonce).append(strCreated).append(strPassword);
    std::array<unsigned char, EVP_MAX_MD_SIZE> abyDigest{};
    unsigned nLength = 0;
    const bool bDone =
        s_pSha1 && EVP_Digest(strAll.data(), strAll.size(), abyDigest.data(), &nLength, s_pSha1, nullptr) == 1;
    return bDone ? Base64({reinterpret_cast<char const*>(abyDigest.data()), nLength}) : std::string();
}

std::string UsernameToken(std::string_view strUser, std::string_view strPassword, std::int64_t llDeviceTimeUs)
{
    Nonce acNonce{};
    if (!TakeNonce(acNonce))
    {
        return {};
    }
    const std::string_view strNonce(acNonce.data(), acNonce.size());
    // Whole seconds: some devices read no more.
    const std::string strTime = TimeText(llDeviceTimeUs - llDeviceTimeUs % 1000000);
    std::string strXml;
    strXml.reserve(1000);
    strXml.append(g_strBeforeUser).append(Escaped(strUser));
    strXml.append(g_strBeforeDigest).append(PasswordDigest(strNonce, strTime, strPassword));
    strXml.append(g_strBeforeNonce).append(Base64(strNonce));
    strXml.append(g_strBeforeTime).append(strTime).append(g_strEnd);
    return strXml;
}
} // namespace onvif
