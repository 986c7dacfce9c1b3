#include "plugins/common/FileWriter.h"

#include "protocol/interface/Frames.h"

#include <algorithm>
#include <cstring>
#include <utility>

namespace plugin
{
namespace
{
constexpr uint32_t g_dwVideoTrack = 1;
constexpr uint32_t g_dwAudioTrack = 2;
constexpr uint32_t g_dwVideoScale = 1000000; // ticks a second
constexpr uint32_t g_dwKeySample = 0x02000000;
constexpr uint32_t g_dwOtherSample = 0x01010000;

/// Writes boxes, one inside the other.
class CBoxes
{
public:
    explicit CBoxes(Output& abyOut) : m_abyOut(abyOut) {}

    void Number(uint64_t ullValue, unsigned nBytes)
    {
        while (nBytes-- > 0)
        {
            m_abyOut.push_back(static_cast<unsigned char>(ullValue >> 8 * nBytes));
        }
    }
    void U8(uint32_t dw) { Number(dw, 1); }
    void U16(uint32_t dw) { Number(dw, 2); }
    void U32(uint32_t dw) { Number(dw, 4); }
    void U64(uint64_t ull) { Number(ull, 8); }
    void Zeros(std::size_t n) { m_abyOut.insert(m_abyOut.end(), n, 0); }
    void Text(char const* sz) { m_abyOut.insert(m_abyOut.end(), sz, sz + std::strlen(sz)); }
    void Data(Bytes t) { m_abyOut.insert(m_abyOut.end(), t.begin(), t.end()); }
    std::size_t At() const { return m_abyOut.size(); }
    void Patch(std::size_t nAt, uint32_t dw)
    {
        for (unsigned i = 0; i < 4; ++i)
        {
            m_abyOut[nAt + i] = static_cast<unsigned char>(dw >> (24 - 8 * i));
        }
    }
    template <class F>
    void Box(char const* szType, F fnContents)
    {
        const std::size_t nAt = At();
        U32(0);
        Text(szType);
        fnContents();
        Patch(nAt, static_cast<uint32_t>(At() - nAt));
    }
    template <class F>
    void FullBox(char const* szType, uint32_t dwVersionAndFlags, F fnContents)
    {
        Box(szType,
            [&]
            {
                U32(dwVersionAndFlags);
                fnContents();
            });
    }

private:
    Output& m_abyOut;
};

void Matrix(CBoxes& t)
{
    for (const uint32_t dw : {0x10000U, 0U, 0U, 0U, 0x10000U, 0U, 0U, 0U, 0x40000000U})
    {
        t.U32(dw);
    }
}

void Avc(CBoxes& t, std::vector<Output> const& atSets)
{
    t.Box("avcC",
          [&]
          {
              t.U8(1);
              t.Data(Bytes(atSets[0]).subspan(1, 3)); // profile, constraints, level
              t.U8(0xFF);                             // lengths of 4 bytes
              t.U8(0xE1);
              t.U16(static_cast<uint32_t>(atSets[0].size()));
              t.Data(atSets[0]);
              t.U8(1);
              t.U16(static_cast<uint32_t>(atSets[1].size()));
              t.Data(atSets[1]);
          });
}

void Hevc(CBoxes& t, std::vector<Output> const& atSets)
{
    // Profile, tier and level stand in the SPS; there they may hold bytes that keep start codes out.
    Output abySps;
    unsigned nZeros = 0;
    for (const unsigned char by : atSets[1])
    {
        if (nZeros < 2 || by != 3)
        {
            abySps.push_back(by);
        }
        nZeros = by == 0 ? nZeros + 1 : 0;
    }
    t.Box("hvcC",
          [&]
          {
              t.U8(1);
              t.Data(Bytes(abySps).subspan(3, 12));
              t.U16(0xF000); // no spatial segmentation
              t.U8(0xFC);    // parallelism is not known
              t.U8(0xFD);    // 4:2:0
              t.U8(0xF8);    // 8 bits
              t.U8(0xF8);
              t.U16(0);
              t.U8(0x0F); // one temporal layer, lengths of 4 bytes
              t.U8(static_cast<uint32_t>(atSets.size()));
              for (Output const& tSet : atSets)
              {
                  t.U8(0x80U | (tSet[0] >> 1 & 63U));
                  t.U16(1);
                  t.U16(static_cast<uint32_t>(tSet.size()));
                  t.Data(tSet);
              }
          });
}

void VideoEntry(CBoxes& t, tagVideoFormat const& tFormat)
{
    const bool bAvc = tFormat.dwCodec == eCodecH264;
    t.Box(bAvc ? "avc1" : "hvc1",
          [&]
          {
              t.Zeros(6);
              t.U16(1);
              t.Zeros(16);
              t.U16(tFormat.dwWidth);
              t.U16(tFormat.dwHeight);
              t.U32(0x480000);
              t.U32(0x480000);
              t.U32(0);
              t.U16(1);
              t.Zeros(32);
              t.U16(0x18);
              t.U16(0xFFFF);
              bAvc ? Avc(t, tFormat.aabyParameterSets) : Hevc(t, tFormat.aabyParameterSets);
          });
}

// A descriptor of MPEG-4's: a tag, a length, and what is in it.
void Descriptor(CBoxes& t, uint32_t dwTag, Output const& abyContents)
{
    t.U8(dwTag);
    t.U8(static_cast<uint32_t>(abyContents.size()));
    t.Data(abyContents);
}

// How AAC says what it is.
void ElementaryStream(CBoxes& t, Output const& abyConfig)
{
    Output abySpecific;
    CBoxes tSpecific(abySpecific);
    Descriptor(tSpecific, 5, abyConfig);
    Output abyDecoder;
    CBoxes tDecoder(abyDecoder);
    tDecoder.U8(0x40); // AAC
    tDecoder.U8(0x15); // sound
    tDecoder.Zeros(11);
    tDecoder.Data(abySpecific);
    Output abyStream;
    CBoxes tStream(abyStream);
    tStream.Zeros(3);
    Descriptor(tStream, 4, abyDecoder);
    Descriptor(tStream, 6, {2});
    t.FullBox("esds", 0, [&] { Descriptor(t, 3, abyStream); });
}

void AudioEntry(CBoxes& t, tagAudioFormat const& tFormat)
{
    char const* const szType = tFormat.dwCodec == eCodecAAC ? "mp4a" : tFormat.dwCodec == eCodecG711A ? "alaw" : "ulaw";
    t.Box(szType,
          [&]
          {
              t.Zeros(6);
              t.U16(1);
              t.Zeros(8);
              t.U16(tFormat.dwChannels);
              t.U16(16);
              t.U32(0);
              t.U32(tFormat.dwSampleRate << 16);
              if (tFormat.dwCodec == eCodecAAC)
              {
                  ElementaryStream(t, tFormat.abyConfig);
              }
          });
}

// What a track of a file has that has its samples in fragments. fnMedia writes its media header, fnEntries its sample
// descriptions.
template <class Media, class Entries>
void Track(CBoxes& t, uint32_t dwTrack, uint32_t dwWidth, uint32_t dwHeight, uint32_t dwScale, char const* szHandler,
           Media fnMedia, Entries fnEntries)
{
    t.Box("trak",
          [&]
          {
              t.FullBox("tkhd", 3,
                        [&]
                        {
                            t.Zeros(8);
                            t.U32(dwTrack);
                            t.Zeros(8);
                            t.Zeros(12);
                            t.U16(dwWidth == 0 ? 0x100 : 0); // volume
                            t.U16(0);
                            Matrix(t);
                            t.U32(dwWidth << 16);
                            t.U32(dwHeight << 16);
                        });
              t.Box("mdia",
                    [&]
                    {
                        t.FullBox("mdhd", 0,
                                  [&]
                                  {
                                      t.Zeros(8);
                                      t.U32(dwScale);
                                      t.U32(0);
                                      t.U16(0x55C4); // no language
                                      t.U16(0);
                                  });
                        t.FullBox("hdlr", 0,
                                  [&]
                                  {
                                      t.U32(0);
                                      t.Text(szHandler);
                                      t.Zeros(13);
                                  });
                        t.Box("minf",
                              [&]
                              {
                                  fnMedia();
                                  t.Box("dinf",
                                        [&]
                                        {
                                            t.FullBox("dref", 0,
                                                      [&]
                                                      {
                                                          t.U32(1);
                                                          t.FullBox("url ", 1, [] {});
                                                      });
                                        });
                                  t.Box("stbl",
                                        [&]
                                        {
                                            t.FullBox("stsd", 0, fnEntries);
                                            t.FullBox("stts", 0, [&] { t.U32(0); });
                                            t.FullBox("stsc", 0, [&] { t.U32(0); });
                                            t.FullBox("stsz", 0, [&] { t.Zeros(8); });
                                            t.FullBox("stco", 0, [&] { t.U32(0); });
                                        });
                              });
                    });
          });
}

class CFragmentedMp4 final : public CFileWriter
{
public:
    CFragmentedMp4(std::vector<tagVideoFormat> atVideo, tagAudioFormat tAudio)
        : m_atVideo(std::move(atVideo)), m_tAudioFormat(std::move(tAudio))
    {
    }

