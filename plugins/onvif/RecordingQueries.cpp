// What a device has recorded: queries, days, recording by hand.

#include "plugins/common/Text.h"
#include "plugins/onvif/Media.h"
#include "plugins/onvif/Operations.h"
#include "plugins/onvif/Query.h"
#include "plugins/onvif/Recordings.h"

#include <algorithm>
#include <chrono>

namespace onvifclient
{
namespace
{
using Adapter_ProtocolSet::ReadRecord;

constexpr int64_t g_llMinuteUs = 60000000;

template <class Result>
std::vector<Result> Results(std::vector<tagRecording> const& atFound)
{
    std::vector<Result> atResults;
    for (tagRecording const& t : atFound)
    {
        Result& tResult = atResults.emplace_back();
        tResult.dwSize = sizeof tResult;
        tResult.dwChannel = t.dwChannel;
        tResult.dwType = t.dwType;
        tResult.dwStreamKind = eStreamMain;
        tResult.llStartUs = t.llStartUs;
        tResult.llEndUs = t.llEndUs;
        tResult.dwCodec = t.dwCodec;
        tResult.bRecording = t.bRecording ? 1 : 0;
        plugin::CopyText(tResult.szFile, t.File());
    }
    return atResults;
}

// Nothing is protected: ONVIF has no such thing.
template <class Result>
int Open(void** phQuery, CLogin& tLogin, tagQuestion const& tQuestion, uint32_t bLockedOnly)
{
    std::vector<tagRecording> atFound;
    int nResult = bLockedOnly > 1 ? int{eResultBadArgument} : tLogin.Part<CRecordings>().Find(tQuestion, atFound);
    if (bLockedOnly == 1)
    {
        atFound.clear();
    }
    return nResult ? nResult : OpenQuery(phQuery, tLogin.shared_from_this(), Results<Result>(atFound));
}
} // namespace

int Serve(tagCall<&CClientProtocolBase::HistoryStreamQueryConnect>, void** phQuery, void* hLogin,
          tagHistoryStreamQueryFactor* ptFactor)
{
    return With<CLogin>(hLogin,
                        [&](CLogin& tLogin) -> int
                        {
                            tagHistoryStreamQueryFactor t{};
                            if (!phQuery || ReadRecord(t, ptFactor) != eResultOk || (t.dwType & (t.dwType - 1)) != 0)
                            {
                                return eResultBadArgument;
                            }
                            return t.dwChannel >= 64
                                       ? int{eResultNoChannel}
                                       : Open<tagHistoryStreamQueryResult>(phQuery, tLogin,
                                                                           {uint64_t{1} << t.dwChannel, t.dwType,
                                                                            t.dwStreamKind, t.llStartUs, t.llEndUs},
                                                                           t.bLockedOnly);
                        });
}

int Serve(tagCall<&CClientProtocolBase::HistoryStreamMultiTypeQueryConnect>, void** phQuery, void* hLogin,
          tagHistoryStreamMultiTypeQueryFactor* ptFactor)
{
    return With<CLogin>(hLogin,
                        [&](CLogin& tLogin) -> int
                        {
                            tagHistoryStreamMultiTypeQueryFactor t{};
                            return !phQuery || ReadRecord(t, ptFactor) != eResultOk
                                       ? int{eResultBadArgument}
                                       : Open<tagHistoryStreamMultiTypeQueryResult>(
                                             phQuery, tLogin,
                                             {t.ullChannels, t.dwTypes, t.dwStreamKind, t.llStartUs, t.llEndUs},
                                             t.bLockedOnly);
                        });
}

int Serve(tagCall<&CClientProtocolBase::HistoryStreamQueryNext>, void* hQuery, tagHistoryStreamQueryResult* ptResult)
{
    return NextEntry(hQuery, ptResult);
}

int Serve(tagCall<&CClientProtocolBase::HistoryStreamMultiTypeQueryNext>, void* hQuery,
          tagHistoryStreamMultiTypeQueryResult* ptResult)
{
    return NextEntry(hQuery, ptResult);
}

int Serve(tagCall<&CClientProtocolBase::HistoryStreamQueryDisconnect>, void* hQuery)
{
    return CloseHandle<CQuery<tagHistoryStreamQueryResult>, CQuery<tagHistoryStreamMultiTypeQueryResult>>(hQuery);
}

// Of all kinds of files a device tells its recordings alone.
int Serve(tagCall<&CClientProtocolBase::FileQueryConnect>, void** phQuery, void* hParent, tagFileQueryFactor* ptFactor)
{
    return With<CMedia>(hParent,
                        [&](CMedia& tParent) -> int
                        {
                            tagFileQueryFactor t{};
                            if (!phQuery || ReadRecord(t, ptFactor) != eResultOk || t.dwKind > eFileAudio)
                            {
                                return eResultBadArgument;
                            }
                            std::vector<tagFileQueryResult> atResults;
                            std::vector<tagRecording> atFound;
                            if (t.dwChannel >= 64)
                            {
                                return eResultNoChannel;
                            }
                            const bool bAsked = t.dwKind == eFileAny || t.dwKind == eFileRecording;
                            const int nResult =
                                bAsked
                                    ? tParent.Login().Part<CRecordings>().Find(
                                          {uint64_t{1} << t.dwChannel, t.dwTypes, 0, t.llStartUs, t.llEndUs}, atFound)
                                    : static_cast<int>(eResultOk);
                            for (tagRecording const& tFound : atFound)
                            {
                                tagFileQueryResult& tResult = atResults.emplace_back();
                                tResult.dwSize = sizeof tResult;
                                tResult.dwKind = eFileRecording;
                                tResult.dwChannel = tFound.dwChannel;
                                tResult.dwType = tFound.dwType;
                                tResult.llStartUs = tFound.llStartUs;
                                tResult.llEndUs = tFound.llEndUs;
                                plugin::CopyText(tResult.szFile, tFound.File());
                            }
                            return nResult ? nResult : OpenQuery(phQuery, tParent.LoginPointer(), std::move(atResults));
                        });
}

int Serve(tagCall<&CClientProtocolBase::FileQueryNext>, void* hQuery, tagFileQueryResult* ptResult)
{
    return NextEntry(hQuery, ptResult);
}

int Serve(tagCall<&CClientProtocolBase::FileQueryDisconnect>, void* hQuery)
{
    return CloseHandle<CQuery<tagFileQueryResult>>(hQuery);
}

int Serve(tagCall<&CClientProtocolBase::DataExistCheck>, void* hLogin, unsigned long dwChannel, unsigned long dwType,
          unsigned long dwMonth, char* szDays, unsigned long* pdwLength)
{
    using namespace std::chrono;
    return With<CLogin>(
        hLogin,
        [&](CLogin& tLogin) -> int
        {
            const year_month tMonth =
                year{static_cast<int>(dwMonth / 100)} / month{static_cast<unsigned>(dwMonth % 100)};
            if (!tMonth.ok() || dwMonth < 197001 || dwMonth > 999912 || !szDays || !pdwLength)
            {
                return eResultBadArgument;
            }
            const auto dwDays = static_cast<unsigned>((tMonth / last).day());
            if (*pdwLength < dwDays + 1)
            {
                return eResultBadArgument;
            }
            if (dwChannel >= 64)
            {
                return eResultNoChannel;
            }
            // Days begin in the device's local time.
            CRecordings& tRecordings = tLogin.Part<CRecordings>();
            std::vector<int64_t> allBegins;
            for (unsigned i = 0; i <= dwDays; ++i)
            {
                const int64_t llUs = microseconds((sys_days{tMonth / day{1}} + days{i}).time_since_epoch()).count();
                allBegins.push_back(llUs - tRecordings.UtcOffsetMinutes(llUs) * g_llMinuteUs);
            }
            std::vector<tagRecording> atFound;
            const int nResult = tRecordings.Find(
                {uint64_t{1} << dwChannel, static_cast<uint32_t>(dwType), 0, allBegins.front(), allBegins.back()},
                atFound);
            if (nResult != eResultOk)
            {
                return nResult;
            }
            for (unsigned i = 0; i < dwDays; ++i)
            {
                const bool bAny =
                    std::ranges::any_of(atFound, [&](tagRecording const& t)
                                        { return t.llStartUs < allBegins[i + 1] && t.llEndUs > allBegins[i]; });
                szDays[i] = bAny ? '1' : '0';
            }
            szDays[dwDays] = '\0';
            *pdwLength = dwDays;
            return eResultOk;
        });
}

int Serve(tagCall<&CClientProtocolBase::RecordControl>, void* hLogin, unsigned long dwChannel, unsigned long dwOn)
{
    return With<CLogin>(hLogin,
                        [&](CLogin& tLogin)
                        {
                            return dwOn > 1 ? int{eResultBadArgument}
                                            : tLogin.Part<CRecordings>().Control(static_cast<uint32_t>(dwChannel),
                                                                                 dwOn == 1);
                        });
}
} // namespace onvifclient
