#pragma once

#include "protocol/PluginInterface.h"

#include <cstdint>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

namespace tessaro
{
/// A picture in memory, three bytes a pixel.
struct tagPicture
{
    int nWidth = 0;
    int nHeight = 0;
    std::vector<unsigned char> abyRgb;
};

/// A key frame, kept until somebody wants to see it: decoding every frame would be wasted.
class CLastKeyFrame
{
public:
    /// Keeps the frame if it is a key frame of video. On the plug-in's thread.
    void Take(tagStreamMediaFrame const& tFrame);
    /// The last one as a picture; nothing: none has come, or it can't be decoded.
    std::optional<tagPicture> Decode() const;
    /// Frames that were kept.
    std::uint64_t Taken() const;

private:
    mutable std::mutex m_tMutex;
    std::uint32_t m_dwCodec = eCodecOther;
    std::uint64_t m_ullTaken = 0;
    std::vector<unsigned char> m_abyFrame;
};

/// A picture of another size, its shape kept: smaller by what doesn't fit.
tagPicture Fitted(tagPicture const& tPicture, int nMostWidth, int nMostHeight);

/// Pictures row by row in cells of one size, as many in a row as in a column; an empty one leaves its cell grey.
tagPicture ContactSheet(std::vector<std::optional<tagPicture>> const& atPictures, int nCellWidth, int nCellHeight);

/// Writes a PNG file, complete or not at all: who reads it meanwhile gets the one before. Throws CFailure.
void WritePng(tagPicture const& tPicture, std::string const& strFile);
} // namespace tessaro