    void Begin(Output& abyOut) override
    {
        CBoxes t(abyOut);
        t.Data(FragmentedMp4Header());
        t.Box("moov",
              [&]
              {
                  t.FullBox("mvhd", 0,
                            [&]
                            {
                                t.Zeros(8);
                                t.U32(1000);
                                t.U32(0);
                                t.U32(0x10000);
                                t.U16(0x100);
                                t.Zeros(10);
                                Matrix(t);
                                t.Zeros(24);
                                t.U32(g_dwAudioTrack + 1);
                            });
                  VideoTrack(t);
                  if (m_tAudioFormat.dwCodec != 0)
                  {
                      AudioTrack(t);
                  }
                  t.Box("mvex",
                        [&]
                        {
                            Extends(t, g_dwVideoTrack);
                            if (m_tAudioFormat.dwCodec != 0)
                            {
                                Extends(t, g_dwAudioTrack);
                            }
                        });
              });
    }

    void Add(tagSample const& tSample, Output& abyOut) override
    {
        if (tSample.bVideo && tSample.bKey)
        {
            Flush(abyOut);
        }
        // All tracks tell their time in ticks of their own.
        const uint32_t dwScale = tSample.bVideo ? g_dwVideoScale : m_tAudioFormat.dwSampleRate;
        tagSamples& tSamples = tSample.bVideo ? m_tVideo : m_tAudio;
        if (tSamples.atSamples.empty())
        {
            tSamples.ullTime = static_cast<uint64_t>(tSample.llTimeUs) * dwScale / 1000000;
            tSamples.dwEntry = tSample.bVideo ? tSample.dwFormat + 1 : 1;
        }
        const std::size_t nBefore = tSamples.abyData.size();
        CBoxes t(tSamples.abyData);
        if (tSample.bVideo)
        {
            Picture(t, tSample);
        }
        else
        {
            t.Data(tSample.tData);
        }
        tSamples.atSamples.push_back({static_cast<uint32_t>(tSample.llDurationUs * dwScale / 1000000),
                                      static_cast<uint32_t>(tSamples.abyData.size() - nBefore),
                                      tSample.bVideo && !tSample.bKey ? g_dwOtherSample : g_dwKeySample});
    }

