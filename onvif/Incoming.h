#pragma once

#include <string>
#include <string_view>

namespace onvif
{
/// One HTTP request as it comes in, piece by piece: a POST with a body, whole or in chunks, of at most a megabyte.
class CIncoming
{
public:
    enum class eState
    {
        Partial, ///< more is to come
        Whole,
        Bad,
    };

    /// What it has come to with these bytes.
    eState Take(std::string_view strBytes);
    /// Once it is whole.
    std::string const& Path() const { return m_strPath; }
    std::string const& Body() const { return m_strBody; }
    /// Whoever sends waits for a word before the body.
    bool Expects() const { return m_bExpects; }

private:
    eState TakeChunks(std::string_view strRest);

    std::string m_strBytes;
    std::string m_strPath;
    std::string m_strBody;
    bool m_bExpects = false;
};
} // namespace onvif
