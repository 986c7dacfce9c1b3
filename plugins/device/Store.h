#pragma once

#include "plugins/device/WallView.h"

#include <algorithm>
#include <cstring>
#include <map>
#include <string>
#include <type_traits>

namespace device
{
/// Bytes as hexadecimal digits, and back. False: they are none.
std::string ToHex(std::vector<unsigned char> const& abyValue);
bool FromHex(std::string const& strHex, std::vector<unsigned char>& abyValue);

/// What a device remembers over a restart: bytes by key, in memory and, with a path, in a file. Not locked.
class CStore
{
public:
    using Bytes = std::vector<unsigned char>;
    using Entries = std::map<std::string, Bytes, std::less<>>;

    /// An empty path: in memory alone. A file that can't be read counts as empty.
    explicit CStore(std::string strPath);
    /// Writes the file when something changed: a new one beside it first, so that none is ever half written.
    void Save();

    Entries const& All() const { return m_tEntries; }
    bool Changed() const { return m_bChanged; }

    void Put(std::string const& strKey, Bytes abyValue);
    void Remove(std::string const& strKey);
    /// Removes what begins so, but for what begins with one of the others.
    void RemoveAll(std::string const& strPrefix, std::initializer_list<std::string> astrBut = {});

    template <class Record>
    void PutRecord(std::string const& strKey, Record const& tRecord)
    {
        static_assert(std::is_trivially_copyable_v<Record>);
        auto const* const pBytes = reinterpret_cast<unsigned char const*>(&tRecord);
        Put(strKey, Bytes(pBytes, pBytes + sizeof tRecord));
    }
    /// Lays what is kept over tRecord; false when nothing is. What an older program kept may be shorter.
    template <class Record>
    bool GetRecord(std::string_view strKey, Record& tRecord) const
    {
        static_assert(std::is_trivially_copyable_v<Record>);
        const auto it = m_tEntries.find(strKey);
        if (it == m_tEntries.end())
        {
            return false;
        }
        std::memcpy(&tRecord, it->second.data(), std::min(sizeof tRecord, it->second.size()));
        return true;
    }

    /// A list of records; an empty one isn't kept.
    template <class Record>
    void PutList(std::string const& strKey, std::vector<Record> const& atRecords)
    {
        static_assert(std::is_trivially_copyable_v<Record>);
        auto const* const pBytes = reinterpret_cast<unsigned char const*>(atRecords.data());
        Remove(strKey);
        if (!atRecords.empty())
        {
            Put(strKey, Bytes(pBytes, pBytes + atRecords.size() * sizeof(Record)));
        }
    }
    template <class Record>
    std::vector<Record> GetList(std::string_view strKey) const
    {
        static_assert(std::is_trivially_copyable_v<Record>);
        const auto it = m_tEntries.find(strKey);
        std::vector<Record> atRecords(it == m_tEntries.end() ? 0 : it->second.size() / sizeof(Record));
        if (!atRecords.empty())
        {
            std::memcpy(atRecords.data(), it->second.data(), atRecords.size() * sizeof(Record));
        }
        return atRecords;
    }

private:
    std::string m_strPath;
    Entries m_tEntries;
    bool m_bChanged = false;
};
} // namespace device