    void End(Output& abyOut) override { Flush(abyOut); }

private:
    struct tagEntry
    {
        uint32_t dwDuration;
        uint32_t dwLength;
        uint32_t dwFlags;
    };
    // What a track has in the fragment that is being made.
    struct tagSamples
    {
        uint64_t ullTime = 0;
        uint32_t dwEntry = 1;
        std::vector<tagEntry> atSamples;
        Output abyData;
    };

    // Its units, each with its length before it. The parameter sets stand at the begin of the file.
    void Picture(CBoxes& t, tagSample const& tSample) const
    {
        for (const Bytes tUnit : UnitsOf(tSample.tData))
        {
            if (!IsParameterSet(m_atVideo.front().dwCodec, tUnit, true))
            {
                t.U32(static_cast<uint32_t>(tUnit.size()));
                t.Data(tUnit);
            }
        }
    }

    void VideoTrack(CBoxes& t) const
    {
        Track(
            t, g_dwVideoTrack, m_atVideo.front().dwWidth, m_atVideo.front().dwHeight, g_dwVideoScale, "vide",
            [&] { t.FullBox("vmhd", 1, [&] { t.Zeros(8); }); },
            [&]
            {
                t.U32(static_cast<uint32_t>(m_atVideo.size()));
                for (tagVideoFormat const& tFormat : m_atVideo)
                {
                    VideoEntry(t, tFormat);
                }
            });
    }

