// What the ONVIF plug-in makes of a device's answers: profiles, configuration blocks, pictures, PTZ, recordings, users,
// network, contacts, logs, walls. An input: a line of numbers (which operation, on which channel, with which
// parameters), a line of numbers that are written (an index of a record's word and its value, by turns), and the
// answers, one a line.

#include "fuzz/Input.h"
#include "fuzz/OnvifDevice.h"
#include "plugins/onvif/Operations.h"
#include "protocol/interface/Camera.h"
#include "protocol/interface/Configuration.h"
#include "protocol/interface/Decoders.h"
#include "protocol/interface/PTZ.h"
#include "protocol/interface/Queries.h"

#include <array>
#include <charconv>
#include <memory>
#include <vector>

namespace
{
using Base = Adapter_ProtocolSet::CClientProtocolBase;
using onvifclient::Serve;

// The numbers of a line, one after the other; then 0.
class CNumbers
{
public:
    explicit CNumbers(std::string_view strLine) : m_strLine(strLine) {}

    uint32_t Next()
    {
        int64_t ll = 0;
        const auto tResult = std::from_chars(m_strLine.data(), m_strLine.data() + m_strLine.size(), ll);
        m_strLine.remove_prefix(static_cast<std::size_t>(tResult.ptr - m_strLine.data()));
        m_strLine.remove_prefix(m_strLine.empty() ? 0 : 1);
        return static_cast<uint32_t>(ll);
    }
    bool IsEmpty() const { return m_strLine.empty(); }

private:
    std::string_view m_strLine;
};

struct tagTry
{
    void* hLogin;
    uint32_t dwChannel;
    CNumbers tParameters;
    CNumbers tWritten;

