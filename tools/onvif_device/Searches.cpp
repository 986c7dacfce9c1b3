#include "tools/onvif_device/Searches.h"

#include "plugins/device/Worker.h"

#include <algorithm>

namespace onvif_device
{
CSearches::tagSearch* CSearches::Find(std::string const& strToken)
{
    const int64_t llNowUs = device::SteadyUs();
    std::erase_if(m_tSearches, [&](auto const& tEntry) { return tEntry.second.llUntilUs <= llNowUs; });
    const auto it = m_tSearches.find(strToken);
    if (it == m_tSearches.end())
    {
        return nullptr;
    }
    it->second.llUntilUs = llNowUs + it->second.llKeepUs;
    return &it->second;
}

std::string CSearches::Begin(std::vector<tagResult> atResults, int64_t llKeepUs)
{
    const std::lock_guard tLock(m_tMutex);
    Find({});
    const std::string strToken = "Search_" + std::to_string(++m_dwLast);
    m_tSearches[strToken] = {std::move(atResults), 0, llKeepUs, device::SteadyUs() + llKeepUs};
    return strToken;
}

bool CSearches::Next(std::string const& strToken, std::size_t nMost, std::vector<tagResult>& atResults, bool& bEnd)
{
    const std::lock_guard tLock(m_tMutex);
    tagSearch* const pt = Find(strToken);
    if (!pt)
    {
        return false;
    }
    const std::size_t nCount = std::min(nMost, pt->atResults.size() - pt->nNext);
    const auto itBegin = pt->atResults.begin() + static_cast<std::ptrdiff_t>(pt->nNext);
    atResults.assign(itBegin, itBegin + static_cast<std::ptrdiff_t>(nCount));
    pt->nNext += nCount;
    bEnd = pt->nNext == pt->atResults.size();
    return true;
}

bool CSearches::End(std::string const& strToken)
{
    const std::lock_guard tLock(m_tMutex);
    return Find(strToken) && m_tSearches.erase(strToken) != 0;
}

bool CSearches::IsThere(std::string const& strToken, bool& bEnd)
{
    const std::lock_guard tLock(m_tMutex);
    tagSearch const* const pt = Find(strToken);
    bEnd = pt && pt->nNext == pt->atResults.size();
    return pt != nullptr;
}
} // namespace onvif_device
