#pragma once

#include <atomic>
#include <cstdint>
#include <sched.h>

/// Lets any number of readers take a consistent copy of a few plain words while a writer may change them, without a
/// lock and without writing to memory: the reader copies between two looks at a count, and knows from the count whether
/// a writer came between. Writers exclude each other. The words are plain members, touched only through Load and Store
/// while threads share them.
class CSequence
{
public:
    CSequence() = default;
    CSequence(CSequence const&) noexcept {} ///< counts belong to their place: a copied object begins its own
    CSequence& operator=(CSequence const&) noexcept { return *this; }

    void BeginWrite()
    {
        std::uint32_t uCount = m_uCount.load(std::memory_order_relaxed) & ~1U;
        while (
            !m_uCount.compare_exchange_weak(uCount, uCount + 1, std::memory_order_acquire, std::memory_order_relaxed))
        {
            uCount &= ~1U;
            sched_yield();
        }
        std::atomic_thread_fence(std::memory_order_release);
    }

    void EndWrite() { m_uCount.fetch_add(1, std::memory_order_release); }

    /// Runs fnCopy, which must only copy. False: a writer was at work meanwhile, and what was copied may be a mixture.
    template <class F>
    [[nodiscard]] bool TryRead(F fnCopy) const
    {
        const std::uint32_t uBefore = m_uCount.load(std::memory_order_acquire);
        fnCopy();
        std::atomic_thread_fence(std::memory_order_acquire);
        return m_uCount.load(std::memory_order_relaxed) == (uBefore & ~1U); // odd: in the middle of a write
    }

    template <class T>
    static T Load(T const& tWord)
    {
        return std::atomic_ref<T>(const_cast<T&>(tWord)).load(std::memory_order_relaxed);
    }

    template <class T>
    static void Store(T& tWord, T tValue)
    {
        std::atomic_ref<T>(tWord).store(tValue, std::memory_order_relaxed);
    }

private:
    std::atomic<std::uint32_t> m_uCount = 0;
};
