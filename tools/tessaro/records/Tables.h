#pragma once

#include <cstddef>
#include <optional>
#include <span>
#include <string>

/// The records of the plug-in interface as data: their fields with names, meanings and types, made from the headers by
/// generate.py. RecordTables.h, which it writes, names them all.
namespace tessaro
{
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
} // namespace tessaro
