#pragma once

#include "protocol/interface/Discovery.h"

namespace device
{
/// Renders a text as dots, as tagFontPara says; dwWidth, dwHeight and dwLength are filled, with eResultNoResources (no
/// room) too. eResultBadArgument: no text, not UTF-8, or a value out of its range; eResultNotFound: no such font.
int Lattice(char const* szText, tagFontPara const& tFont, void* pLattice, unsigned long& dwWidth,
            unsigned long& dwHeight, unsigned long& dwLength);
} // namespace device
