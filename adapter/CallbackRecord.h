#pragma once

/// @file
/// Whom to call back.

#include "../protocol/PluginInterface.h"
#include "../system/Export.h"

#include <map>

namespace Adapter_ApplicationLayer
{
/// Whom to call back for one media connection or login: for each kind of callback the application's function, the ID to
/// hand back and the application's user data. A registration replaces the three, and a callback always gets the three
/// of one registration, whatever overlaps. The fields are plain words: another reader may find them half replaced.
/// @ingroup classes
class TESSARO_API CSetCallBack // NOLINT(clang-analyzer-optin.performance.Padding): the documented order
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
};
} // namespace Adapter_ApplicationLayer

/// The records of the media connections, by media ID: whom a frame goes to is read here each time. A record outlives
/// its connection: the next connection with the same ID finds the earlier one's callbacks until the application
/// registers its own.
/// @ingroup classes
extern TESSARO_API Adapter_ApplicationLayer::CSetCallBack g_SetCallBack[1000];

/// The records of the logins' device events, by login ID; made by the first subscription and never removed. The library
/// reads and changes it under a lock of its own: look at it only while nobody subscribes. An event that arrives while
/// the lock is taken doesn't wait: it goes to the login's latest subscription.
/// @ingroup classes
extern TESSARO_API std::map<int, Adapter_ApplicationLayer::CSetCallBack> g_SetUserCallBack;
