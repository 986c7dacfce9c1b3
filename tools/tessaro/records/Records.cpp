#include "tools/tessaro/records/Records.h"

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <fmt/format.h>

namespace tessaro
{
namespace
{
std::uint64_t ReadWord(tagField const& tField, unsigned char const* pField)
{
    std::uint64_t ullValue = 0;
    std::memcpy(&ullValue, pField, tField.nSize);
    return ullValue;
}

std::int64_t ReadSigned(tagField const& tField, unsigned char const* pField)
{
    const auto ullValue = ReadWord(tField, pField);
    return tField.nSize == 4 ? static_cast<std::int32_t>(ullValue) : static_cast<std::int64_t>(ullValue);
}

// The word of a record that counts its entries, or says for how many there is room.
std::uint32_t* Word(tagRecord const& tRecord, void* pData, char const* szKey)
{
    const auto it =
        std::ranges::find_if(tRecord.atFields, [&](tagField const& t) { return strcmp(t.szKey, szKey) == 0; });
    return it == tRecord.atFields.end()
               ? nullptr
               : reinterpret_cast<std::uint32_t*>(static_cast<unsigned char*>(pData) + it->nOffset);
}

std::string Hex(std::span<unsigned char const> abyData)
{
    while (!abyData.empty() && abyData.back() == 0)
    {
        abyData = abyData.first(abyData.size() - 1);
    }
    std::string strText;
    for (const unsigned char by : abyData)
    {
        strText += fmt::format("{:02x}", by);
    }
    return strText;
}

json Bits(tagNames const& tNames, std::uint64_t ullBits)
{
    json tList = json::array();
    for (tagName const& t : tNames.atNames)
    {
        const auto ullBit = static_cast<std::uint64_t>(t.llValue);
        if (ullBit != 0 && (ullBits & ullBit) == ullBit)
        {
            tList.push_back(t.szName);
            ullBits &= ~ullBit;
        }
    }
    if (ullBits != 0)
    {
        tList.push_back(ullBits);
    }
    return tList;
}

json Objects(tagRecord const& tRecord, unsigned char const* pFirst, std::size_t nCount, bool bSecrets)
{
    json tList = json::array();
    for (std::size_t i = 0; i < nCount && pFirst; ++i)
    {
        tList.push_back(ToJson(tRecord, pFirst + i * tRecord.nSize, bSecrets));
    }
    return tList;
}

json Value(tagRecord const& tRecord, tagField const& tField, unsigned char const* pData, bool bSecrets)
{
    unsigned char const* const pField = pData + tField.nOffset;
    const auto Count = [&](char const* szKey)
    {
        std::uint32_t const* const pdw = Word(tRecord, const_cast<unsigned char*>(pData), szKey);
        return pdw ? std::size_t{*pdw} : SIZE_MAX;
    };
    switch (tField.eKind)
    {
    case eShape::Number:
        return ReadWord(tField, pField);
    case eShape::Signed:
        return ReadSigned(tField, pField);
    case eShape::Flag:
        return ReadWord(tField, pField) != 0;
    case eShape::Named:
    {
        char const* const szName = tField.ptNames->Find(ReadSigned(tField, pField));
        return szName ? json(szName) : json(ReadWord(tField, pField));
    }
    case eShape::Bits:
        return Bits(*tField.ptNames, ReadWord(tField, pField));
    case eShape::Time:
    {
        const auto llTimeUs = ReadSigned(tField, pField);
        return llTimeUs == 0 ? json(nullptr) : json(TimeText(llTimeUs));
    }
    case eShape::Colour:
        return fmt::format("#{:06x}", ReadWord(tField, pField));
    case eShape::Text:
    {
        std::string strText(reinterpret_cast<char const*>(pField),
                            strnlen(reinterpret_cast<char const*>(pField), tField.nSize));
        return !strText.empty() && (tField.dwFlags & g_bSecret) != 0 && !bSecrets ? json("***") : json(strText);
    }
    case eShape::Bytes:
        return Hex({pField, tField.nSize});
    case eShape::Numbers:
    {
        json tList = json::array();
        for (std::size_t i = 0; i < tField.nSize; i += 4)
        {
            std::uint32_t dw = 0;
            std::memcpy(&dw, pField + i, sizeof dw);
            tList.push_back(dw);
        }
        return tList;
    }
    case eShape::Record:
        return ToJson(*tField.ptRecord, pField, bSecrets);
    case eShape::Array:
        return Objects(*tField.ptRecord, pField, std::min(Count("count"), tField.nSize / tField.ptRecord->nSize),
                       bSecrets);
    case eShape::List:
    {
        unsigned char const* pFirst = nullptr;
        std::memcpy(&pFirst, pField, sizeof pFirst);
        return Objects(*tField.ptRecord, pFirst, std::min(Count("count"), Count("capacity")), bSecrets);
    }
    case eShape::Pointer:
        break;
    }
    return nullptr;
}

[[noreturn]] void Wrong(std::string const& strPath, std::string const& strExpected, json const& tValue)
{
    throw std::invalid_argument(fmt::format("{} is {}, not {}", strPath, strExpected, tValue.dump()));
}

std::int64_t Integer(json const& tValue, std::string const& strPath, std::int64_t llLeast, std::int64_t llMost)
{
    if (!tValue.is_number_integer() || tValue.get<std::int64_t>() < llLeast || tValue.get<std::int64_t>() > llMost)
    {
        Wrong(strPath, fmt::format("a whole number from {} to {}", llLeast, llMost), tValue);
    }
    return tValue.get<std::int64_t>();
}

std::int64_t Enumerator(tagNames const& tNames, json const& tValue, std::string const& strPath)
{
    if (tValue.is_number_unsigned())
    {
        return Integer(tValue, strPath, 0, UINT32_MAX);
    }
    const auto Found = tValue.is_string() ? tNames.Find(tValue.get<std::string>()) : std::nullopt;
    return Found ? *Found : (Wrong(strPath, "one of " + tNames.List(), tValue), 0);
}

void WriteObjects(tagRecord const& tRecord, json const& tValue, unsigned char* pFirst, Arena& tArena,
                  std::string const& strPath)
{
    for (std::size_t i = 0; i < tValue.size(); ++i)
    {
        FromJson(tRecord, tValue[i], pFirst + i * tRecord.nSize, tArena, fmt::format("{}[{}]", strPath, i));
    }
}

void SetWord(tagRecord const& tRecord, void* pData, char const* szKey, std::size_t nValue)
{
    if (std::uint32_t* const pdw = Word(tRecord, pData, szKey))
    {
        *pdw = static_cast<std::uint32_t>(nValue);
    }
}

void SetText(tagField const& tField, json const& tValue, unsigned char* pField, std::string const& strPath)
{
    if (!tValue.is_string() || tValue.get_ref<std::string const&>().size() >= tField.nSize)
    {
        Wrong(strPath, fmt::format("a text of at most {} bytes", tField.nSize - 1), tValue);
    }
    std::memset(pField, 0, tField.nSize);
    tValue.get_ref<std::string const&>().copy(reinterpret_cast<char*>(pField), tField.nSize);
}

void SetBytes(tagField const& tField, json const& tValue, unsigned char* pField, std::string const& strPath)
{
    const std::string strHex = tValue.is_string() ? tValue.get<std::string>() : "?";
    if (strHex.size() % 2 != 0 || strHex.size() > 2 * tField.nSize ||
        strHex.find_first_not_of("0123456789abcdefABCDEF") != std::string::npos)
    {
        Wrong(strPath, fmt::format("a text of hexadecimal digits, two for each of at most {} bytes", tField.nSize),
              tValue);
    }
    std::memset(pField, 0, tField.nSize);
    for (std::size_t i = 0; i < strHex.size(); i += 2)
    {
        pField[i / 2] = static_cast<unsigned char>(std::stoul(strHex.substr(i, 2), nullptr, 16));
    }
}

void SetList(tagRecord const& tRecord, tagField const& tField, json const& tValue, unsigned char* pData, Arena& tArena,
             std::string const& strPath)
{
    const std::size_t nEntry = tField.ptRecord ? tField.ptRecord->nSize : 4;
    const std::size_t nMost = tField.eKind == eShape::List ? 4096 : tField.nSize / nEntry;
    if (!tValue.is_array() || tValue.size() > nMost)
    {
        Wrong(strPath, fmt::format("a list of at most {}", nMost), tValue);
    }
    unsigned char* pFirst = pData + tField.nOffset;
    if (tField.eKind == eShape::Numbers)
    {
        for (std::size_t i = 0; i < tValue.size(); ++i)
        {
            const auto dw = static_cast<std::uint32_t>(Integer(tValue[i], strPath, 0, UINT32_MAX));
            std::memcpy(pFirst + 4 * i, &dw, sizeof dw);
        }
        return;
    }
    if (tField.eKind == eShape::List)
    {
        unsigned char* const pEntries = tArena.emplace_back(std::max<std::size_t>(1, tValue.size() * nEntry)).data();
        std::memcpy(pFirst, &pEntries, sizeof pEntries);
        pFirst = pEntries;
        SetWord(tRecord, pData, "entry_size", nEntry);
        SetWord(tRecord, pData, "capacity", tValue.size());
    }
    SetWord(tRecord, pData, "count", tValue.size());
    WriteObjects(*tField.ptRecord, tValue, pFirst, tArena, strPath);
}

void SetValue(tagRecord const& tRecord, tagField const& tField, json const& tValue, unsigned char* pData, Arena& tArena,
              std::string const& strPath)
{
    unsigned char* const pField = pData + tField.nOffset;
    const auto Store = [&](std::int64_t llValue) { std::memcpy(pField, &llValue, tField.nSize); };
    switch (tField.eKind)
    {
    case eShape::Number:
        return Store(Integer(tValue, strPath, 0, tField.nSize == 4 ? std::int64_t{UINT32_MAX} : INT64_MAX));
    case eShape::Signed:
        return Store(Integer(tValue, strPath, tField.nSize == 4 ? INT32_MIN : INT64_MIN,
                             tField.nSize == 4 ? INT32_MAX : INT64_MAX));
    case eShape::Flag:
        return tValue.is_boolean() ? Store(tValue.get<bool>()) : Wrong(strPath, "true or false", tValue);
    case eShape::Named:
        return Store(Enumerator(*tField.ptNames, tValue, strPath));
    case eShape::Bits:
    {
        std::int64_t llBits = 0;
        for (json const& tBit : tValue.is_array() ? tValue : json::array({tValue}))
        {
            llBits |= Enumerator(*tField.ptNames, tBit, strPath);
        }
        return Store(llBits);
    }
    case eShape::Time:
    {
        const auto llTimeUs = tValue.is_string() ? ParseTime(tValue.get<std::string>()) : std::nullopt;
        return tValue.is_null() ? Store(0) : llTimeUs ? Store(*llTimeUs) : Wrong(strPath, "a time or null", tValue);
    }
    case eShape::Colour:
    {
        unsigned int dwColour = 0;
        if (!tValue.is_string() || std::sscanf(tValue.get<std::string>().c_str(), "#%6x", &dwColour) != 1)
        {
            Wrong(strPath, "a colour, \"#rrggbb\"", tValue);
        }
        return Store(dwColour);
    }
    case eShape::Text:
        return SetText(tField, tValue, pField, strPath);
    case eShape::Bytes:
        return SetBytes(tField, tValue, pField, strPath);
    case eShape::Record:
        return FromJson(*tField.ptRecord, tValue, pField, tArena, strPath);
    case eShape::Numbers:
    case eShape::Array:
    case eShape::List:
        return SetList(tRecord, tField, tValue, pData, tArena, strPath);
    case eShape::Pointer:
        break;
    }
}
} // namespace

char const* tagNames::Find(long long llValue) const
{
    const auto it = std::ranges::find(atNames, llValue, &tagName::llValue);
    return it == atNames.end() ? nullptr : it->szName;
}

std::optional<long long> tagNames::Find(std::string const& strName) const
{
    const auto it = std::ranges::find_if(atNames, [&](tagName const& t) { return strName == t.szName; });
    return it == atNames.end() ? std::nullopt : std::optional(it->llValue);
}

std::string tagNames::List() const
{
    std::string strList;
    for (tagName const& t : atNames)
    {
        strList += (strList.empty() ? "" : ", ") + std::string(t.szName);
    }
    return strList;
}

std::string NameOf(tagNames const& tNames, long long llValue)
{
    char const* const szName = tNames.Find(llValue);
    return szName ? szName : std::to_string(llValue);
}

std::string BitNames(tagNames const& tNames, std::uint64_t ullBits)
{
    std::string strList;
    for (json const& t : Bits(tNames, ullBits))
    {
        strList += (strList.empty() ? "" : ",") + (t.is_string() ? t.get<std::string>() : t.dump());
    }
    return strList;
}

json ToJson(tagRecord const& tRecord, void const* pData, bool bSecrets)
{
    json tObject = json::object();
    for (tagField const& tField : tRecord.atFields)
    {
        if ((tField.dwFlags & g_bHidden) == 0 && tField.eKind != eShape::Pointer)
        {
            tObject[tField.szKey] = Value(tRecord, tField, static_cast<unsigned char const*>(pData), bSecrets);
        }
    }
    return tObject;
}

void FromJson(tagRecord const& tRecord, json const& tValue, void* pData, Arena& tArena, std::string const& strPath)
{
    if (!tValue.is_object())
    {
        Wrong(strPath.empty() ? "this" : strPath, "an object", tValue);
    }
    if (tRecord.bSized)
    {
        SetWord(tRecord, pData, "size", tRecord.nSize);
    }
    for (auto const& [strKey, tField] : tValue.items())
    {
        const auto it = std::ranges::find_if(tRecord.atFields, [&](tagField const& t)
                                             { return strKey == t.szKey && (t.dwFlags & g_bHidden) == 0; });
        const std::string strField = strPath.empty() ? strKey : strPath + "." + strKey;
        if (it == tRecord.atFields.end())
        {
            throw std::invalid_argument("there is no field " + strField);
        }
        SetValue(tRecord, *it, tField, static_cast<unsigned char*>(pData), tArena, strField);
    }
}

std::string TimeText(std::int64_t llTimeUs)
{
    const std::time_t nSeconds = llTimeUs / 1000000 - (llTimeUs % 1000000 < 0);
    const auto nMilliseconds = (llTimeUs - std::int64_t{nSeconds} * 1000000) / 1000;
    std::tm tParts{};
    gmtime_r(&nSeconds, &tParts);
    return fmt::format("{:04}-{:02}-{:02}T{:02}:{:02}:{:02}.{:03}Z", tParts.tm_year + 1900, tParts.tm_mon + 1,
                       tParts.tm_mday, tParts.tm_hour, tParts.tm_min, tParts.tm_sec, nMilliseconds);
}

std::optional<std::int64_t> ParseTime(std::string const& strText)
{
    std::tm tParts{};
    double dSeconds = 0;
    int nEnd = 0;
    char chBetween = 'T';
    const int nFields =
        std::sscanf(strText.c_str(), "%4d-%2d-%2d%n%c%2d:%2d%n:%lf%n", &tParts.tm_year, &tParts.tm_mon, &tParts.tm_mday,
                    &nEnd, &chBetween, &tParts.tm_hour, &tParts.tm_min, &nEnd, &dSeconds, &nEnd);
    const bool bComplete = nFields == 3 || nFields == 6 || nFields == 7;
    const std::string strRest = bComplete ? strText.substr(static_cast<std::size_t>(nEnd)) : "?";
    tParts.tm_year -= 1900;
    tParts.tm_mon -= 1;
    const std::tm tGiven = tParts;
    const std::time_t nSeconds = timegm(&tParts);
    if (!bComplete || (strRest != "" && strRest != "Z") || (chBetween != 'T' && chBetween != ' ') ||
        tParts.tm_mday != tGiven.tm_mday || tParts.tm_mon != tGiven.tm_mon || tParts.tm_hour != tGiven.tm_hour ||
        tParts.tm_min != tGiven.tm_min || !(dSeconds >= 0 && dSeconds < 61))
    {
        return std::nullopt;
    }
    return std::int64_t{nSeconds} * 1000000 + static_cast<std::int64_t>(dSeconds * 1e6 + 0.5);
}
} // namespace tessaro
