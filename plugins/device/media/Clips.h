#pragma once

#include "protocol/interface/Frames.h"

#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <vector>

namespace device
{
/// Pictures of a clip, after which it begins again. Also the number of snapshots, and of packets of sound.
inline constexpr uint32_t g_dwClipPictures = 150;

/// Samples a second of the sound, and in one packet of it.
inline constexpr uint32_t g_dwSampleRate = 8000;
inline constexpr uint32_t g_dwPacketSamples = 320;
inline constexpr int64_t g_llPacketUs = int64_t{g_dwPacketSamples} * 1000000 / g_dwSampleRate;

using Bytes = std::span<unsigned char const>;

/// A file's contents, mapped into memory.
class CMappedFile
{
public:
    /// Throws std::system_error.
    explicit CMappedFile(std::string const& strPath);
    ~CMappedFile();
    CMappedFile(CMappedFile const&) = delete;
    CMappedFile& operator=(CMappedFile const&) = delete;
    Bytes Contents() const { return m_tContents; }

private:
    Bytes m_tContents;
};

/// A loop of coded pictures, in one codec and size. A key frame can come at any picture.
class CClip
{
public:
    /// Throws std::runtime_error: the files aren't what clips.cmake makes.
    CClip(uint32_t dwCodec, uint32_t dwWidth, uint32_t dwHeight, std::string const& strPath);

    uint32_t Codec() const { return m_dwCodec; }
    uint32_t Width() const { return m_dwWidth; }
    uint32_t Height() const { return m_dwHeight; }

    /// Picture ullPicture of a stream whose last key frame came dwSinceKey pictures before; 0: a key frame. Frames that
    /// follow a key frame count up from it, so the count is written into a copy in abyRoom where it differs from the
    /// clip's own. The bytes stay until abyRoom changes.
    Bytes Frame(uint64_t ullPicture, uint32_t dwSinceKey, std::vector<unsigned char>& abyRoom) const;
    /// How long that is.
    std::size_t Length(uint64_t ullPicture, uint32_t dwSinceKey) const;
    /// Where the slice begins in that frame, after its start code. Before it there are parameter sets at most.
    std::size_t SliceBegin(uint64_t ullPicture, uint32_t dwSinceKey) const;
    /// The parameter sets before its key frames, without start codes: VPS (H.265), SPS, PPS.
    std::vector<Bytes> const& ParameterSets() const { return m_atParameterSets; }
    /// The picture that this key frame shows; -1: none of the clip's.
    int FindKeyFrame(Bytes tFrame) const;

private:
    struct tagUnit
    {
        Bytes tFrame;
        std::size_t nSlice = 0; // where its picture's own bytes begin
    };
    std::vector<tagUnit> Split(Bytes tContents, bool bParameterSets);
    uint32_t Count(tagUnit const& tUnit) const;
    void SetCount(unsigned char* pSlice, uint32_t dwCount) const;
    tagUnit const& Unit(uint64_t ullPicture, uint32_t dwSinceKey) const;

    uint32_t m_dwCodec;
    uint32_t m_dwWidth;
    uint32_t m_dwHeight;
    CMappedFile m_tKeyFile;
    CMappedFile m_tDeltaFile;
    std::vector<tagUnit> m_atKeys;
    std::vector<tagUnit> m_atSeconds; // the pictures right after a key frame
    std::vector<tagUnit> m_atDeltas;
    std::vector<Bytes> m_atParameterSets;
};

/// All clips. Found beside the library that this is part of, in the folder device-media.
class CClips
{
public:
    /// The one that all share; its clips stay as long as the process. Throws std::runtime_error when they can't be
    /// read; the next call tries again.
    static CClips const& Instance();

    /// Null: there is none.
    CClip const* Find(uint32_t dwCodec, uint32_t dwWidth, uint32_t dwHeight) const;
    /// A packet of sound, eCodecG711A or eCodecG711U.
    Bytes Sound(uint32_t dwCodec, uint64_t ullPacket) const;
    /// A picture as a JPEG file.
    Bytes Picture(uint64_t ullPicture) const;
    std::vector<std::unique_ptr<CClip>> const& All() const { return m_apClips; }

private:
    CClips();

    std::vector<std::unique_ptr<CClip>> m_apClips;
    std::unique_ptr<CMappedFile> m_pALaw;
    std::unique_ptr<CMappedFile> m_pMuLaw;
    std::unique_ptr<CMappedFile> m_pPictures;
    std::vector<Bytes> m_atPictures;
};
} // namespace device
