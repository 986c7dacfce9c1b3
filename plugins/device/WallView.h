#pragma once

#include "protocol/interface/Decoders.h"

#include <cstdint>
#include <memory>
#include <vector>

namespace device
{
class CDevice;

/// Bytes that several owners share and nobody changes.
using SharedBytes = std::shared_ptr<std::vector<unsigned char> const>;

/// A picture over a window.
struct tagLogo
{
    tagUploadLogoParameter tPlace{}; ///< pbyData is null
    SharedBytes pData;               ///< the image file
    bool bShown = false;
};

/// One window as it shows now.
struct tagWindowView
{
    tagDecoderWindow tPlace{};          ///< where it lies at the moment, enlarged or not
    tagDecoderWindowStatus tStatus{};   ///< dwState, dwKind, dwCodec and so on
    tagDecoderChannelConfig tConfig{};  ///< how it shows; szPassword is empty
    tagDecoderDisplayStatus tDisplay{}; ///< the part of the picture that shows
    std::shared_ptr<CDevice> pSource;   ///< whose picture; null: none
    uint32_t dwChannel = 0;             ///< the channel of pSource
    uint32_t dwStreamKind = 0;          ///< eStreamKind; 0: as fits
    int64_t llTimeUs = 0;               ///< of the picture, on the clock of pSource
    SharedBytes pTransferred;           ///< eDecoderSourceTransfer: the last key frame that was sent
    uint32_t dwTransferCodec = 0;       ///< eMediaCodec of that
    tagLogo tLogo;
};

/// A decoder's wall as it shows now: windows in the order in which they are painted, hidden ones left out.
struct tagWallView
{
    uint32_t dwRows = 1;
    uint32_t dwColumns = 1;
    std::vector<tagDecoderDisplayConfig> atScreens;       ///< dwRows * dwColumns of them, row by row
    std::vector<tagDecoderVideoStandardConfig> atSignals; ///< the same
    std::vector<tagWindowView> atWindows;
    int64_t llNowUs = 0;           ///< the decoder's clock
    int32_t nUtcOffsetMinutes = 0; ///< how far local time is ahead of it
};
} // namespace device
