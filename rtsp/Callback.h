#pragma once

namespace rtsp
{
/// A function with its user data, replaced and read as a pair.
template <class Function>
struct tagCallback
{
    Function pfn = nullptr;
    unsigned long dwUser = 0;
};

/// Which of a stream's two registrations for events; they are of equal rank.
enum class eListener
{
    EventCB,
    SetRtspEvenCb,
};
} // namespace rtsp
