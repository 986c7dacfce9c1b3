#include "plugins/device/media/Clips.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <filesystem>
#include <stdexcept>
#include <system_error>

#include <dlfcn.h>
#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

namespace device
{
// --- files -----------------------------------------------------------------------------------------------------------

CMappedFile::CMappedFile(std::string const& strPath)
{
    const int nFile = open(strPath.c_str(), O_RDONLY | O_CLOEXEC);
    struct stat tStat = {};
    void* pData = MAP_FAILED;
    if (nFile >= 0 && fstat(nFile, &tStat) == 0)
    {
        pData = mmap(nullptr, static_cast<std::size_t>(tStat.st_size), PROT_READ, MAP_SHARED, nFile, 0);
    }
    const int nError = errno;
    if (nFile >= 0)
    {
        close(nFile);
    }
    if (pData == MAP_FAILED)
    {
        throw std::system_error(nError, std::generic_category(), strPath);
    }
    m_tContents = {static_cast<unsigned char const*>(pData), static_cast<std::size_t>(tStat.st_size)};
}

CMappedFile::~CMappedFile()
{
    munmap(const_cast<unsigned char*>(m_tContents.data()), m_tContents.size());
}

// --- clips -----------------------------------------------------------------------------------------------------------

namespace
{
constexpr unsigned char g_abyStartCode[] = {0, 0, 1};

// Where the count of a frame that isn't a key frame lies, in bits from the begin of its slice: frame_num of H.264,
// slice_pic_order_cnt_lsb of H.265. All before it has the same length in all slices, and the encoder gives the field
// this width whatever it is asked to do.
struct tagField
{
    unsigned nFirst;
    unsigned nWidth;
};

tagField CountField(uint32_t dwCodec)
{
    return dwCodec == eCodecH264 ? tagField{15, 4} : tagField{21, 8};
}

unsigned UnitType(uint32_t dwCodec, unsigned char byHeader)
{
    return dwCodec == eCodecH264 ? byHeader & 31U : byHeader >> 1 & 63U;
}

bool IsSlice(uint32_t dwCodec, unsigned nType)
{
    return dwCodec == eCodecH264 ? nType == 1 || nType == 5 : nType < 32;
}

bool IsParameterSet(uint32_t dwCodec, unsigned nType)
{
    return dwCodec == eCodecH264 ? nType == 7 || nType == 8 : nType >= 32 && nType <= 34;
}
} // namespace

CClip::CClip(uint32_t dwCodec, uint32_t dwWidth, uint32_t dwHeight, std::string const& strPath)
    : m_dwCodec(dwCodec), m_dwWidth(dwWidth), m_dwHeight(dwHeight), m_tKeyFile(strPath + ".key"),
      m_tDeltaFile(strPath + ".delta")
{
    const auto atPairs = Split(m_tKeyFile.Contents(), true);
    m_atDeltas = Split(m_tDeltaFile.Contents(), false);
    if (atPairs.size() != 2 * g_dwClipPictures || m_atDeltas.size() != g_dwClipPictures + 1 ||
        m_atParameterSets.size() != (dwCodec == eCodecH264 ? 2 : 3))
    {
        throw std::runtime_error(strPath + ": not so many pictures as there should be");
    }
    m_atDeltas.erase(m_atDeltas.begin());
    for (std::size_t i = 0; i < atPairs.size(); i += 2)
    {
        m_atKeys.push_back(atPairs[i]);
        m_atSeconds.push_back(atPairs[i + 1]);
    }
    std::ranges::rotate(m_atSeconds, m_atSeconds.end() - 1); // the first one follows the last key frame
    const tagField tField = CountField(dwCodec);
    const uint32_t dwMask = (1U << tField.nWidth) - 1;
    for (uint32_t i = 0; i < g_dwClipPictures; ++i)
    {
        tagUnit const& tUnit = m_atDeltas[i];
        // The bits after the count keep its byte from being 0, whatever is written: no start code can come to be.
        const unsigned nAfter = tField.nFirst + tField.nWidth;
        const unsigned char byRest = tUnit.tFrame[tUnit.nSlice + nAfter / 8] & (0xFF >> nAfter % 8);
        if (Count(tUnit) != ((i + 1) & dwMask) || Count(m_atSeconds[i]) != 1 || byRest == 0)
        {
            throw std::runtime_error(strPath + ": pictures are not counted as they should be");
        }
    }
}

// The access units of a byte stream: each ends with its one slice.
std::vector<CClip::tagUnit> CClip::Split(Bytes tContents, bool bParameterSets)
{
    std::vector<tagUnit> atUnits;
    std::vector<Bytes> atSets;
    const auto fnFind = [&](std::size_t nFrom)
    {
        const auto tFound =
            std::search(tContents.begin() + static_cast<std::ptrdiff_t>(std::min(nFrom, tContents.size())),
                        tContents.end(), std::begin(g_abyStartCode), std::end(g_abyStartCode));
        return static_cast<std::size_t>(tFound - tContents.begin());
    };
    std::size_t nBegin = 0; // of the access unit
    for (std::size_t nCode = fnFind(0); nCode + 4 < tContents.size();)
    {
        const std::size_t nUnit = nCode + 3;
        std::size_t nEnd = nCode = fnFind(nUnit);
        while (nEnd > nUnit && nEnd < tContents.size() && tContents[nEnd - 1] == 0)
        {
            --nEnd; // zeros before a start code belong to it
        }
        const unsigned nType = UnitType(m_dwCodec, tContents[nUnit]);
        if (IsParameterSet(m_dwCodec, nType))
        {
            atSets.push_back(tContents.subspan(nUnit, nEnd - nUnit));
        }
        else if (IsSlice(m_dwCodec, nType))
        {
            if (bParameterSets && m_atParameterSets.empty())
            {
                m_atParameterSets = atSets;
            }
            atUnits.push_back({tContents.subspan(nBegin, nEnd - nBegin), nUnit - nBegin});
            nBegin = nEnd;
        }
    }
    return atUnits;
}

uint32_t CClip::Count(tagUnit const& tUnit) const
{
    const tagField tField = CountField(m_dwCodec);
    uint32_t dwCount = 0;
    for (unsigned n = tField.nFirst; n < tField.nFirst + tField.nWidth; ++n)
    {
        dwCount = dwCount << 1 | (tUnit.tFrame[tUnit.nSlice + n / 8] >> (7 - n % 8) & 1U);
    }
    return dwCount;
}

void CClip::SetCount(unsigned char* pSlice, uint32_t dwCount) const
{
    const tagField tField = CountField(m_dwCodec);
    for (unsigned i = 0; i < tField.nWidth; ++i)
    {
        const unsigned n = tField.nFirst + i;
        const auto byBit = static_cast<unsigned char>(0x80 >> n % 8);
        const bool bSet = (dwCount >> (tField.nWidth - 1 - i) & 1) != 0;
        pSlice[n / 8] = static_cast<unsigned char>(bSet ? pSlice[n / 8] | byBit : pSlice[n / 8] & ~byBit);
    }
}

CClip::tagUnit const& CClip::Unit(uint64_t ullPicture, uint32_t dwSinceKey) const
{
    const auto n = static_cast<uint32_t>(ullPicture % g_dwClipPictures);
    return dwSinceKey == 0 ? m_atKeys[n] : dwSinceKey == 1 ? m_atSeconds[n] : m_atDeltas[n];
}

std::size_t CClip::Length(uint64_t ullPicture, uint32_t dwSinceKey) const
{
    return Unit(ullPicture, dwSinceKey).tFrame.size();
}

std::size_t CClip::SliceBegin(uint64_t ullPicture, uint32_t dwSinceKey) const
{
    return Unit(ullPicture, dwSinceKey).nSlice;
}

Bytes CClip::Frame(uint64_t ullPicture, uint32_t dwSinceKey, std::vector<unsigned char>& abyRoom) const
{
    tagUnit const& tUnit = Unit(ullPicture, dwSinceKey);
    const uint32_t dwMask = (1U << CountField(m_dwCodec).nWidth) - 1;
    const auto dwOwn = static_cast<uint32_t>(ullPicture % g_dwClipPictures) + 1;
    if (dwSinceKey < 2 || ((dwSinceKey ^ dwOwn) & dwMask) == 0)
    {
        return tUnit.tFrame;
    }
    abyRoom.assign(tUnit.tFrame.begin(), tUnit.tFrame.end());
    SetCount(abyRoom.data() + tUnit.nSlice, dwSinceKey & dwMask);
    return abyRoom;
}

int CClip::FindKeyFrame(Bytes tFrame) const
{
    const auto it =
        std::ranges::find_if(m_atKeys, [&](tagUnit const& tKey) { return std::ranges::equal(tKey.tFrame, tFrame); });
    return it == m_atKeys.end() ? -1 : static_cast<int>(it - m_atKeys.begin());
}

// --- all of them -----------------------------------------------------------------------------------------------------

namespace
{
// Where the library lies that this code is part of.
std::filesystem::path Folder()
{
    Dl_info tInfo{};
    if (dladdr(reinterpret_cast<void const*>(&Folder), &tInfo) == 0 || !tInfo.dli_fname)
    {
        throw std::runtime_error("the folder of the device's clips can't be found");
    }
    return std::filesystem::absolute(tInfo.dli_fname).parent_path() / "device-media";
}
} // namespace

CClips const& CClips::Instance()
{
    // Never destroyed: frames of it may be on their way when the process ends.
    static CClips const* const s_pClips = new CClips;
    return *s_pClips;
}

CClips::CClips()
{
    const std::filesystem::path tFolder = Folder();
    for (auto const& tEntry : std::filesystem::directory_iterator(tFolder))
    {
        const std::string strName = tEntry.path().stem().string();
        unsigned nCodec = 0;
        unsigned nWidth = 0;
        unsigned nHeight = 0;
        if (tEntry.path().extension() == ".key" &&
            std::sscanf(strName.c_str(), "h26%u-%ux%u", &nCodec, &nWidth, &nHeight) == 3)
        {
            m_apClips.push_back(std::make_unique<CClip>(nCodec == 4 ? eCodecH264 : eCodecH265, nWidth, nHeight,
                                                        (tFolder / strName).string()));
        }
    }
    m_pALaw = std::make_unique<CMappedFile>((tFolder / "sound.alaw").string());
    m_pMuLaw = std::make_unique<CMappedFile>((tFolder / "sound.mulaw").string());
    m_pPictures = std::make_unique<CMappedFile>((tFolder / "pictures.mjpeg").string());
    // A JPEG file begins with FF D8 FF, which comes nowhere inside one.
    constexpr unsigned char abyBegin[] = {0xFF, 0xD8, 0xFF};
    const Bytes tAll = m_pPictures->Contents();
    auto it = tAll.begin();
    while (it != tAll.end())
    {
        const auto tNext = std::search(it + 1, tAll.end(), std::begin(abyBegin), std::end(abyBegin));
        m_atPictures.emplace_back(it, tNext);
        it = tNext;
    }
    if (m_apClips.empty() || m_atPictures.size() != g_dwClipPictures ||
        std::min(m_pALaw->Contents().size(), m_pMuLaw->Contents().size()) < g_dwClipPictures * g_dwPacketSamples)
    {
        throw std::runtime_error(tFolder.string() + ": not all clips are there");
    }
}

CClip const* CClips::Find(uint32_t dwCodec, uint32_t dwWidth, uint32_t dwHeight) const
{
    const auto it =
        std::ranges::find_if(m_apClips, [&](auto const& p)
                             { return p->Codec() == dwCodec && p->Width() == dwWidth && p->Height() == dwHeight; });
    return it == m_apClips.end() ? nullptr : it->get();
}

Bytes CClips::Sound(uint32_t dwCodec, uint64_t ullPacket) const
{
    const Bytes tAll = (dwCodec == eCodecG711A ? m_pALaw : m_pMuLaw)->Contents();
    return tAll.subspan(static_cast<uint32_t>(ullPacket % g_dwClipPictures) * g_dwPacketSamples, g_dwPacketSamples);
}

Bytes CClips::Picture(uint64_t ullPicture) const
{
    return m_atPictures[static_cast<uint32_t>(ullPicture % g_dwClipPictures)];
}
} // namespace device
