#pragma once

#include "protocol/PluginInterface.h"

#include <cstdint>
#include <cstdio>
#include <memory>
#include <string>
#include <vector>

namespace tessaro
{
/// Sound from any file that has some, coded in packets of one length as a device wants them.
class CSoundSource
{
public:
    /// strFile "-": 16-bit samples of the agreed rate from standard input. Throws CFailure.
    CSoundSource(std::string const& strFile, tagVoiceStreamPara const& tAgreed);
    ~CSoundSource();
    CSoundSource(CSoundSource const&) = delete;
    CSoundSource& operator=(CSoundSource const&) = delete;

    /// The next packet; empty: the end.
    std::vector<unsigned char> Next();

private:
    struct tagState;
    std::unique_ptr<tagState> m_pState;
};

/// Writes G.711 that comes from a device as a WAV file, as it is. Takes nothing but G.711.
class CWavFile
{
public:
    explicit CWavFile(std::string const& strFile); ///< throws CFailure
    ~CWavFile();
    CWavFile(CWavFile const&) = delete;
    CWavFile& operator=(CWavFile const&) = delete;

    void Take(tagStreamVoiceFrame const& tFrame);
    std::uint32_t Bytes() const { return m_dwBytes; }

private:
    void Head();
    std::FILE* m_pFile;
    std::uint32_t m_dwBytes = 0;
    tagStreamVoiceFrame m_tFirst{};
};
} // namespace tessaro
