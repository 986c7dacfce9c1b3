#pragma once

#include "plugins/device/Recording.h"

#include <cstdint>
#include <map>
#include <mutex>
#include <string>
#include <vector>

namespace onvif_device
{
/// Searches that run: their results wait until they are fetched, or until nobody has asked for so long. Any thread.
class CSearches
{
public:
    /// One result: a recording, or that something of it begins or ends.
    struct tagResult
    {
        uint32_t dwChannel = 0;
        int64_t llTimeUs = 0;
        bool bData = false;       ///< there is something from here on
        bool bStartState = false; ///< that was so when the search's time begins
        std::size_t nTopic = 0;   ///< in SearchService.cpp: what begins or ends
    };

    std::string Begin(std::vector<tagResult> atResults, int64_t llKeepUs);
    /// The next ones, at most nMost; bEnd: that was all. False: there is no such search; so too with the next.
    bool Next(std::string const& strToken, std::size_t nMost, std::vector<tagResult>& atResults, bool& bEnd);
    bool End(std::string const& strToken);
    bool IsThere(std::string const& strToken, bool& bEnd);

private:
    struct tagSearch
    {
        std::vector<tagResult> atResults;
        std::size_t nNext = 0;
        int64_t llKeepUs = 0;
        int64_t llUntilUs = 0;
    };
    tagSearch* Find(std::string const& strToken);

    std::mutex m_tMutex;
    std::map<std::string, tagSearch> m_tSearches;
    uint32_t m_dwLast = 0;
};
} // namespace onvif_device
