#pragma once

#include <cstdint>
#include <limits>
#include <memory>
#include <mutex>
#include <vector>

namespace device
{
class CPump;

/// Something that has work to do at certain times.
class CPumped : public std::enable_shared_from_this<CPumped>
{
public:
    static constexpr int64_t g_llNotAgain = std::numeric_limits<int64_t>::max();

    virtual ~CPumped() = default;
    /// Works, and answers when to work again; g_llNotAgain: when it is woken. Never runs twice at once.
    virtual int64_t Run(int64_t llNowUs) = 0;

private:
    friend class CPump;
    int64_t m_llDueUs = g_llNotAgain; // these two are the pump's
    bool m_bRunning = false;
};

/// Runs all streams, playbacks, downloads and voices, on one thread. Times are microseconds on a clock that nobody
/// sets.
///
/// Callbacks of the application run on that thread. When one takes longer than g_llPatienceUs, another thread goes on
/// with the rest; the object whose callback runs misses what would have been due. There are at most g_nMaxThreads
/// threads: when so many callbacks stand still at once, all wait for the first of them.
///
/// Any thread may call any function. Begins to work with the first Wake, ends with Stop, and may begin again.
class CPump
{
public:
    static constexpr int64_t g_llPatienceUs = 20000;
    static constexpr int g_nMaxThreads = 8;
    /// How soon what waits for something sees that it has happened.
    static constexpr int64_t g_llPollUs = 50000;
    /// Where what runs on this thread puts its frame together.
    static std::vector<unsigned char>& Room();

    CPump() = default;
    ~CPump();
    CPump(CPump const&) = delete;
    CPump& operator=(CPump const&) = delete;
    /// The one that all share.
    static CPump& Instance();
    static int64_t NowUs();

    /// Lets it work at this time, or before. It is kept alive until then.
    void Wake(std::shared_ptr<CPumped> const& pWho, int64_t llAtUs);
    /// Forgets all work. Returns when the threads have ended, but after 2 s at the latest, and waits for no thread that
    /// calls it.
    void Stop();

private:
    struct tagState;
    static void Work(std::shared_ptr<tagState> const& pState);
    static void Lead(std::shared_ptr<tagState> const& pState, std::unique_lock<std::mutex>& tLock);
    static void StartThread(std::shared_ptr<tagState> const& pState);

    std::mutex m_tMutex;
    std::shared_ptr<tagState> m_pState; // null: not working
};
} // namespace device