    // Lays the second line over a record; its size stays.
    void Change(void* pRecord, std::size_t nSize)
    {
        while (!tWritten.IsEmpty())
        {
            const std::size_t nWord = 1 + tWritten.Next() % (nSize / sizeof(uint32_t) - 1);
            const uint32_t dwValue = tWritten.Next();
            std::memcpy(static_cast<char*>(pRecord) + nWord * sizeof dwValue, &dwValue, sizeof dwValue);
        }
    }
    template <class Record>
    Record Filled()
    {
        Record t{};
        t.dwSize = sizeof t;
        Change(&t, sizeof t);
        return t;
    }
};

int Require(int nResult)
{
    const int n = nResult < 0 ? -nResult : nResult;
    REQUIRE(n == eResultOk || (n >= eResultNotSupported && n <= eResultNoMoreEntries));
    return nResult;
}

#define SERVE(name, ...) Require(Serve(tagCall<&Base::name>{}, t.hLogin, __VA_ARGS__))

void Configuration(tagTry& t)
{
    static const auto s_ptBlock = std::make_unique<tagConfigInformationV2>();
    *s_ptBlock = {};
    s_ptBlock->type = t.tParameters.Next();
    s_ptBlock->index = t.dwChannel;
    s_ptBlock->extra[1] = t.tParameters.Next();
    if (SERVE(GetConfigV2, s_ptBlock.get()) == eResultOk && s_ptBlock->extra[0] > sizeof(uint32_t))
    {
        t.Change(s_ptBlock->data, s_ptBlock->extra[0]);
        SERVE(SetConfigV2, s_ptBlock.get());
    }
}

template <class Record>
void CameraRecord(tagTry& t, uint32_t dwType)
{
    Record tRecord{};
    tRecord.dwSize = sizeof tRecord;
    const int nChannel = static_cast<int>(t.dwChannel);
    if (SERVE(GetIpcPara, nChannel, dwType, &tRecord, sizeof tRecord) == eResultOk)
    {
        t.Change(&tRecord, sizeof tRecord);
        SERVE(SetIpcPara, nChannel, dwType, &tRecord, sizeof tRecord);
    }
}

template <class List, class Entry>
struct tagListed : List
{
    tagListed() : List{}
    {
        this->dwSize = sizeof(List);
        this->dwEntrySize = sizeof(Entry);
        this->dwCapacity = static_cast<uint32_t>(atRoom.size());
        this->ptEntries = atRoom.data();
    }
    std::array<Entry, 8> atRoom{};
};

template <class List, class Entry>
void CameraList(tagTry& t, uint32_t dwType)
{
    tagListed<List, Entry> tList;
    SERVE(GetIpcPara, static_cast<int>(t.dwChannel), dwType, static_cast<List*>(&tList), sizeof(List));
}

void Camera(tagTry& t)
{
    switch (const uint32_t dwType = t.tParameters.Next())
    {
    case eCameraPicture:
        return CameraRecord<tagCameraPicture>(t, dwType);
    case eCameraDayNight:
        return CameraRecord<tagCameraDayNight>(t, dwType);
    case eCameraExposure:
        return CameraRecord<tagCameraExposure>(t, dwType);
    case eCameraFocus:
        return CameraRecord<tagCameraFocus>(t, dwType);
    case eCameraPosition:
        return CameraRecord<tagPTZPosition>(t, dwType);
    case eCameraPTZAbility:
        return CameraRecord<tagPTZAbility>(t, dwType);
    case eCameraPresets:
        return CameraList<tagPTZPresetList, tagPTZPreset>(t, dwType);
    case eCameraTours:
        return CameraList<tagPTZTourList, tagPTZTour>(t, dwType);
    default:
        SERVE(SetChromaDefault, t.dwChannel, t.tParameters.Next() % 8);
    }
}

void Head(tagTry& t)
{
    // Two commands: some end what others have begun.
    for (int i = 0; i < 2; ++i)
    {
        static char s_szName[] = "gate";
        const auto eCommand = static_cast<ePTZControlCmdCode>(t.tParameters.Next() % 40);
        std::array<unsigned long, 4> adw{};
        for (unsigned long& dw : adw)
        {
            dw = static_cast<unsigned long>(static_cast<int32_t>(t.tParameters.Next()));
        }
        adw[1] = eCommand == ePTZPresetSet ? reinterpret_cast<unsigned long>(s_szName) : adw[1];
        SERVE(PTZControl, t.dwChannel, eCommand, adw[0], adw[1], adw[2], adw[3]);
    }
}

// To its end.
template <class Result, class Connect, class Next, class Close>
void Query(Connect fnConnect, Next fnNext, Close fnClose)
{
    void* hQuery = nullptr;
    if (Require(fnConnect(&hQuery)) == eResultOk)
    {
        Result tResult{};
        tResult.dwSize = sizeof tResult;
        while (Require(fnNext(hQuery, &tResult)) == eResultOk)
        {
        }
        REQUIRE(fnClose(hQuery) == eResultOk);
    }
}

void Recordings(tagTry& t)
{
    auto tFactor = t.Filled<tagHistoryStreamQueryFactor>();
    tFactor.dwChannel = t.dwChannel;
    Query<tagHistoryStreamQueryResult>(
        [&](void** ph) { return Serve(tagCall<&Base::HistoryStreamQueryConnect>{}, ph, t.hLogin, &tFactor); },
        [](void* h, auto* pt) { return Serve(tagCall<&Base::HistoryStreamQueryNext>{}, h, pt); },
        [](void* h) { return Serve(tagCall<&Base::HistoryStreamQueryDisconnect>{}, h); });
    std::array<char, 32> acDays{};
    unsigned long dwLength = acDays.size();
    SERVE(DataExistCheck, t.dwChannel, t.tParameters.Next(), t.tParameters.Next(), acDays.data(), &dwLength);
    SERVE(RecordControl, t.dwChannel, t.tParameters.Next() % 2);
}

void RecordingsOfAll(tagTry& t)
{
    auto tFactor = t.Filled<tagHistoryStreamMultiTypeQueryFactor>();
    Query<tagHistoryStreamMultiTypeQueryResult>(
        [&](void** ph) { return Serve(tagCall<&Base::HistoryStreamMultiTypeQueryConnect>{}, ph, t.hLogin, &tFactor); },
        [](void* h, auto* pt) { return Serve(tagCall<&Base::HistoryStreamMultiTypeQueryNext>{}, h, pt); },
        [](void* h) { return Serve(tagCall<&Base::HistoryStreamQueryDisconnect>{}, h); });
}

void Logs(tagTry& t)
{
    auto tFactor = t.Filled<tagLogQueryFactor>();
    Query<tagLogQueryResult>([&](void** ph)
                             { return Serve(tagCall<&Base::HistoryLogQueryConnect>{}, ph, t.hLogin, &tFactor); },
                             [](void* h, auto* pt) { return Serve(tagCall<&Base::HistoryLogQueryNext>{}, h, pt); },
                             [](void* h) { return Serve(tagCall<&Base::HistoryLogQueryDisconnect>{}, h); });
}

void Contacts(tagTry& t)
{
    std::array<unsigned long, 16> adwState{};
    for (const bool bIn : {true, false})
    {
        unsigned long dwCount = adwState.size();
        bIn ? SERVE(AlarminStateGet, &dwCount, adwState.data()) : SERVE(AlarmoutStateGet, &dwCount, adwState.data());
    }
    SERVE(AlarmoutControl, t.dwChannel, t.tParameters.Next());
}

void Who(tagTry& t)
{
    int nLevel = 0;
    std::array<unsigned char, 6> abyMac{};
    SERVE(GetLoginLevel, &nLevel);
    SERVE(GetLoginMac, abyMac.data(), 6);
}

void Wall(tagTry& t)
{
    tagListed<tagDecoderDeviceConfig, tagDecoderWindow> tWall;
    if (SERVE(DecoderGetConfig, static_cast<tagDecoderDeviceConfig*>(&tWall)) == eResultOk)
    {
        tWall.dwCount = std::min(tWall.dwCount, tWall.dwCapacity);
        t.Change(tWall.atRoom.data(), sizeof tWall.atRoom);
        SERVE(DecoderSetConfig, static_cast<tagDecoderDeviceConfig*>(&tWall));
    }
    SERVE(SetScreenSplitMode, t.dwChannel, t.tParameters.Next(), nullptr);
    tagListed<tagDecoderChannelStatus, tagDecoderWindowStatus> tStatus;
    SERVE(DecoderChannelGetStatus, static_cast<tagDecoderChannelStatus*>(&tStatus));
}

void Window(tagTry& t)
{
    auto tInformation = tagDecoderChannelInformation{};
    tInformation.dwSize = sizeof tInformation;
    SERVE(DecoderGetChannelInformation, t.dwChannel, &tInformation);
    auto tStandard = tagDecoderVideoStandardConfig{};
    tStandard.dwSize = sizeof tStandard;
    SERVE(DecoderGetVideoStandard, t.dwChannel, &tStandard);
    auto tConfig = tagDecoderChannelConfig{};
    tConfig.dwSize = sizeof tConfig;
    if (SERVE(DecoderGetChannelConfig, t.dwChannel, &tConfig) == eResultOk)
    {
        t.Change(&tConfig, sizeof tConfig);
        SERVE(DecoderSetChannelConfig, t.dwChannel, &tConfig);
    }
}

constexpr void (*g_apfnOperations[])(tagTry&) = {&Configuration, &Camera,   &Head, &Recordings, &RecordingsOfAll,
                                                 &Logs,          &Contacts, &Who,  &Wall,       &Window};
} // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* pbyData, std::size_t nLength)
{
    CInput tInput(pbyData, nLength);
    CNumbers tParameters(tInput.Line());
    const CNumbers tWritten(tInput.Line());
    FuzzDevice().SetAnswers(tInput.Rest());
    onvif::tagClientOptions tOptions;
    tOptions.tAddress = {false, "192.0.2.1", 80, "/onvif/device_service"};
    tOptions.strUser = "admin";
    const auto pClient = std::make_shared<onvif::CClient>(onvifclient::Http(), std::move(tOptions));
    if (pClient->Login() != eResultOk)
    {
        return 0;
    }
    void* const hLogin = onvifclient::Face().tHandles.Add(std::make_shared<onvifclient::CLogin>(pClient));
    const auto pfnOperation = g_apfnOperations[tParameters.Next() % std::size(g_apfnOperations)];
    const uint32_t dwChannel = tParameters.Next();
    tagTry tTry{hLogin, dwChannel, tParameters, tWritten};
    pfnOperation(tTry);
    REQUIRE(onvifclient::CloseHandle<onvifclient::CLogin>(hLogin) == eResultOk);
    return 0;
}
