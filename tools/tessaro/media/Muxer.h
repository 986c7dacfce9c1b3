#pragma once

#include "protocol/PluginInterface.h"

#include <memory>
#include <string>

namespace tessaro
{
/// Writes a stream's frames to a file as they are; the file's name says the container (mp4, mkv, mov, ts). What is to
/// be in it must be known at its beginning: the first frames wait until both tracks have come and show in which order
/// frames come (B frames are shown before others that come earlier), or a second has passed.
class CMuxer
{
public:
    /// Throws CFailure when the name says no container.
    explicit CMuxer(std::string const& strFile);
    ~CMuxer();
    CMuxer(CMuxer const&) = delete;
    CMuxer& operator=(CMuxer const&) = delete;

    /// Takes a frame; the first one written is a key frame. On the plug-in's thread; failures are kept for Close.
    void Take(tagStreamMediaFrame const& tFrame);
    /// Completes the file. Throws CFailure if it couldn't be written, or nothing came for it.
    void Close();
    /// What was left out because the container doesn't take it; empty: nothing.
    std::string LeftOut() const;

private:
    struct tagState;
    std::unique_ptr<tagState> m_pState;
};
} // namespace tessaro
