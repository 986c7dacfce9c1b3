#pragma once

#include "tools/tessaro/records/Tables.h"

#include <cstdint>
#include <cstring>
#include <list>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <vector>

/// The way between a record and JSON. What the tool prints, takes and traces goes through here.
namespace tessaro
{
using json = nlohmann::ordered_json;

/// Memory for the lists that records point at.
using Arena = std::list<std::vector<unsigned char>>;

/// A record as JSON. Lists show the entries that there was room for. With bSecrets passwords show as they are.
json ToJson(tagRecord const& tRecord, void const* pData, bool bSecrets = false);

template <class Record>
json ToJson(Record const& t)
{
    return ToJson(RecordOf<Record>(), &t);
}

/// Lays JSON over a record: fields that aren't named stay as they are, dwSize is set. Lists get their memory from
/// tArena. Throws std::invalid_argument, with the path of the field that is wrong.
void FromJson(tagRecord const& tRecord, json const& tValue, void* pData, Arena& tArena,
              std::string const& strPath = "");

template <class Record>
Record Sized()
{
    Record t{};
    t.dwSize = sizeof t;
    return t;
}

/// A value's name, or the number as text.
template <class Enumeration>
std::string NameOf(Enumeration eValue)
{
    char const* const szName = NamesOf<Enumeration>().Find(static_cast<long long>(eValue));
    return szName ? szName : std::to_string(static_cast<long long>(eValue));
}
std::string NameOf(tagNames const& tNames, long long llValue);

/// Names of the bits that are set, with commas between; those without a name as a number.
std::string BitNames(tagNames const& tNames, std::uint64_t ullBits);

/// "2024-05-31T08:00:00.000Z"
std::string TimeText(std::int64_t llTimeUs);
/// The other way; also a date alone, a time without seconds, and a space in place of T. Nothing: it is no time.
std::optional<std::int64_t> ParseTime(std::string const& strText);

/// A text that ends at its terminator or its field's end.
template <std::size_t n>
std::string Text(char const (&sz)[n])
{
    return std::string(sz, strnlen(sz, n));
}
} // namespace tessaro
