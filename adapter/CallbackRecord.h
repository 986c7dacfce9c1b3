#pragma once

/// @file
/// Whom to call back.

#include "protocol/PluginInterface.h"
#include "system/Export.h"
#include "system/Sequence.h"

#include <map>
#include <type_traits>
#include <utility>

namespace Adapter_ApplicationLayer
{
/// Whom to call back for one media connection or login: for each kind of callback the application's function, the ID to
/// hand back and the application's user data. A registration replaces the three together, and whoever reads them gets
/// the three of one registration. Registering and reading take no lock and may overlap.
/// @ingroup classes
class TESSARO_API CSetCallBack
{
public:
    /// A cleared record. A constant, so that a table of them costs nothing while the library is loaded.
    [[gnu::used, gnu::visibility("default")]] constexpr CSetCallBack() noexcept {} // exported, though inline
    ~CSetCallBack();

    /// @name Functions
    /// @{

    /// The application's function; null: none.
    DeviceEventCallback cbUserEvent = nullptr;
    StreamMediaCallback cbStreamMedia = nullptr;
    StreamMediaCallback cbStreamMediaRaw = nullptr;
    StreamVoiceCallback cbStreamVoice = nullptr;
    TransparentChannelCallback cbTransparentChannel = nullptr;
    FileUploadCallback cbFileUpload = nullptr;
    FileDownloadCallback cbFileDownload = nullptr;
    /// @}

    /// @name IDs
    /// @{

    /// Handed back as a pointer-sized number.
    int m_hUserEvent = 0;
    int m_hStreamMedia = 0;
    int m_hStreamMediaRaw = 0;
    int m_hStreamVoice = 0;
    int m_hTransparentChannel = 0;
    int m_hFileUpload = 0;
    int m_hFileDownload = 0;
    /// @}

    /// @name User data
    /// @{

    /// Handed back unchanged.
    unsigned long m_dwUserEvent = 0;
    unsigned long m_dwStreamMedia = 0;
    unsigned long m_dwStreamMediaRaw = 0;
    unsigned long m_dwStreamVoice = 0;
    unsigned long m_dwTransparentChannel = 0;
    unsigned long m_dwFileUpload = 0;
    unsigned long m_dwFileDownload = 0;
    /// @}

    bool m_bUsed = false; ///< set by the first registration, never cleared

    CSequence m_tSequence; ///< guards all of the above
};

/// The three fields of one kind: function, ID, user data.
/// @ingroup classes
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

    /// Replaces the three together.
    static void Register(CSetCallBack& tRecord, Function pfnCallback, int nID, unsigned long dwUser)
    {
        tRecord.m_tSequence.BeginWrite();
        CSequence::Store(tRecord.m_bUsed, true);
        CSequence::Store(tRecord.*User, dwUser);
        CSequence::Store(tRecord.*Callback, pfnCallback);
        CSequence::Store(tRecord.*ID, nID);
        tRecord.m_tSequence.EndWrite();
    }

    /// False when a registration is just being made: read again.
    [[nodiscard]] static bool TryRead(CSetCallBack const& tRecord, tagRegistration& tFound)
    {
        return tRecord.m_tSequence.TryRead(
            [&]
            {
                tFound.bUsed = CSequence::Load(tRecord.m_bUsed);
                tFound.pfnCallback = CSequence::Load(tRecord.*Callback);
                tFound.nID = CSequence::Load(tRecord.*ID);
                tFound.dwUser = CSequence::Load(tRecord.*User);
            });
    }
};

/// @name Kinds
/// @{

/// A kind of callback.
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
/// @}
} // namespace Adapter_ApplicationLayer

/// The records of the media connections, by media ID. A record outlives its connection: the next connection with the
/// same ID finds the earlier one's callbacks until the application registers its own.
/// @ingroup classes
extern TESSARO_API Adapter_ApplicationLayer::CSetCallBack g_SetCallBack[1000];

/// The records of the logins' device events, by login ID; made by the first subscription and never removed. The library
/// reads and changes it under a lock of its own: look at it only while nobody subscribes.
/// @ingroup classes
extern TESSARO_API std::map<int, Adapter_ApplicationLayer::CSetCallBack> g_SetUserCallBack;
