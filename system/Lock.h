#pragma once

#include <pthread.h>

/// Holds a POSIX mutex for as long as it lives. For mutexes whose lock can't fail: default attributes, never destroyed.
class CLock
{
public:
    explicit CLock(pthread_mutex_t& tMutex) : m_tMutex(tMutex) { pthread_mutex_lock(&m_tMutex); }
    ~CLock() { pthread_mutex_unlock(&m_tMutex); }
    CLock(CLock const&) = delete;
    CLock& operator=(CLock const&) = delete;

private:
    pthread_mutex_t& m_tMutex;
};
