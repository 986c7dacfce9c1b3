#pragma once

namespace rtsp
{
/// What a device means by the marker bit. It should be on the last packet of each access unit, and a frame then leaves
/// with it. Some devices set it on each NAL unit, where it would cut pictures in pieces.
///
/// At first markers aren't known: a frame with one is held until the next packet, or for g_tMarkerWait. When the next
/// packet begins another access unit after g_nProof frames, markers end frames. When a packet goes on with the picture
/// behind a marker, they no longer do, and frames end with the next time stamp or picture; until a long run of frames
/// had their only marker at their end, longer each time that this turned out to be wrong.
///
/// A device that never sets it needs no learning: each frame ends when the next begins.
class CMarkers
{
public:
    /// Whether a marker ends a frame.
    bool EndFrames() const { return m_eTrust == eTrust::Yes; }
    bool AreKnown() const { return m_eTrust != eTrust::Unknown; }
    /// For payloads that nothing can be learnt from.
    void Believe() { m_eTrust = eTrust::Yes; }

    /// A frame had a marker at its end.
    void OnRight()
    {
        if (m_eTrust != eTrust::Yes && ++m_nRight >= m_nNeeded)
        {
            m_eTrust = eTrust::Yes;
        }
    }
    /// A frame went on behind a marker.
    void OnWrong()
    {
        if (m_eTrust != eTrust::No)
        {
            m_nNeeded = m_nNeeded < g_nProofAgain  ? g_nProofAgain
                        : m_nNeeded < g_nMostProof ? 4 * m_nNeeded
                                                   : m_nNeeded;
        }
        m_eTrust = eTrust::No;
        m_nRight = 0;
    }

private:
    enum class eTrust : unsigned char
    {
        Unknown,
        Yes,
        No,
    };
    static constexpr unsigned g_nProof = 2;
    static constexpr unsigned g_nProofAgain = 250; // longer than most groups of pictures, whose key frames have slices
    static constexpr unsigned g_nMostProof = 64000;

    eTrust m_eTrust = eTrust::Unknown;
    unsigned m_nRight = 0;
    unsigned m_nNeeded = g_nProof;
};
} // namespace rtsp
