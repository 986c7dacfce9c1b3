#pragma once

#include "tools/onvif_device/Messages.h"

#include <condition_variable>
#include <cstdint>
#include <deque>
#include <map>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

namespace onvif_device
{
/// Who wants to hear of which events, and what waits for them. Times are those of device::SteadyUs. Any thread.
class CSubscriptions
{
public:
    explicit CSubscriptions(device::CDevice& tDevice) : m_tDevice(tDevice) {}
    ~CSubscriptions();

    /// A new one, whose states wait for it already. strConsumer: where to post its messages; empty: it pulls them. At
    /// most nMost pull; empty: there are so many.
    std::string Add(std::string const& strFilter, std::string const& strConsumer, int64_t llEndUs, std::size_t nMost);
    /// False: there is no such subscription; so too with the rest.
    bool Renew(std::string const& strId, int64_t llEndUs);
    bool Remove(std::string const& strId);
    /// All states wait for it again.
    bool Synchronize(std::string const& strId);
    bool EndOf(std::string const& strId, int64_t& llEndUs);
    /// The oldest messages, at most nMost of them.
    bool Pull(std::string const& strId, std::size_t nMost, std::vector<tagMessage>& atMessages);
    /// Nobody is left.
    void Clear();
    std::size_t Count();

    /// Something happened.
    void Tell(std::vector<tagMessage> const& atMessages);

private:
    struct tagSubscription
    {
        std::string strFilter;
        std::string strConsumer;
        int64_t llEndUs = 0;
        std::deque<tagMessage> atWaiting;
    };
    struct tagPost
    {
        std::string strTo;
        std::string strFrom;
        tagMessage tMessage;
    };
    tagSubscription* Find(std::string const& strId);
    void Give(std::string const& strId, tagSubscription& tSubscription, std::vector<tagMessage> const& atMessages);
    void Post();

    device::CDevice& m_tDevice;
    std::mutex m_tMutex;
    std::map<std::string, tagSubscription> m_tSubscriptions;
    uint32_t m_dwLast = 0;
    // What is posted, on a thread of its own that begins with the first.
    std::deque<tagPost> m_atPosts;
    std::condition_variable m_tPosted;
    bool m_bStop = false;
    std::thread m_tPoster;
};
} // namespace onvif_device
