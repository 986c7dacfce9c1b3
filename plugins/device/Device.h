#pragma once

#include "plugins/device/Alarms.h"
#include "plugins/device/Blueprint.h"
#include "plugins/device/Camera.h"
#include "plugins/device/Clock.h"
#include "plugins/device/Configuration.h"
#include "plugins/device/DeviceLog.h"
#include "plugins/device/Faults.h"
#include "plugins/device/Files.h"
#include "plugins/device/PTZ.h"
#include "plugins/device/Panel.h"
#include "plugins/device/Recording.h"
#include "plugins/device/Serial.h"
#include "plugins/device/Session.h"
#include "plugins/device/Storage.h"
#include "plugins/device/Store.h"
#include "plugins/device/StreamState.h"
#include "plugins/device/Users.h"
#include "plugins/device/Wall.h"
#include "plugins/device/WallView.h"
#include "plugins/device/Worker.h"

#include "protocol/interface/Device.h"

#include <atomic>
#include <condition_variable>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <type_traits>
#include <vector>

namespace device
{
/// One simulated device: what it is, what it has, what it is doing. Knows nothing of entry points, and nothing of
/// frames.
class CDevice : public std::enable_shared_from_this<CDevice>
{
public:
    explicit CDevice(tagDeviceBlueprint tBlueprint);
    ~CDevice();

    /// @name For those who make its frames, files and pictures. These lock the device themselves, for a moment; any
    /// thread may call them.
    /// @{

    /// The device's clock, microseconds since 1970 UTC: drifts and jumps as its faults say.
    int64_t NowUs() const { return m_tClock.NowUs(); }
    /// How far its local time is ahead of UTC at this time.
    int32_t UtcOffsetMinutes(int64_t llTimeUs);
    uint32_t Channels() const { return static_cast<uint32_t>(m_tBlueprint.atChannels.size()); }
    std::string Name();

    /// Changes whenever the tagStreamState of any channel may have changed: what was read before holds as long as this
    /// stays the same. Takes no lock.
    uint32_t StreamVersion() const { return m_dwStreamVersion.load(std::memory_order_acquire); }
    /// dwStreamKind: eStreamKind, 0 the main stream. eResultNoChannel, eResultBadArgument.
    int StreamState(uint32_t dwChannel, uint32_t dwStreamKind, tagStreamState& tState);
    /// eResultNoChannel.
    int PictureState(uint32_t dwChannel, tagPictureState& tState);

    /// In the order of their begin, the oldest first.
    std::vector<tagRecording> Recordings(tagRecordingQuestion const& tQuestion);
    /// A file that is no recording, by its eFileKind and name; null when there is none.
    SharedBytes File(uint32_t dwKind, std::string const& strName);
    /// Keeps a snapshot among the device's files (eFilePicture).
    void KeepPicture(uint32_t dwChannel, std::string const& strName, SharedBytes pData);

    /// What the wall shows now; no windows when the device drives no screens.
    tagWallView WallView();
    /// @}

    /// @name Logins and calls. These lock the device themselves too.
    /// @{

    /// Lets a call in: as the device's faults say it takes its time, isn't answered, or is refused. pSession: whose
    /// call it is; null: it needs no login.
    int Admit(CSession const* pSession, uint32_t dwTimeoutMs);
    /// Lets a user in, whose level becomes the session's. The session hears of events from now on.
    int Login(std::shared_ptr<CSession> const& pSession, std::string const& strPassword);
    void Logout(CSession& tSession);
    /// Lets somebody hear of events who is no user: nothing ends it but its owner.
    void Listen(std::shared_ptr<CSession> const& pListener);
    /// Events for each state that isn't 0, to this session alone.
    void ReportStates(CSession& tSession);
    /// Lets calls that wait look whether their session was closed.
    void Interrupt();
    /// Whether calls of all devices are to end.
    static void EndCalls(bool bEnd);
    bool IsUp();
    /// Goes on with what has its time. Called by the worker.
    void Tick();
    /// @}

    /// The device locked, and come to the present: what a CPart needs.
    class CLock
    {
    public:
        explicit CLock(CDevice& tDevice);
        ~CLock();
        CLock(CLock const&) = delete;
        CLock& operator=(CLock const&) = delete;

    private:
        CDevice& m_tDevice;
        std::unique_lock<std::mutex> m_tLock;
    };

    /// @name All that follows needs a CLock.
    /// @{

    /// The subject of this class; the device itself for CDevice.
    template <class P>
    P& Part();

