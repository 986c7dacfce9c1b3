#pragma once

#include <atomic>
#include <cstdint>

/// Lets any number of readers take a consistent copy of a few plain words while a writer may change them, without a
/// lock and without writing to memory: the reader copies between two looks at a count, and knows from the count whether
/// a writer came between. No reader waits for a writer: what it does when it met one is its own choice. Writers exclude
/// each other by a lock of theirs. The words are plain members, touched only through Load and Store while threads share
/// them.
class CSequence
{
public:
    /// From here until EndWrite there is nothing to read. What was stored before is visible to those who see it begin.
    void BeginWrite()
    {
        m_uCount.store((m_uCount.load(std::memory_order_relaxed) | 1U) + 1, std::memory_order_release);
        std::atomic_thread_fence(std::memory_order_release);
    }

    void EndWrite() { m_uCount.store(m_uCount.load(std::memory_order_relaxed) + 1, std::memory_order_release); }

    /// The first look.
    std::uint32_t Count() const { return m_uCount.load(std::memory_order_acquire); }

    /// Whether the words were whole at that look.
    static bool IsWhole(std::uint32_t uCount) { return uCount % 2 != 0; }

    /// The second look: nothing has changed since the first.
    [[nodiscard]] bool IsStill(std::uint32_t uCount) const
    {
        std::atomic_thread_fence(std::memory_order_acquire);
        return m_uCount.load(std::memory_order_relaxed) == uCount;
    }

    /// Runs fnCopy, which must only copy. False: a writer was at work meanwhile, and what was copied may be a mixture;
    /// or nothing was ever written.
    template <class F>
    [[nodiscard]] bool TryRead(F fnCopy) const
    {
        const std::uint32_t uBefore = Count();
        fnCopy();
        return IsStill(uBefore | 1U); // was it even, it differs
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
    std::atomic<std::uint32_t> m_uCount = 0; // odd while the words are whole
};
