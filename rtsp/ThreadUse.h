#pragma once

#include <chrono>
#include <pthread.h>
#include <sys/types.h>

namespace rtsp
{
/// The CPU time that a running thread has used; 0: the system doesn't tell.
std::chrono::nanoseconds CpuTime(pthread_t tThread);
/// Whether a thread of this process waits for something other than a core. True also where the system doesn't tell.
bool IsAsleep(pid_t nThread);
} // namespace rtsp
