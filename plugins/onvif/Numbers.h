#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <utility>
#include <vector>

namespace onvifclient
{
/// Numbers for what a device names by tokens, its presets and tours: the number in a name like "Preset 7", else the one
/// at the end of the token, else the lowest that is free. A token keeps its number as long as this lives. Not locked.
class CNumbers
{
public:
    /// strKind: "Preset". atAll: token and name of all there are.
    void Take(std::string const& strKind, std::vector<std::pair<std::string, std::string>> const& atAll);
    /// This token has this number from now on, whoever had it before.
    void Set(std::string const& strToken, uint32_t dwNumber);
    void Remove(std::string const& strToken) { m_tNumbers.erase(strToken); }

    uint32_t Number(std::string const& strToken) const; ///< 0: none
    std::string Token(uint32_t dwNumber) const;         ///< empty: none

private:
    std::map<std::string, uint32_t> m_tNumbers;
};
} // namespace onvifclient