    void AudioTrack(CBoxes& t) const
    {
        Track(
            t, g_dwAudioTrack, 0, 0, m_tAudioFormat.dwSampleRate, "soun",
            [&] { t.FullBox("smhd", 0, [&] { t.Zeros(4); }); },
            [&]
            {
                t.U32(1);
                AudioEntry(t, m_tAudioFormat);
            });
    }

    static void Extends(CBoxes& t, uint32_t dwTrack)
    {
        t.FullBox("trex", 0,
                  [&]
                  {
                      t.U32(dwTrack);
                      t.U32(1);
                      t.Zeros(12);
                  });
    }

    // Where the offset of the track's data is to be written.
    static std::size_t Fragment(CBoxes& t, uint32_t dwTrack, tagSamples const& tSamples)
    {
        std::size_t nOffset = 0;
        t.Box("traf",
              [&]
              {
                  t.FullBox("tfhd", 0x020002, // from the begin of this fragment; with sample description
                            [&]
                            {
                                t.U32(dwTrack);
                                t.U32(tSamples.dwEntry);
                            });
                  t.FullBox("tfdt", 0x01000000, [&] { t.U64(tSamples.ullTime); });
                  t.FullBox("trun", 0x000701, // offset; duration, size and flags of each
                            [&]
                            {
                                t.U32(static_cast<uint32_t>(tSamples.atSamples.size()));
                                nOffset = t.At();
                                t.U32(0);
                                for (tagEntry const& tEntry : tSamples.atSamples)
                                {
                                    t.U32(tEntry.dwDuration);
                                    t.U32(tEntry.dwLength);
                                    t.U32(tEntry.dwFlags);
                                }
                            });
              });
        return nOffset;
    }

    void Flush(Output& abyOut)
    {
        if (m_tVideo.atSamples.empty() && m_tAudio.atSamples.empty())
        {
            return;
        }
        CBoxes t(abyOut);
        const std::size_t nBegin = t.At();
        std::size_t nVideo = 0;
        std::size_t nAudio = 0;
        t.Box("moof",
              [&]
              {
                  t.FullBox("mfhd", 0, [&] { t.U32(++m_dwFragments); });
                  nVideo = m_tVideo.atSamples.empty() ? 0 : Fragment(t, g_dwVideoTrack, m_tVideo);
                  nAudio = m_tAudio.atSamples.empty() ? 0 : Fragment(t, g_dwAudioTrack, m_tAudio);
              });
        t.Box("mdat",
              [&]
              {
                  for (auto const& [nOffset, ptSamples] : {std::pair{nVideo, &m_tVideo}, std::pair{nAudio, &m_tAudio}})
                  {
                      if (nOffset != 0)
                      {
                          t.Patch(nOffset, static_cast<uint32_t>(t.At() - nBegin));
                          t.Data(ptSamples->abyData);
                      }
                  }
              });
        m_tVideo.atSamples.clear();
        m_tVideo.abyData.clear();
        m_tAudio.atSamples.clear();
        m_tAudio.abyData.clear();
    }

    const std::vector<tagVideoFormat> m_atVideo;
    const tagAudioFormat m_tAudioFormat;
    tagSamples m_tVideo;
    tagSamples m_tAudio;
    uint32_t m_dwFragments = 0;
};
} // namespace

std::unique_ptr<CFileWriter> MakeFragmentedMp4(std::vector<tagVideoFormat> atVideo, tagAudioFormat tAudio)
{
    return std::make_unique<CFragmentedMp4>(std::move(atVideo), std::move(tAudio));
}

Output FragmentedMp4Header()
{
    Output abyHeader;
    CBoxes t(abyHeader);
    t.Box("ftyp",
          [&]
          {
              t.Text("iso6");
              t.U32(1);
              t.Text("iso6");
              t.Text("mp41");
          });
    return abyHeader;
}
} // namespace plugin
