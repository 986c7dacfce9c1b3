#include "bindings/Binding.h"

#include "system/OutputMessage.h"

#include <algorithm>
#include <cstring>

namespace Adapter_ProtocolSet
{
namespace
{
// The name of the entry point that serves an operation; in szRoom if it isn't irregular. Put together by hand: 400
// times snprintf shows in a start.
char const* SymbolName(tagBindingProfile const& tProfile, eOperation eOp, char (&szRoom)[g_nSymbolRoom])
{
    const auto itIrregular = std::ranges::find(tProfile.atIrregular, eOp, &tagIrregularName::eOp);
    if (itIrregular != tProfile.atIrregular.end())
    {
        return itIrregular->szSymbol;
    }
    stpcpy(stpcpy(szRoom, tProfile.szPrefix), g_aszOperation[static_cast<std::size_t>(eOp)]);
    return szRoom;
}
} // namespace

int CEntryTable::Missing()
{
    return eResultNoEntryPoint;
}

int CEntryTable::Bind(Adapter_System::CModule& tModule, tagBindingProfile const& tProfile, char const* szPath)
{
    if (!szPath)
    {
        DiagnosticLine(tProfile.szSource, "Intialize", tProfile.nNullPathLine);
        return eResultNoProtocol;
    }
    m_apEntry.fill(MissingEntry());
    if (tModule.Open(szPath) != 0)
    {
        if (tProfile.szOpenFailed)
        {
            CAdapter_OutputMessage::OutputMessage("%s\n", tProfile.szOpenFailed);
        }
        return eResultOk;
    }
    if (tProfile.szOpened)
    {
        DiagnosticLine(tProfile.szSource, "Intialize", tProfile.nOpenedLine, tProfile.szOpened);
    }
    char szRoom[g_nSymbolRoom];
    for (const eOperation eOp : tProfile.aeLookUp)
    {
        void* pEntry = nullptr;
        if (tModule.Export(SymbolName(tProfile, eOp, szRoom), pEntry) == 0)
        {
            m_apEntry[static_cast<std::size_t>(eOp)] = pEntry;
        }
    }
    return eResultOk;
}

tagEntryName EntryName(tagBindingProfile const& tProfile, std::size_t iEntry, char (&szRoom)[g_nSymbolRoom])
{
    if (iEntry >= tProfile.aeLookUp.size())
    {
        return {};
    }
    const eOperation eOp = tProfile.aeLookUp[iEntry];
    return {eOp, SymbolName(tProfile, eOp, szRoom)};
}
} // namespace Adapter_ProtocolSet
