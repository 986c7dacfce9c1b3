#pragma once

/// @file
/// The IDs of the C API and what stands behind them.

#include "protocol/PluginInterface.h"
#include "system/Export.h"
#include "system/Sequence.h"

#include <cstdint>
#include <limits>
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
/// mutex; looking up takes no lock, writes nothing and never sees half a record, whatever other threads allocate and
/// free. Which ID may still be used is for its users to settle: free no ID that another thread is using.
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

    /// What a call needs of a record: the look-up that every exported function makes.
    struct tagTarget
    {
        eProtocolType eType; ///< whose handle it is
        void* hHandle;       ///< the plug-in's
    };
    /// False, and tTarget is not to be used: not a used slot.
    bool FindUser(int nID, tagTarget& tTarget) const { return Find(m_tUserLookUp, nID, tTarget); }
    /// As FindUser, for media connections.
    bool FindMedia(int nID, tagTarget& tTarget) const { return Find(m_tMediaLookUp, nID, tTarget); }

    /// What looking an ID up reads, in one place for each slot: the records are far apart, and their states so close
    /// that opening and closing one would hold up many others.
    struct alignas(16) tagLookUp
    {
        static constexpr std::int32_t nFree = std::numeric_limits<std::int32_t>::min(); ///< no protocol

        CSequence tSequence;        ///< tells readers of slot and record that it is being allocated
        std::int32_t nType = nFree; ///< the record's eType, nFree while there is none
        void* hHandle = nullptr;    ///< the record's
    };

    /// Sets one pointer of a login record in place, as a whole; does nothing when the slot isn't used.
    void UpdateUser(int nID, void* tagResource::*pField, void* hValue);

    tagResource m_stUser[nSlots];     ///< logins
    int m_nUserState[nSlots];         ///< 1 free, 2 used
    int m_nUserCursor;                ///< where the next search begins
    tagResource m_stMedia[nSlots];    ///< media connections
    int m_nMediaState[nSlots];        ///< 1 free, 2 used
    int m_nMediaCursor;               ///< where the next search begins
    pthread_mutex_t m_mtxUser;        ///< held while a login is allocated or freed
    pthread_mutex_t m_mtxMedia;       ///< held while a media connection is allocated or freed
    tagLookUp m_tUserLookUp[nSlots];  ///< kept with the logins
    tagLookUp m_tMediaLookUp[nSlots]; ///< kept with the media connections

private:
    static bool Find(tagLookUp const (&atLookUp)[nSlots], int nID, tagTarget& tTarget)
    {
        if (static_cast<unsigned>(nID) >= nSlots)
        {
            return false;
        }
        // An allocation under way or just done: a moment ago the slot was free, and that is the answer.
        tagLookUp const& tLookUp = atLookUp[nID];
        std::int32_t nType = tagLookUp::nFree;
        const bool bWhole = tLookUp.tSequence.TryRead(
            [&]
            {
                nType = CSequence::Load(tLookUp.nType);
                tTarget.hHandle = CSequence::Load(tLookUp.hHandle);
            });
        tTarget.eType = static_cast<eProtocolType>(nType);
        return bWhole && nType != tagLookUp::nFree;
    }
};
} // namespace Adapter_ApplicationLayer

/// The library's one registry. It lives as long as the library; starting and stopping the service doesn't touch it.
/// @ingroup classes
extern TESSARO_API Adapter_ApplicationLayer::Client g_cClient;