    /// Steady time that the device has come to.
    int64_t SteadyNow() const { return m_llSteadyUs; }
    tagDeviceBlueprint const& Blueprint() const { return m_tBlueprint; }
    CClock& Clock() { return m_tClock; }
    CStore& Store() { return m_tStore; }
    /// What the device runs.
    std::string Firmware() const;
    void SetFirmware(std::string const& strVersion);

    /// Tells every session; also written into the log, by ptCaller.
    void Raise(eDeviceEvent eEvent, uint32_t dwWord2, uint32_t dwWord3 = 0, tagCaller const* ptCaller = nullptr);
    /// eEventOther.
    void RaiseDetail(uint32_t dwChannel, std::string const& strTopic, std::string const& strSource,
                     std::string const& strData, uint32_t dwState);
    /// Some tagStreamState has changed.
    void Touch() { m_dwStreamVersion.fetch_add(1, std::memory_order_acq_rel); }
    /// eRemoteDeviceControl.
    int Control(tagCaller const& tCaller, eRemoteDeviceControl eControl);
    /// Stops now and starts again after so long; 0: not by itself.
    void Restart(eRestartReason eReason, int64_t llDownUs);
    /// The connection breaks, for so long; 0: until Connect.
    void Drop(int64_t llDownUs);
    /// Ends what Drop and Restart began.
    void Connect();
    /// Ends the logins of a user. bForced: they hear that they were forced off.
    void EndSessions(std::string const& strUser);
    /// The users' levels may have changed.
    void RefreshLevels();
    int SDKVersion(eNetworkSDKVersion& eVersion) const;
    /// @}

private:
    int Wait(std::unique_lock<std::mutex>& tLock, CSession const* pSession, int64_t llUntilUs);
    int Present(CSession const* pSession) const;
    void Advance();
    int64_t NextDue();
    void Schedule();
    tagDeviceEvent Event(eDeviceEvent eEvent, uint32_t dwWord2, uint32_t dwWord3) const;
    void Tell(std::function<void(CSession&)> fnTell);
    void Down(int64_t llDownUs);
    void Up();

    const tagDeviceBlueprint m_tBlueprint;
    std::mutex m_tMutex;
    std::condition_variable m_tInterrupted;
    std::atomic<uint32_t> m_dwStreamVersion{0};
    CClock m_tClock;
    CStore m_tStore;
    int64_t m_llSteadyUs = 0;
    int64_t m_llTickUs = g_llNever; // when the worker comes
    int64_t m_llSaveUs = g_llNever; // when the store is written
    std::vector<std::weak_ptr<CSession>> m_apSessions;
    std::vector<std::weak_ptr<CSession>> m_apListeners;

    // Up, or since when not and until when.
    bool m_bUp = true;
    int64_t m_llDownUs = 0;
    int64_t m_llUpUs = g_llNever;
    uint32_t m_dwRun = 0;
    eRestartReason m_eReason = eRestartUnknown; // of the start that comes; eRestartUnknown: it has not stopped

    CDeviceLog m_tLog{*this};
    CUsers m_tUsers{*this};
    CFaults m_tFaults{*this};
    CConfiguration m_tConfiguration{*this};
    CCamera m_tCamera{*this};
    CPTZ m_tPTZ{*this};
    CAlarms m_tAlarms{*this};
    CStorage m_tStorage{*this};
    CFiles m_tFiles{*this};
    CSerial m_tSerial{*this};
    CPanel m_tPanel{*this};
    CWall m_tWall{*this};
};

template <class P>
P& CDevice::Part()
{
    // clang-format off
    if constexpr (std::is_same_v<P, CDevice>) { return *this; }
    else if constexpr (std::is_same_v<P, CDeviceLog>) { return m_tLog; }
    else if constexpr (std::is_same_v<P, CUsers>) { return m_tUsers; }
    else if constexpr (std::is_same_v<P, CFaults>) { return m_tFaults; }
    else if constexpr (std::is_same_v<P, CConfiguration>) { return m_tConfiguration; }
    else if constexpr (std::is_same_v<P, CCamera>) { return m_tCamera; }
    else if constexpr (std::is_same_v<P, CPTZ>) { return m_tPTZ; }
    else if constexpr (std::is_same_v<P, CAlarms>) { return m_tAlarms; }
    else if constexpr (std::is_same_v<P, CStorage>) { return m_tStorage; }
    else if constexpr (std::is_same_v<P, CFiles>) { return m_tFiles; }
    else if constexpr (std::is_same_v<P, CSerial>) { return m_tSerial; }
    else if constexpr (std::is_same_v<P, CPanel>) { return m_tPanel; }
    else { static_assert(std::is_same_v<P, CWall>); return m_tWall; }
    // clang-format on
}
} // namespace device
