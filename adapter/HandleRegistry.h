#pragma once

/// @file
/// The IDs of the C API and what stands behind them.

#include "../protocol/PluginInterface.h"
#include "../system/Export.h"

#include <pthread.h>

/// What the C API keeps: IDs and callbacks.
namespace Adapter_ApplicationLayer
{
/// What stands behind an ID.
/// @ingroup classes
struct tagResource
{
    eProtocolType eType;               ///< whose handle it is
    void* hHandle;                     ///< the plug-in's handle of the login or connection
    void* hStream;                     ///< in the RTSP binding's own records: the newest stream of the login
    unsigned char byProtocolData[604]; ///< in the RTSP binding's own records: the head of its tagRTSPClientPara
};

/// The IDs handed to applications in place of plug-in handles: a table of logins and a table of media connections, 1000
/// slots each; the same number may stand in both.
///
/// IDs rise; a freed one comes back only when the search has gone round. An allocating call leaves the ID variable as
/// it was when the table is full, so preset it to -1. Any thread may call. Allocating and freeing take the table's
/// mutex; looking up takes no lock, waits for nobody and writes nothing. In g_cClient it never sees half a record,
/// whatever other threads allocate and free; in any other object it may, when the very slot is freed and given again
/// meanwhile. Which ID may still be used is for its users to settle: free no ID that another thread is using.
/// @ingroup classes
class TESSARO_API Client
{
public:
    static constexpr int nSlots = 1000; ///< of each table

    Client();
    ~Client();
    Client(Client const&) = delete;
    Client& operator=(Client const&) = delete;

    int SetUserType(int& nID, void* hHandle, eProtocolType eType); ///< always 0; hStream and byProtocolData stay
    int SetUserType(int& nID, tagResource tRecord);                ///< always 0
    int GetUserType(int nID, tagResource& tRecord);                ///< 1, and tRecord as it was: not a used slot
    int DeleteUserType(int nID);                                   ///< always 0

    int SetMeidaType(int& nID, void* hHandle, eProtocolType eType); ///< as SetUserType, for media connections
    int GetMediaType(int nID, tagResource& tRecord);                ///< as GetUserType
    int DeleteMediaType(int nID);                                   ///< as DeleteUserType

    tagResource m_stUser[nSlots];  ///< logins
    int m_nUserState[nSlots];      ///< 1 free, 2 used
    int m_nUserCursor;             ///< where the next search begins
    tagResource m_stMedia[nSlots]; ///< media connections
    int m_nMediaState[nSlots];     ///< 1 free, 2 used
    int m_nMediaCursor;            ///< where the next search begins
    pthread_mutex_t m_mtxUser;     ///< held while a login is allocated or freed
    pthread_mutex_t m_mtxMedia;    ///< held while a media connection is allocated or freed
};
} // namespace Adapter_ApplicationLayer

/// The library's one registry. It lives as long as the library; starting and stopping the service doesn't touch it.
/// @ingroup classes
extern TESSARO_API Adapter_ApplicationLayer::Client g_cClient;
