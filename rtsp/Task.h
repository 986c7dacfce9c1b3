#pragma once

#include <coroutine>
#include <exception>
#include <optional>
#include <utility>

namespace rtsp
{
template <class T>
class CTask;

/// What the promises of all tasks share.
class CPromiseBase
{
public:
    std::suspend_always initial_suspend() noexcept { return {}; }
    auto final_suspend() noexcept
    {
        struct tagGoOn
        {
            bool await_ready() noexcept { return false; }
            std::coroutine_handle<> await_suspend(std::coroutine_handle<>) noexcept { return tNext; }
            void await_resume() noexcept {}
            std::coroutine_handle<> tNext;
        };
        return tagGoOn{m_tNext};
    }
    void unhandled_exception() noexcept { m_pError = std::current_exception(); }

    void GoOnWith(std::coroutine_handle<> tNext) { m_tNext = tNext; }

protected:
    void Rethrow()
    {
        if (m_pError)
        {
            std::rethrow_exception(std::exchange(m_pError, nullptr));
        }
    }

private:
    std::coroutine_handle<> m_tNext = std::noop_coroutine();
    std::exception_ptr m_pError;
};

template <class T>
class CPromise : public CPromiseBase
{
public:
    CTask<T> get_return_object();
    void return_value(T tValue) { m_tValue.emplace(std::move(tValue)); }
    T Result()
    {
        Rethrow();
        return *std::move(m_tValue);
    }

private:
    std::optional<T> m_tValue;
};

template <>
class CPromise<void> : public CPromiseBase
{
public:
    CTask<void> get_return_object();
    void return_void() {}
    void Result() { Rethrow(); }
};

/// A coroutine that begins when it is awaited, and ends with its object. One caller awaits it, once.
template <class T = void>
class [[nodiscard]] CTask
{
public:
    using promise_type = CPromise<T>;

    explicit CTask(std::coroutine_handle<promise_type> tSelf) : m_tSelf(tSelf) {}
    ~CTask()
    {
        if (m_tSelf)
        {
            m_tSelf.destroy();
        }
    }
    CTask(CTask&& tOther) noexcept : m_tSelf(std::exchange(tOther.m_tSelf, nullptr)) {}
    CTask& operator=(CTask&& tOther) noexcept
    {
        std::swap(m_tSelf, tOther.m_tSelf);
        return *this;
    }

    auto operator co_await()
    {
        struct tagWait
        {
            bool await_ready() { return false; }
            std::coroutine_handle<> await_suspend(std::coroutine_handle<> tCaller)
            {
                tSelf.promise().GoOnWith(tCaller);
                return tSelf;
            }
            T await_resume() { return tSelf.promise().Result(); }
            std::coroutine_handle<promise_type> tSelf;
        };
        return tagWait{m_tSelf};
    }

    /// For the outermost one, instead of awaiting it.
    void Begin() { m_tSelf.resume(); }
    bool IsDone() const { return m_tSelf.done(); }
    /// What it came to, once it is done.
    T Result() { return m_tSelf.promise().Result(); }

private:
    std::coroutine_handle<promise_type> m_tSelf;
};

template <class T>
CTask<T> CPromise<T>::get_return_object()
{
    return CTask<T>(std::coroutine_handle<CPromise>::from_promise(*this));
}

inline CTask<void> CPromise<void>::get_return_object()
{
    return CTask<void>(std::coroutine_handle<CPromise>::from_promise(*this));
}
} // namespace rtsp
