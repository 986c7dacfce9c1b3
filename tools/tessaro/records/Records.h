#pragma once

#include <cstddef>
#include <cstdint>
#include <list>
#include <nlohmann/json.hpp>
#include <optional>
#include <span>
#include <stdexcept>
#include <string>
#include <vector>

/// The records of the plug-in interface as data: their fields with names, meanings and types, made from the headers by
/// generate.py, and the way between a record and JSON. What the tool prints, takes and traces goes through here.
namespace tessaro
{
using json = nlohmann::ordered_json;

/// What a field is, and how it looks in JSON.
enum class eShape : unsigned char
{
    Number,  ///< a number
    Signed,  ///< a number with a sign
    Flag,    ///< true or false
    Named,   ///< the name of an enumerator; a number that has none stays a number
    Bits,    ///< a list of names
    Time,    ///< microseconds since 1970 UTC: "2024-05-31T08:00:00.000Z"; 0: null
    Colour,  ///< "#rrggbb"
    Text,    ///< a text
    Bytes,   ///< a text of hexadecimal digits, without the zeros at its end
    Numbers, ///< a list of numbers
    Record,  ///< an object
    Array,   ///< a list of objects inside the record: the first dwCount
    List,    ///< a list of objects outside the record, at ptEntries
    Pointer, ///< not shown
};

struct tagName
{
    long long llValue;
    char const* szName;
};

/// An enumeration.
struct tagNames
{
    char const* szType;
    std::span<tagName const> atNames;

    /// The value's name; null: it has none.
    char const* Find(long long llValue) const;
    std::optional<long long> Find(std::string const& strName) const;
    /// All names, with commas between.
    std::string List() const;
};

constexpr unsigned int g_bReadOnly = 1; ///< the device doesn't look at it
constexpr unsigned int g_bSecret = 2;   ///< shown as "***"
constexpr unsigned int g_bHidden = 4;   ///< of no interest: sizes and counts

struct tagRecord;

struct tagField
{
    char const* szKey;
    char const* szMeaning; ///< as the header has it
    eShape eKind;
    std::size_t nOffset;
    std::size_t nSize; ///< bytes of the field; of all elements
    tagNames const* ptNames;
    tagRecord const* ptRecord;
    unsigned int dwFlags;
};

struct tagRecord
{
    char const* szName;
    std::size_t nSize;
    bool bSized; ///< begins with dwSize
    std::span<tagField const> atFields;
};

template <class Record>
tagRecord const& RecordOf();
template <class Enumeration>
tagNames const& NamesOf();

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
