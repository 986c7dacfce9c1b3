#pragma once

namespace rtsp
{
/// A function with its user data, replaced and read as a pair (under its owner's lock).
template <class Function>
struct tagCallback
{
    Function pfn = nullptr;
    unsigned long dwUser = 0;
};
} // namespace rtsp
