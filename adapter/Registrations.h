#pragma once

#include "adapter/CallbackRecord.h"
#include "system/Lock.h"
#include "system/Sequence.h"

#include <atomic>
#include <type_traits>
#include <utility>

// How the library writes and reads callback records.

namespace Adapter_ApplicationLayer
{
/// The three fields of one kind of callback: function, ID, user data.
template <auto Callback, auto ID, auto User>
struct tagCallbackKind
{
    /// The type of the kind's function.
    using Function = std::remove_reference_t<decltype(std::declval<CSetCallBack&>().*Callback)>;

    /// One registration, as it was made.
    struct tagRegistration
    {
        bool bUsed = false;             ///< false: there never was one
        Function pfnCallback = nullptr; ///< null: none any more
        int nID = 0;                    ///< the application's ID
        unsigned long dwUser = 0;       ///< the application's user data
    };

    static tagRegistration Load(CSetCallBack const& tRecord)
    {
        return {CSequence::Load(tRecord.m_bUsed), CSequence::Load(tRecord.*Callback), CSequence::Load(tRecord.*ID),
                CSequence::Load(tRecord.*User)};
    }

    static void Store(CSetCallBack& tRecord, tagRegistration const& tNew)
    {
        CSequence::Store(tRecord.m_bUsed, tNew.bUsed);
        CSequence::Store(tRecord.*User, tNew.dwUser);
        CSequence::Store(tRecord.*Callback, tNew.pfnCallback);
        CSequence::Store(tRecord.*ID, tNew.nID);
    }

    /// Names the three fields of one record.
    static void const* Place(CSetCallBack const& tRecord) { return &(tRecord.*Callback); }
};

using UserEventKind =
    tagCallbackKind<&CSetCallBack::cbUserEvent, &CSetCallBack::m_hUserEvent, &CSetCallBack::m_dwUserEvent>;
using StreamMediaKind =
    tagCallbackKind<&CSetCallBack::cbStreamMedia, &CSetCallBack::m_hStreamMedia, &CSetCallBack::m_dwStreamMedia>;
using StreamMediaRawKind = tagCallbackKind<&CSetCallBack::cbStreamMediaRaw, &CSetCallBack::m_hStreamMediaRaw,
                                           &CSetCallBack::m_dwStreamMediaRaw>;
using StreamVoiceKind =
    tagCallbackKind<&CSetCallBack::cbStreamVoice, &CSetCallBack::m_hStreamVoice, &CSetCallBack::m_dwStreamVoice>;
using TransparentChannelKind =
    tagCallbackKind<&CSetCallBack::cbTransparentChannel, &CSetCallBack::m_hTransparentChannel,
                    &CSetCallBack::m_dwTransparentChannel>;
using FileUploadKind =
    tagCallbackKind<&CSetCallBack::cbFileUpload, &CSetCallBack::m_hFileUpload, &CSetCallBack::m_dwFileUpload>;
using FileDownloadKind =
    tagCallbackKind<&CSetCallBack::cbFileDownload, &CSetCallBack::m_hFileDownload, &CSetCallBack::m_dwFileDownload>;

/// Writes registrations into callback records and reads them, always whole. Stands beside the records, whose layout is
/// documented.
///
/// A reader never depends on a writer's being scheduled: threads that deliver frames may have real-time priority, and
/// what they interrupt goes on only after them. Before the one record that is being changed is touched, its fields are
/// kept here, and a reader that meets the change takes them. It reads again only when a whole change began or ended
/// meanwhile. Writers wait for each other, asleep.
class CRegistrations
{
public:
    template <class Kind>
    void Register(CSetCallBack& tRecord, typename Kind::tagRegistration const& tNew)
    {
        const CLock tLock(m_tMutex);
        BeginChange<Kind>(tRecord);
        Kind::Store(tRecord, tNew);
        EndChange();
    }

    /// The short way, which hardly ever fails: false when any record was being changed, or none ever was.
    template <class Kind>
    [[nodiscard]] bool TryRead(CSetCallBack const& tRecord, typename Kind::tagRegistration& tFound) const
    {
        return m_tSequence.TryRead([&] { tFound = Kind::Load(tRecord); });
    }

    template <class Kind>
    typename Kind::tagRegistration Read(CSetCallBack const& tRecord) const
    {
        for (;;)
        {
            const std::uint32_t uCount = m_tSequence.Count();
            const bool bChanging = !CSequence::IsWhole(uCount) && CSequence::Load(m_pPlace) == Kind::Place(tRecord);
            const auto tFound = Kind::Load(bChanging ? m_tBefore : tRecord);
            if (m_tSequence.IsStill(uCount))
            {
                return tFound;
            }
        }
    }

    /// The halves of Register, without its lock: between the two the record's fields of this kind may be mixed.
    template <class Kind>
    void BeginChange(CSetCallBack const& tRecord)
    {
        std::atomic_thread_fence(std::memory_order_release); // who sees what follows sees that the last change ended
        Kind::Store(m_tBefore, Kind::Load(tRecord));
        CSequence::Store(m_pPlace, Kind::Place(tRecord));
        m_tSequence.BeginWrite();
    }
    void EndChange() { m_tSequence.EndWrite(); }

private:
    CSequence m_tSequence;          // of all records: changes are rare
    void const* m_pPlace = nullptr; // what is being changed, or was last
    CSetCallBack m_tBefore;         // as it was before
    pthread_mutex_t m_tMutex = PTHREAD_MUTEX_INITIALIZER;
};

[[gnu::visibility("hidden")]] extern CRegistrations g_tRegistrations;
} // namespace Adapter_ApplicationLayer
