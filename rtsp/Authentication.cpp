#include "rtsp/Authentication.h"

#include "rtsp/Headers.h"
#include "rtsp/Text.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <functional>
#include <utility>

#include <openssl/evp.h>
#include <openssl/rand.h>

namespace rtsp
{
namespace
{
constexpr unsigned g_nMostStale = 3;

// The strongest first.
struct tagAlgorithm
{
    std::string_view strName; // as challenges have it
    char const* szDigest;     // as OpenSSL has it
};
constexpr std::array<tagAlgorithm, 3> g_atAlgorithms{{
    {"SHA-512-256", "SHA512-256"},
    {"SHA-256", "SHA256"},
    {"MD5", "MD5"},
}};
constexpr std::string_view g_strSession = "-sess";

bool IsSession(tagChallenge const& tChallenge)
{
    const std::string_view strName = tChallenge.strAlgorithm;
    return strName.size() > g_strSession.size() &&
           EqualsInAnyCase(strName.substr(strName.size() - g_strSession.size()), g_strSession);
}

tagAlgorithm const* FindAlgorithm(tagChallenge const& tChallenge)
{
    std::string_view strName = tChallenge.strAlgorithm;
    if (strName.empty())
    {
        return &g_atAlgorithms.back();
    }
    strName.remove_suffix(IsSession(tChallenge) ? g_strSession.size() : 0);
    const auto it = std::find_if(g_atAlgorithms.begin(), g_atAlgorithms.end(),
                                 [&](tagAlgorithm const& t) { return EqualsInAnyCase(t.strName, strName); });
    return it == g_atAlgorithms.end() ? nullptr : &*it;
}

std::string Hex(unsigned char const* pby, std::size_t nLength)
{
    constexpr char szHex[] = "0123456789abcdef";
    std::string strHex;
    for (std::size_t i = 0; i < nLength; ++i)
    {
        strHex += {szHex[pby[i] >> 4], szHex[pby[i] & 15]};
    }
    return strHex;
}

// What OpenSSL has for it: looked for once, since that takes longer than to use it. Null: it was set up without.
EVP_MD* Find(tagAlgorithm const* ptAlgorithm)
{
    static const std::array<EVP_MD*, g_atAlgorithms.size()> s_apDigests = [] // never freed
    {
        std::array<EVP_MD*, g_atAlgorithms.size()> apDigests{};
        std::ranges::transform(g_atAlgorithms, apDigests.begin(),
                               [](tagAlgorithm const& t) { return EVP_MD_fetch(nullptr, t.szDigest, nullptr); });
        return apDigests;
    }();
    return s_apDigests[static_cast<std::size_t>(ptAlgorithm - g_atAlgorithms.data())];
}

// Nothing: OpenSSL was set up without this digest.
std::optional<std::string> Digest(tagChallenge const& tChallenge, std::string const& strText)
{
    EVP_MD const* const pDigest = Find(FindAlgorithm(tChallenge));
    std::array<unsigned char, EVP_MAX_MD_SIZE> abyDigest{};
    unsigned nLength = 0;
    if (!pDigest || EVP_Digest(strText.data(), strText.size(), abyDigest.data(), &nLength, pDigest, nullptr) != 1)
    {
        return std::nullopt;
    }
    return Hex(abyDigest.data(), nLength);
}

std::string Base64(std::string_view strText)
{
    std::string strCoded(4 * ((strText.size() + 2) / 3) + 1, '\0');
    EVP_EncodeBlock(reinterpret_cast<unsigned char*>(strCoded.data()),
                    reinterpret_cast<unsigned char const*>(strText.data()), static_cast<int>(strText.size()));
    strCoded.pop_back();
    return strCoded;
}

std::string Quote(std::string_view strText)
{
    std::string strQuoted;
    for (const char c : strText)
    {
        strQuoted.append(c == '"' || c == '\\' ? 1 : 0, '\\').append(1, c);
    }
    return strQuoted;
}
// A backslash before anything but a quote or a backslash is one that a server forgot to escape.
std::string Unquote(std::string_view strText)
{
    std::string strPlain;
    for (std::size_t i = 0; i < strText.size(); ++i)
    {
        const bool bEscape =
            strText[i] == '\\' && i + 1 < strText.size() && (strText[i + 1] == '"' || strText[i + 1] == '\\');
        i += bEscape ? 1 : 0;
        strPlain += strText[i];
    }
    return strPlain;
}

bool CanAnswer(tagChallenge const& tChallenge, std::string_view strUser)
{
    if (tChallenge.strScheme == "basic")
    {
        return strUser.find(':') == std::string_view::npos;
    }
    return tChallenge.strScheme == "digest" && !tChallenge.strNonce.empty() && FindAlgorithm(tChallenge) &&
           (tChallenge.strQop.empty() || HasWord(tChallenge.strQop, "auth"));
}

bool IsStronger(tagChallenge const& tOne, tagChallenge const& tOther)
{
    const auto Weakness = [](tagChallenge const& t)
    { return t.strScheme == "basic" ? g_atAlgorithms.data() + g_atAlgorithms.size() : FindAlgorithm(t); };
    return std::less<>()(Weakness(tOne), Weakness(tOther));
}

void SetParameter(tagChallenge& tChallenge, std::string_view strName, std::string_view strValue)
{
    const std::pair<std::string_view, std::string*> atTexts[] = {
        {"realm", &tChallenge.strRealm},         {"nonce", &tChallenge.strNonce}, {"opaque", &tChallenge.strOpaque},
        {"algorithm", &tChallenge.strAlgorithm}, {"qop", &tChallenge.strQop},
    };
    for (auto const& [strText, pstrValue] : atTexts)
    {
        if (EqualsInAnyCase(strName, strText))
        {
            *pstrValue = strValue;
        }
    }
    tChallenge.bStale |= EqualsInAnyCase(strName, "stale") && EqualsInAnyCase(strValue, "true");
    tChallenge.bUserHash |= EqualsInAnyCase(strName, "userhash") && EqualsInAnyCase(strValue, "true");
}
} // namespace

std::vector<tagChallenge> ParseChallenges(std::string_view strValue)
{
    constexpr std::string_view strSeparators = " \t,";
    std::vector<tagChallenge> atChallenges;
    while (true)
    {
        strValue.remove_prefix(std::min(strValue.find_first_not_of(strSeparators), strValue.size()));
        if (strValue.empty())
        {
            return atChallenges;
        }
        const std::string_view strWord = strValue.substr(0, strValue.find_first_of(" \t,="));
        strValue.remove_prefix(strWord.size());
        const std::string_view strBehind =
            strValue.substr(std::min(strValue.find_first_not_of(" \t"), strValue.size()));
        if (!strBehind.starts_with('='))
        {
            atChallenges.emplace_back().strScheme = Lower(strWord);
            continue;
        }
        strValue = strBehind.substr(1);
        strValue.remove_prefix(std::min(strValue.find_first_not_of(" \t"), strValue.size()));
        std::size_t nEnd = 0;
        std::string strText;
        if (strValue.starts_with('"'))
        {
            for (nEnd = 1; nEnd < strValue.size() && strValue[nEnd] != '"'; ++nEnd)
            {
                nEnd += strValue[nEnd] == '\\' && nEnd + 1 < strValue.size() ? 1 : 0;
            }
            strText = strValue.substr(1, nEnd - 1);
            strText = nEnd < strValue.size() ? strText : Quote(strText);
            nEnd = std::min(nEnd + 1, strValue.size());
        }
        else
        {
            nEnd = std::min(strValue.find_first_of(strSeparators), strValue.size());
            strText = Quote(strValue.substr(0, nEnd));
        }
        strValue.remove_prefix(nEnd);
        if (!atChallenges.empty())
        {
            SetParameter(atChallenges.back(), strWord, strText);
        }
    }
}

CAuthenticator::CAuthenticator(std::string strUser, std::string strPassword)
    : m_strUser(std::move(strUser)), m_strPassword(std::move(strPassword))
{
}

bool CAuthenticator::TakeChallenges(std::vector<std::string_view> const& astrChallenges)
{
    std::vector<tagChallenge> atChallenges;
    for (const std::string_view strChallenge : astrChallenges)
    {
        for (tagChallenge& tChallenge : ParseChallenges(strChallenge))
        {
            if (!m_strUser.empty() && CanAnswer(tChallenge, m_strUser))
            {
                atChallenges.push_back(std::move(tChallenge));
            }
        }
    }
    // Only the strongest counts: a refusal must not bring us to send the password itself.
    auto itStrongest = std::min_element(atChallenges.begin(), atChallenges.end(), &IsStronger);
    while (itStrongest != atChallenges.end() && !Prepare(*itStrongest))
    {
        atChallenges.erase(itStrongest);
        itStrongest = std::min_element(atChallenges.begin(), atChallenges.end(), &IsStronger);
    }
    const bool bTaken = itStrongest != atChallenges.end() && !WasRefused(*itStrongest);
    m_nStale = bTaken && m_nUsed == 1 ? m_nStale + 1 : 0;
    m_nUsed = 0;
    m_tChallenge = bTaken ? std::optional(std::move(*itStrongest)) : std::nullopt;
    return bTaken;
}

// A nonce that was good for earlier requests has only run out when another one comes instead.
bool CAuthenticator::WasRefused(tagChallenge const& tChallenge) const
{
    if (!m_tChallenge || m_nUsed == 0)
    {
        return false;
    }
    if (m_nUsed == 1)
    {
        return !tChallenge.bStale || m_nStale >= g_nMostStale;
    }
    return !tChallenge.bStale && tChallenge.strNonce == m_tChallenge->strNonce;
}

bool CAuthenticator::Prepare(tagChallenge const& tChallenge)
{
    std::array<unsigned char, 16> abyRandom{};
    if (tChallenge.strScheme == "digest" &&
        (!Digest(tChallenge, {}) || RAND_bytes(abyRandom.data(), static_cast<int>(abyRandom.size())) != 1))
    {
        return false;
    }
    m_strClientNonce = Hex(abyRandom.data(), abyRandom.size());
    return true;
}

std::string CAuthenticator::Authorization(std::string_view strMethod, std::string_view strUri)
{
    if (!m_tChallenge)
    {
        return {};
    }
    ++m_nUsed;
    tagChallenge const& t = *m_tChallenge;
    return t.strScheme == "basic"
               ? "Basic " + Base64(m_strUser + ':' + m_strPassword)
               : AnswerDigest(t, m_strUser, m_strPassword, strMethod, strUri, m_nUsed, m_strClientNonce);
}

std::string AnswerDigest(tagChallenge const& t, std::string const& strUser, std::string const& strPassword,
                         std::string_view strMethod, std::string_view strUri, unsigned nCount,
                         std::string const& strClientNonce)
{
    const auto Hash = [&t](std::string const& strText) { return Digest(t, strText).value_or(""); };
    const std::string strRealm = Unquote(t.strRealm);
    const std::string strNonce = Unquote(t.strNonce) + ':';
    std::string strSecret = Hash(strUser + ':' + strRealm + ':' + strPassword);
    if (IsSession(t))
    {
        strSecret = Hash(strSecret + ':' + strNonce + strClientNonce);
    }
    const bool bQop = !t.strQop.empty();
    char szCount[9];
    std::snprintf(szCount, sizeof szCount, "%08x", nCount);
    const std::string strQop = bQop ? szCount + (':' + strClientNonce) + ":auth:" : std::string();
    const std::string strRequest = Hash(std::string(strMethod) + ':' + std::string(strUri));
    std::string strValue = "Digest username=\"" + (t.bUserHash ? Hash(strUser + ':' + strRealm) : Quote(strUser)) +
                           "\", realm=\"" + t.strRealm + "\", nonce=\"" + t.strNonce + "\", uri=\"" + Quote(strUri) +
                           "\", response=\"" + Hash(strSecret + ':' + strNonce + strQop + strRequest) + '"';
    if (!t.strAlgorithm.empty())
    {
        strValue += ", algorithm=" + t.strAlgorithm;
    }
    if (!t.strOpaque.empty())
    {
        strValue += ", opaque=\"" + t.strOpaque + '"';
    }
    if (bQop)
    {
        strValue += ", qop=auth, nc=" + std::string(szCount);
    }
    if (bQop || IsSession(t))
    {
        strValue += ", cnonce=\"" + strClientNonce + '"';
    }
    return t.bUserHash ? strValue + ", userhash=true" : strValue;
}
} // namespace rtsp
