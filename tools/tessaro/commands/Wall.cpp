// wall: what a video decoder shows on its screens.

#include "tools/tessaro/Command.h"
#include "tools/tessaro/Failure.h"
#include "tools/tessaro/Session.h"

#include <RecordTables.h>
#include <fstream>
#include <iostream>
#include <memory>

namespace tessaro
{
namespace
{
constexpr std::size_t g_nMostWindows = 1024;

struct tagWallOptions
{
    std::string strAddress;
    unsigned int dwWindow = 0;
    unsigned int dwMode = 4;
    unsigned int dwSeconds = 0;
    std::vector<unsigned long> adwChannels;
    std::string strSource;
    std::string strFile;
    std::string strSourcePassword;
};

json ReadLayout(CSession const& tSession)
{
    std::vector<tagDecoderWindow> atWindows(g_nMostWindows);
    auto t = Sized<tagDecoderDeviceConfig>();
    t.dwEntrySize = sizeof atWindows[0];
    t.dwCapacity = static_cast<std::uint32_t>(atWindows.size());
    t.ptEntries = atWindows.data();
    Check(ClientAdapter_DecoderGetConfig(tSession.Login(), &t), "reading the wall's layout");
    return ToJson(t);
}

json ReadStates(CSession const& tSession)
{
    std::vector<tagDecoderWindowStatus> atWindows(g_nMostWindows);
    auto t = Sized<tagDecoderChannelStatus>();
    t.dwEntrySize = sizeof atWindows[0];
    t.dwCapacity = static_cast<std::uint32_t>(atWindows.size());
    t.ptEntries = atWindows.data();
    Check(ClientAdapter_DecoderChannelGetStatus(tSession.Login(), &t), "reading what the windows show");
    return ToJson(t)["entries"];
}

// The wall as characters: each window's number stands where the window lies.
void Sketch(COutput& tOut, json const& tLayout)
{
    constexpr std::size_t nColumns = 64;
    constexpr std::size_t nRows = 16;
    std::vector<std::string> astrRows(nRows + 1, std::string(nColumns + 1, ' '));
    json tWindows = tLayout["entries"];
    std::sort(tWindows.begin(), tWindows.end(),
              [](json const& tOne, json const& tOther)
              { return tOne["layer"].get<int>() < tOther["layer"].get<int>(); });
    for (json const& t : tWindows)
    {
        const auto Place = [&](char const* szKey, std::size_t n)
        { return std::min(n, t[szKey].get<std::size_t>() * n / 10000); };
        const std::size_t nLeft = Place("left", nColumns);
        const std::size_t nTop = Place("top", nRows);
        const std::size_t nRight = std::min(nColumns, nLeft + Place("width", nColumns));
        const std::size_t nBottom = std::min(nRows, nTop + Place("height", nRows));
        for (std::size_t y = nTop; y <= nBottom; ++y)
        {
            for (std::size_t x = nLeft; x <= nRight; ++x)
            {
                const bool bLine = y == nTop || y == nBottom;
                const bool bSide = x == nLeft || x == nRight;
                astrRows[y][x] = bLine && bSide ? '+' : bLine ? '-' : bSide ? '|' : ' ';
            }
        }
        const std::string strNumber = t["channel"].dump();
        astrRows[(nTop + nBottom) / 2].replace((nLeft + nRight - strNumber.size() + 1) / 2, strNumber.size(),
                                               strNumber);
    }
    for (std::string const& strRow : astrRows)
    {
        tOut.Say("{}", strRow);
    }
}

int Show(tagContext& tContext, CSession const& tSession, tagWallOptions const&)
{
    const json tLayout = ReadLayout(tSession);
    const json tStates = ReadStates(tSession);
    COutput& tOut = tContext.tOut;
    tOut.Say("\"{}\": {} x {} screens, {} windows", tLayout["name"].get<std::string>(), tLayout["columns"].dump(),
             tLayout["rows"].dump(), tLayout["entries"].size());
    Sketch(tOut, tLayout);
    tOut.Table({{"WINDOW", "channel"},
                {"STATE", "state"},
                {"CODEC", "codec"},
                {"WIDTH", "width"},
                {"HEIGHT", "height"},
                {"KBIT/S", "bit_rate"},
                {"SOURCE", "kind"},
                {"ADDRESS", "address"},
                {"CHANNEL", "source_channel"},
                {"RESULT", "result"}},
               tStates);
    tOut.Result({{"layout", tLayout}, {"windows", tStates}});
    return eExitDone;
}

int Split(tagContext& tContext, CSession const& tSession, tagWallOptions const& tOptions)
{
    std::vector<unsigned long> adwChannels = tOptions.adwChannels;
    adwChannels.resize(tOptions.dwMode, TESSARO_ALL);
    Check(ClientAdapter_SetScreenSplitMode(tSession.Login(), tOptions.dwWindow, tOptions.dwMode, adwChannels.data()),
          fmt::format("splitting screen {}", tOptions.dwWindow));
    return Show(tContext, tSession, tOptions);
}

tagDecoderSource Source(tagContext const& tContext, std::string const& strText)
{
    tagDecoderSource t{};
    char* pEnd = nullptr;
    const unsigned long dwChannel = std::strtoul(strText.c_str(), &pEnd, 10);
    if (*pEnd == '\0')
    {
        t.dwKind = eDecoderSourceChannel;
        t.dwChannel = static_cast<std::uint32_t>(dwChannel);
        return t;
    }
    const tagAddress tAddress = tagAddress::Parse(strText);
    const tagUserLoginPara tLogin = LoginRecord(tContext, tAddress);
    t.dwKind = tAddress.eProtocol == eProtocolRTSP ? eDecoderSourceAddress : eDecoderSourceDevice;
    t.dwProtocol = tAddress.eProtocol;
    t.dwPort = tAddress.dwPort;
    tAddress.strHost.copy(t.szAddress, sizeof t.szAddress - 1);
    std::memcpy(t.szUserName, tLogin.szUserName, sizeof t.szUserName);
    std::memcpy(t.szPassword, tLogin.szPassword, sizeof t.szPassword);
    return t;
}

int Connect(tagContext& tContext, CSession const& tSession, tagWallOptions const& tOptions)
{
    tagContext tOther{};
    tOther.strPasswordFile = tOptions.strSourcePassword.empty() ? tContext.strPasswordFile : tOptions.strSourcePassword;
    auto t = Sized<tagDecoderDynamicInformation>();
    t.dwSeconds = tOptions.dwSeconds;
    t.tSource = Source(tOther, tOptions.strSource);
    Check(ClientAdapter_DecoderDynamicConnect(tSession.Login(), tOptions.dwWindow, &t),
          fmt::format("showing {} in window {}", tOptions.strSource, tOptions.dwWindow));
    return Show(tContext, tSession, tOptions);
}

int Disconnect(tagContext& tContext, CSession const& tSession, tagWallOptions const& tOptions)
{
    Check(ClientAdapter_DecoderDynamicDisconnect(tSession.Login(), tOptions.dwWindow, eDecoderRestore),
          fmt::format("ending what window {} shows", tOptions.dwWindow));
    return Show(tContext, tSession, tOptions);
}

int Set(tagContext& tContext, CSession const& tSession, tagWallOptions const& tOptions)
{
    std::ifstream tFile(tOptions.strFile);
    const json tWanted = json::parse(tOptions.strFile == "-" ? std::cin : tFile, nullptr, false);
    if (tWanted.is_discarded())
    {
        throw CFailure(eExitUsage, tOptions.strFile + " holds no JSON");
    }
    Arena tArena;
    auto t = Sized<tagDecoderDeviceConfig>();
    try
    {
        // What show --json printed can be written back as it is.
        FromJson(RecordOf<tagDecoderDeviceConfig>(), tWanted.contains("layout") ? tWanted["layout"] : tWanted, &t,
                 tArena);
    }
    catch (std::invalid_argument const& tError)
    {
        throw CFailure(eExitUsage, tError.what());
    }
    Check(ClientAdapter_DecoderSetConfig(tSession.Login(), &t), "writing the wall's layout");
    return Show(tContext, tSession, tOptions);
}
} // namespace

void DeclareWall(CLine& tLine)
{
    using Part = int (*)(tagContext&, CSession const&, tagWallOptions const&);
    auto pt = std::make_shared<tagWallOptions>();
    const auto Act = [pt](Part pfn) -> Action
    {
        return [pt, pfn](tagContext& tContext)
        {
            const CSession tSession(tContext, pt->strAddress);
            tSession.NeedsDevice("wall");
            return pfn(tContext, tSession, *pt);
        };
    };
    tLine.Option("address", pt->strAddress, g_szAddressHelp).Needed();
    tLine.Does(Act(&Show));
    tLine.Add("show", "the layout and what each window shows, which is what no action does too", Act(&Show));
    CLine tSplit = tLine.Add("split", "split a screen evenly", Act(&Split));
    tSplit.Option("screen", pt->dwWindow, "which screen, from 0").Needed();
    tSplit.Option("windows", pt->dwMode, "into so many: 1, 4, 6, 8, 9, 16, 25, 36").Needed();
    tSplit.Option("channels", pt->adwChannels, "the decoder's own channel of each window in turn");
    CLine tConnect = tLine.Add("connect", "show a source in a window for now", Act(&Connect));
    tConnect.Option("window", pt->dwWindow, "which window").Needed();
    tConnect
        .Option("source", pt->strSource,
                "the decoder's own channel by its number, or an address as the decoder sees it")
        .Needed();
    tConnect.Option("--seconds", pt->dwSeconds, "for so long").Value("N");
    tConnect.Option("--source-password-file", pt->strSourcePassword, "the source's password, if it is another")
        .Value("FILE");
    CLine tDisconnect = tLine.Add("disconnect", "end what connect began", Act(&Disconnect));
    tDisconnect.Option("window", pt->dwWindow, "which window").Needed();
    CLine tSet = tLine.Add("set", "write a layout", Act(&Set));
    tSet.Option("file", pt->strFile, "JSON as show --json prints it; - for standard input").Needed();
}
} // namespace tessaro
